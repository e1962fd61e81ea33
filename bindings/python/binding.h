// Helpers that give every bound member the documentation of its C++ header.
#pragma once

#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "bindings/python/docs.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {

/// The UTF-8 text in a bytes or bytearray object; nullopt for any other object. Bytes that are not
/// UTF-8 raise UnicodeDecodeError: pybind11 alone would take every byte for text.
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

/// For calls that take long, wait, or call the host: other threads run in the meantime. When the
/// component calls back into Python, it takes the interpreter's lock again.
using Released = py::call_guard<py::gil_scoped_release>;

/// Makes the members of an object that was never initialized, such as the result of
/// `cls.__new__(cls)`, raise TypeError. Without it pybind11 hands them memory without an object.
template <typename T>
void RefuseUninitialized() {
  py::detail::get_type_info(typeid(T))->operator_new = [](std::size_t) -> void* {
    const auto name = py::type::of<T>().attr("__name__").template cast<std::string>();
    throw py::type_error("__init__() of " + name + " was not called");
  };
}

/// An enumeration. Where a parameter is one, a plain number is accepted as well, because a sum of
/// flags is a number. The values of an unscoped enumeration are also attributes of the module.
template <typename T>
void Enumeration(py::module_& module, const char* name,
                 std::initializer_list<std::pair<const char*, T>> values) {
  py::enum_<T> type(module, name, py::arithmetic(), Doc(name));
  RefuseUninitialized<T>();
  for (const auto& [value_name, value] : values) {
    type.value(value_name, value, Doc(std::string(name) + "." + value_name));
  }
  if constexpr (std::is_convertible_v<T, std::int32_t>) type.export_values();
  py::implicitly_convertible<std::int32_t, T>();
}
#define KR_VALUE(name) \
  { #name, name }

/// The items 1 to `count` of an object, as `at` returns them.
template <typename T, typename Count, typename At>
auto AllItems(const T& object, Count count, At at) {
  std::vector<std::decay_t<std::invoke_result_t<At, const T&, std::int32_t>>> items;
  const std::int32_t length = std::invoke(count, object);
  for (std::int32_t i = 1; i <= length; ++i) items.push_back(std::invoke(at, object, i));
  return items;
}

/// The items of a slice. Raises ValueError for a step of 0.
template <typename Item>
std::vector<Item> Sliced(const std::vector<Item>& items, const py::slice& range) {
  py::ssize_t start = 0, stop = 0, step = 0, length = 0;
  if (!range.compute(static_cast<py::ssize_t>(items.size()), &start, &stop, &step, &length)) {
    throw py::error_already_set();
  }
  std::vector<Item> found;
  for (; length > 0; --length, start += step) {
    found.push_back(items[static_cast<std::size_t>(start)]);
  }
  return found;
}

/// The items that a Python loop runs over. Signatures say Iterator[...].
template <typename Item>
struct Iteration {
  std::vector<Item> items;
};
template <typename Item>
Iteration(std::vector<Item>) -> Iteration<Item>;

/// What repr() shows of an object: its type and these members. A member that is a method is called
/// without arguments.
std::string Description(const py::object& self, const std::vector<std::string>& members);

/// A bound class. A property is named as in the object model; where its value depends on an index,
/// it is a method, with SetX to write.
template <typename T, typename... Options>
class Class {
 public:
  template <typename... Extra>
  Class(py::module_& module, const char* name, const Extra&... extra)
      : class_(module, name, Doc(name), extra...), name_(name) {
    RefuseUninitialized<T>();
  }

  template <typename Init, typename... Extra>
  Class& MadeBy(Init&& init, const Extra&... extra) {
    class_.def(std::forward<Init>(init), extra...);
    return *this;
  }
  template <typename Member>
  Class& Field(const char* name, Member member) {
    class_.def_readwrite(name, member, DocOf(name));
    fields_.emplace_back(name);
    return *this;
  }
  /// A value that lives inside the object keeps the object alive.
  template <typename Get>
  Class& ReadOnly(const char* name, Get get) {
    class_.def_property_readonly(name, get, py::return_value_policy::reference_internal,
                                 DocOf(name));
    return *this;
  }
  /// A constant. Python has no place for its documentation.
  template <typename Value>
  Class& Constant(const char* name, Value value) {
    class_.attr(name) = value;
    return *this;
  }
  /// The documentation of a property is that of both C++ members, X and SetX.
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

  /// A property that only Python has.
  template <typename Get>
  Class& Extra(const char* name, Get get, const char* doc) {
    class_.def_property_readonly(name, get, doc);
    return *this;
  }
  /// Makes the objects sequences of `what`: `count` and `at` are the members that give the items
  /// from 1 on. A loop runs over the items that are there when it begins, so its body may change
  /// the object. An empty object is still true: hosts write `if root.ClassData(name)`, which asks
  /// whether there is such a class.
  template <typename Count, typename At>
  Class& Sequence(Count count, At at, const char* what) {
    const auto length = [count](const T& object) {
      return std::max<py::ssize_t>(std::invoke(count, object), 0);
    };
    class_.def("__len__", length)
        .def("__bool__", [](const T&) { return true; })
        .def("__iter__",
             [count, at](const T& object) { return Iteration{AllItems(object, count, at)}; })
        .def("__getitem__",
             [length, at](const T& object, py::ssize_t index) {
               const py::ssize_t size = length(object);
               if (index < -size || index >= size) throw py::index_error("index out of range");
               const py::ssize_t from_zero = index < 0 ? index + size : index;
               return std::invoke(at, object, static_cast<std::int32_t>(from_zero + 1));
             })
        .def("__getitem__", [count, at](const T& object, const py::slice& range) {
          return Sliced(AllItems(object, count, at), range);
        });
    class_.attr("__doc__") =
        Doc(name_) + std::string("\n\nIn Python it is a sequence of ") + what +
        ". It has len(), indexes\nfrom 0 (negative ones count from the end), slices and iteration. "
        "It is true even\nwhen it is empty.";
    return *this;
  }
  /// Makes repr() show these members.
  Class& Shows(std::vector<std::string> members) {
    class_.def("__repr__", [members = std::move(members)](const py::object& self) {
      return Description(self, members);
    });
    return *this;
  }
  /// Makes repr() show the fields that are bound so far.
  Class& ShowsFields() { return Shows(fields_); }
  /// Makes str() the ToString() of the object.
  Class& Text() {
    class_.def("__str__", [](const py::object& self) { return self.attr("ToString")(); });
    return *this;
  }

 private:
  const char* DocOf(const char* member) const { return Doc(name_ + "." + member); }

  py::class_<T, std::shared_ptr<T>, Options...> class_;
  std::string name_;
  std::vector<std::string> fields_;
};

/// A result that may be null, which is None in Python. Signatures say Optional[...].
template <typename Pointer>
struct OrNone {
  Pointer pointer;
};

/// The member or function, its result marked as one that may be null.
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

/// The constructor of a plain structure, which takes the fields by name.
template <typename T>
auto Fields() {
  return py::init([](const py::kwargs& fields) {
    T made;
    const py::object object = py::cast(&made, py::return_value_policy::reference);
    for (const auto& [name, value] : fields) object.attr(name) = value;
    return made;
  });
}

/// Registers a function that runs before the interpreter ends. The component must have released
/// every Python object by then.
inline void AtExit(void (*function)()) {
  py::module_::import("atexit").attr("register")(py::cpp_function(function));
}

/// A C++ object whose class may be written in Python. The Python object lives as long as the
/// component holds the result. None gives null.
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

/// A chart with the Python object of its picture. The garbage collector must see the picture to
/// find one that refers to its chart.
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

template <typename Item>
struct type_caster<keltrun::python::Iteration<Item>> {
  static constexpr auto name = const_name("Iterator[") + make_caster<Item>::name + const_name("]");
  static handle cast(const keltrun::python::Iteration<Item>& result, return_value_policy policy,
                     handle parent) {
    const auto items = reinterpret_steal<object>(
        make_caster<std::vector<Item>>::cast(result.items, policy, parent));
    return iter(items).release();
  }
};

}  // namespace pybind11::detail
