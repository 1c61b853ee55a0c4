#include "bindings/python/Convert.h"
#include "bindings/python/Define.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/BlockFields.h"

#include <climits>

namespace hdnt::python {

using Type = HATAttrTypes::AttrType;

std::optional<Value> valueFor(const HDNTProperty* property, py::handle value) {
    if (PyBool_Check(value.ptr())) return value.cast<bool>();
    if (PyFloat_Check(value.ptr())) return value.cast<double>();
    if (!PyLong_Check(value.ptr())) return textOf(value);
    if (property && property->getType() == Type::TypeDouble) {
        const double number = PyLong_AsDouble(value.ptr());
        if (!PyErr_Occurred()) return number;
        PyErr_Clear();
        return std::nullopt;
    }
    int overflow = 0;
    const long number = PyLong_AsLongAndOverflow(value.ptr(), &overflow);
    if (overflow != 0 || number > INT_MAX || number < INT_MIN) return std::nullopt;
    return static_cast<int>(number);
}

std::string writtenText(py::handle value) try { return textOf(py::repr(value)); } catch (const py::error_already_set&) {
    return "'" + textOf(py::type::handle_of(value).attr("__name__")) + "' value";
}

namespace {

// Why the property may not have the value; empty when it may.
std::string refusal(const HDNTProperty& property, const py::object& value) {
    const std::optional<Value> plain = valueFor(&property, value);
    return scripts::refusalOf(property, plain, plain ? std::string() : writtenText(value));
}

HDNTProperty& propertyOf(const HandleInUse& use) { return use.as<HDNTProperty>(); }

} // namespace

void addPropertyType(py::module_& module) {
    const py::object type = makeType(module, "Property", HDNTNodeKind::Property, fieldsOf<scripts::propertyFields>(),
                                     "A typed attribute that a block or a bus declares.");
    const auto self = [](const py::object& handle) { return handleOf(handle, typeOf(HDNTNodeKind::Property)); };
    define(
        type, "refusal", "Why the property may not have the value; None when it may.",
        [self](const py::object& handle, const py::object& value) {
            const HandleInUse use(self(handle));
            return orNone(refusal(propertyOf(use), value));
        },
        py::arg("value"));
    define(
        type, "accepts", "Whether the property may have the value.",
        [self](const py::object& handle, const py::object& value) {
            const HandleInUse use(self(handle));
            return refusal(propertyOf(use), value).empty();
        },
        py::arg("value"));
    define(
        type, "digits",
        "Plain digits of a bit vector in the property's radix and width; values of other types come back as they are.",
        [self](const py::object& handle, const py::object& value, bool keepLeadingZeros) {
            const HandleInUse use(self(handle));
            return textObject(propertyOf(use).formatValue(textOf(value), keepLeadingZeros));
        },
        py::arg("value"), py::arg("keep_leading_zeros") = true);
}

} // namespace hdnt::python
