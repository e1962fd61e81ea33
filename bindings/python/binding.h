// Helpers that give every bound member the documentation of its C++ header.
#pragma once

#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "bindings/python/docs.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {

/// The UTF-8 text in a bytes or bytearray object; nullopt for any other object. What is no UTF-8
/// raises UnicodeDecodeError: pybind11 alone would take every byte for text.
std::optional<std::string_view> TextOfBytes(pybind11::handle object);

}  // namespace keltrun::python

namespace pybind11::detail {

template <>
template <>
inline bool string_caster<std::string, false>::load_raw<char>(handle src) {
  const auto text = keltrun::python::TextOfBytes(src);
  if (text) value = *text;
  return text.has_value();
}

template <>
template <>
inline bool string_caster<std::string_view, true>::load_raw<char>(handle src) {
  const auto text = keltrun::python::TextOfBytes(src);
  if (text) value = *text;
  return text.has_value();
}

}  // namespace pybind11::detail

namespace keltrun::python {

namespace py = pybind11;

/// For calls that take long, wait, or call the host: other threads run meanwhile. Whatever the
/// component calls of Python's takes the interpreter's lock again.
using Released = py::call_guard<py::gil_scoped_release>;

/// Makes the members of an object that was never initialised, as `cls.__new__(cls)` makes one,
/// raise TypeError. Without it pybind11 gives them memory that holds no object.
template <typename T>
void RefuseUninitialised() {
  py::detail::get_type_info(typeid(T))->operator_new = [](std::size_t) -> void* {
    const auto name = py::type::of<T>().attr("__name__").template cast<std::string>();
    throw py::type_error("__init__() of " + name + " was not called");
  };
}

/// An enumeration; its parameters take plain numbers too, as sums of flags are numbers. The values
/// of an unscoped one are also the module's.
template <typename T>
void Enumeration(py::module_& module, const char* name,
                 std::initializer_list<std::pair<const char*, T>> values) {
  py::enum_<T> type(module, name, py::arithmetic(), Doc(name));
  RefuseUninitialised<T>();
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
  template <typename... Extra>
  Class(py::module_& module, const char* name, const Extra&... extra)
      : class_(module, name, Doc(name), extra...), name_(name) {
    RefuseUninitialised<T>();
  }

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
  /// A property tells what both of its members tell in C++: X and SetX.
  template <typename Get, typename Set>
  Class& Property(const char* name, Get get, Set set) {
    const std::string set_name = std::string("Set") + name;
    const std::string doc = DocOf(name) + std::string("\n\n") + DocOf(set_name.c_str());
    class_.def_property(name, get, set, doc.c_str());
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

/// A result that may be null, which is None in Python. Signatures say so: Optional[...].
template <typename Pointer>
struct OrNone {
  Pointer pointer;
};

/// The member or function itself, with a result that may be null.
template <typename Result, typename T, typename... Arguments>
auto MayBeNone(Result (T::*member)(Arguments...) const) {
  return [member](const T& object, Arguments... arguments) {
    return OrNone<std::decay_t<Result>>{(object.*member)(arguments...)};
  };
}
template <typename Result, typename... Arguments>
auto MayBeNone(Result (*function)(Arguments...)) {
  return [function](Arguments... arguments) { return OrNone<Result>{function(arguments...)}; };
}

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

/// A chart, and the Python object of its picture: the garbage collector has to see that one to find
/// a picture that holds its chart.
class PythonChart : public clsChartObject {
 public:
  py::handle picture;  // the chart's own reference keeps it alive
};

void BindModel(py::module_& module);
void BindAnalysis(py::module_& module);
void BindHostDrawing(py::module_& module);
void BindDrawing(py::module_& module);
void BindServices(py::module_& module);

}  // namespace keltrun::python

namespace pybind11::detail {

template <typename Pointer>
struct type_caster<keltrun::python::OrNone<Pointer>> {
  using Inner = make_caster<Pointer>;
  static constexpr auto name = const_name("Optional[") + Inner::name + const_name("]");
  static handle cast(const keltrun::python::OrNone<Pointer>& result, return_value_policy policy,
                     handle parent) {
    return Inner::cast(result.pointer, policy, parent);
  }
};

}  // namespace pybind11::detail
