#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <type_traits>
#include <utility>

namespace hdnt::python {

namespace py = pybind11;

/// What stands between the parentheses of a signature, as `inspect` reads it: `self, file=None`.
class Signature {
public:
    void add(const py::arg& argument) { append(argument.name); }
    void add(const py::arg_v& argument) {
        append(std::string(argument.name) + "=" + std::string(py::str(py::repr(argument.value))));
    }
    void add(const py::kw_only&) { append("*"); }
    void append(const std::string& part) { text_ += (text_.empty() ? "" : ", ") + part; }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

template <typename Type, typename Function>
inline constexpr bool takes = false;
template <typename Type, typename Result, typename... Arguments>
inline constexpr bool takes<Type, Result(Arguments...)> = (std::is_same_v<Type, std::remove_cvref_t<Arguments>> || ...);

/// The documentation of a function, with its signature before it.
template <typename Function, typename... Arguments>
std::string documentation(const char* name, const char* self, const char* description, const Arguments&... arguments) {
    using Plain = py::detail::function_signature_t<Function>;
    Signature signature;
    if (self) signature.append(self);
    (signature.add(arguments), ...);
    if (takes<py::args, Plain>) signature.append("*args");
    if (takes<py::kwargs, Plain>) signature.append("**more");
    return std::string(name) + "(" + signature.text() + ")\n--\n\n" + description;
}

/// Adds a function to the module. `arguments` are py::arg and py::kw_only; the signature that `inspect` and `help` show
/// is made of them.
template <typename Function, typename... Arguments>
void define(py::module_& module, const char* name, const char* description, Function function,
            const Arguments&... arguments) {
    const std::string text = documentation<Function>(name, nullptr, description, arguments...);
    module.attr(name) =
        py::cpp_function(std::move(function), py::name(name), py::scope(module), arguments..., text.c_str());
    module.attr(name).attr("__module__") = "hdnt";
}

/// The same for a method of a type.
template <typename Function, typename... Arguments>
void define(const py::object& type, const char* name, const char* description, Function function,
            const Arguments&... arguments) {
    const std::string text = documentation<Function>(name, "self", description, arguments...);
    type.attr(name) =
        py::cpp_function(std::move(function), py::name(name), py::is_method(type), arguments..., text.c_str());
}

} // namespace hdnt::python
