// Helpers that give every bound member the documentation of its C++ header.
#pragma once

#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace keltrun::python {

namespace py = pybind11;

/// The comment above a member in its header ("clsLapData.Lap"), "" when it has none.
const char* Doc(const std::string& name);

/// An enumeration; its parameters take plain numbers too, as sums of flags are numbers. The values
/// of an unscoped one are also the module's.
template <typename T>
void Enumeration(py::module_& module, const char* name,
                 std::initializer_list<std::pair<const char*, T>> values) {
  py::enum_<T> type(module, name, py::arithmetic(), Doc(name));
  for (const auto& [value_name, value] : values) {
    type.value(value_name, value, Doc(std::string(name) + "." + value_name));
  }
  if constexpr (std::is_convertible_v<T, std::int32_t>) type.export_values();
  py::implicitly_convertible<std::int32_t, T>();
}
#define KR_VALUE(name) \
  { #name, name }

/// A bound class. A property is named as in the object model; where its value depends on an index,
/// it is a method, with SetX to write.
template <typename T, typename... Options>
class Class {
 public:
  Class(py::module_& module, const char* name) : class_(module, name, Doc(name)), name_(name) {}

  template <typename Init, typename... Extra>
  Class& MadeBy(Init&& init, const Extra&... extra) {
    class_.def(std::forward<Init>(init), extra...);
    return *this;
  }
  template <typename Member>
  Class& Field(const char* name, Member member) {
    class_.def_readwrite(name, member, DocOf(name));
    return *this;
  }
  /// Values that live inside their owner keep it alive.
  template <typename Get>
  Class& ReadOnly(const char* name, Get get) {
    class_.def_property_readonly(name, get, py::return_value_policy::reference_internal,
                                 DocOf(name));
    return *this;
  }
  /// A constant; classes cannot carry its documentation.
  template <typename Value>
  Class& Constant(const char* name, Value value) {
    class_.attr(name) = value;
    return *this;
  }
  template <typename Get, typename Set>
  Class& Property(const char* name, Get get, Set set) {
    class_.def_property(name, get, set, DocOf(name));
    return *this;
  }
  template <typename Function, typename... Extra>
  Class& Method(const char* name, Function function, const Extra&... extra) {
    class_.def(name, function, DocOf(name), py::return_value_policy::reference_internal, extra...);
    return *this;
  }
  template <typename Function, typename... Extra>
  Class& Static(const char* name, Function function, const Extra&... extra) {
    class_.def_static(name, function, DocOf(name), extra...);
    return *this;
  }

 private:
  const char* DocOf(const char* member) const { return Doc(name_ + "." + member); }

  py::class_<T, std::shared_ptr<T>, Options...> class_;
  std::string name_;
};

/// A plain structure, made with its fields by name.
template <typename T>
auto Fields() {
  return py::init([](const py::kwargs& fields) {
    T made;
    const py::object object = py::cast(&made, py::return_value_policy::reference);
    for (const auto& [name, value] : fields) object.attr(name) = value;
    return made;
  });
}

/// Runs before the interpreter ends: what the component holds of Python's must be let go by then.
inline void AtExit(void (*function)()) {
  py::module_::import("atexit").attr("register")(py::cpp_function(function));
}

/// A C++ object that may be a Python class's own: as long as the component holds it, the Python
/// object lives. None is null.
template <typename T>
std::shared_ptr<T> Kept(const py::object& object) {
  if (object.is_none()) return nullptr;
  auto* const pointer = object.cast<T*>();
  auto* const owner = new py::object(object);
  return std::shared_ptr<T>(pointer, [owner](T*) {
    const py::gil_scoped_acquire lock;
    delete owner;
  });
}

void BindModel(py::module_& module);
void BindAnalysis(py::module_& module);
void BindHostDrawing(py::module_& module);
void BindDrawing(py::module_& module);
void BindServices(py::module_& module);

}  // namespace keltrun::python
