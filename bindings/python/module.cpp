#include "bindings/python/binding.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {
namespace {

// The Python exception AutomationError has the number of the error, as in C++.
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
  module.attr("__name__") = "keltrun2";  // where users find the classes
  BindAutomationError(module);
  BindStartup(module);
  BindModel(module);
  BindAnalysis(module);
  BindHostDrawing(module);
  BindDrawing(module);
  BindServices(module);
  module.attr("__name__") = "keltrun2._native";
}
