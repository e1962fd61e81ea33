#include "bindings/python/binding.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {

std::optional<std::string_view> TextOfBytes(py::handle object) {
  const bool is_bytes = PyBytes_Check(object.ptr());
  if (!is_bytes && !PyByteArray_Check(object.ptr())) return std::nullopt;
  const std::string_view bytes =
      is_bytes ? std::string_view(PyBytes_AS_STRING(object.ptr()),
                                  static_cast<std::size_t>(PyBytes_GET_SIZE(object.ptr())))
               : std::string_view(PyByteArray_AS_STRING(object.ptr()),
                                  static_cast<std::size_t>(PyByteArray_GET_SIZE(object.ptr())));
  const auto text = py::reinterpret_steal<py::object>(
      PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "strict"));
  if (!text) throw py::error_already_set();
  return bytes;
}

std::string Description(const py::object& self, const std::vector<std::string>& members) {
  auto text = "<" + py::type::of(self).attr("__name__").cast<std::string>();
  const char* separator = " ";
  for (const std::string& name : members) {
    py::object value = self.attr(name.c_str());
    const bool is_method = PyCallable_Check(value.ptr()) != 0;
    if (is_method) value = value();
    text += separator + name + (is_method ? "()=" : "=") + py::repr(value).cast<std::string>();
    separator = ", ";
  }
  return text + ">";
}

namespace {

// The Python exception AutomationError has the number of the error, as the C++ one does.
void BindAutomationError(py::module_& module) {
  static py::exception<AutomationError> type(module, "AutomationError", PyExc_RuntimeError);
  type.doc() = Doc("AutomationError");
  type.attr("Number") = 0;
  // NOLINTNEXTLINE(performance-unnecessary-value-param): pybind11 wants this signature
  py::register_exception_translator([](std::exception_ptr pointer) {
    try {
      if (pointer) std::rethrow_exception(pointer);
    } catch (const AutomationError& error) {
      py::object raised = py::handle(type)(error.what());
      raised.attr("Number") = error.Number();
      PyErr_SetObject(type.ptr(), raised.ptr());
    }
  });
  Enumeration<AutomationErrorConst>(
      module, "AutomationErrorConst",
      {KR_VALUE(KR_ERROR_INVALID_CALL), KR_VALUE(KR_ERROR_SUBSCRIPT_OUT_OF_RANGE),
       KR_VALUE(KR_ERROR_OBJECT_NOT_SET), KR_VALUE(KR_ERROR_DUPLICATE_KEY)});
}

void BindStartup(py::module_& module) {
  module.def(
      "SetStartup",
      [](std::optional<std::string> Language, std::optional<std::int32_t> Locale,
         std::optional<std::string> Folder) {
        SetStartup({std::move(Language), Locale, std::move(Folder)});
      },
      Doc("SetStartup"), py::arg("Language") = py::none(), py::arg("Locale") = py::none(),
      py::arg("Folder") = py::none());
}

}  // namespace
}  // namespace keltrun::python

PYBIND11_MODULE(_native, module) {
  using namespace keltrun::python;
  module.attr("__name__") = "keltrun2";  // the module that users import the classes from
  module.attr("__version__") = KELTRUN2_VERSION;
  BindAutomationError(module);
  BindStartup(module);
  BindModel(module);
  BindAnalysis(module);
  BindHostDrawing(module);
  BindDrawing(module);
  BindServices(module);
  module.attr("__name__") = "keltrun2._native";
}
