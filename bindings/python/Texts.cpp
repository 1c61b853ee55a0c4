// What is written of a model, and what two differ in.
#include "bindings/python/Define.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/Text.h"
#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/model/HDNTBlock.h"

namespace hdnt::python {

namespace {

// A whole library takes its time, so other Python threads run meanwhile.
py::object textOfNode(const py::object& self, std::string (*make)(HDNTNode&)) {
    const HandleInUse use(self.ptr());
    std::string text;
    inSection(LoadSection::Changes, describe(reinterpret_cast<Handle*>(self.ptr())), [&] { text = make(*use.node()); });
    return textObject(text);
}

void print(const py::object& self, const py::object& file) {
    const py::object text = textOfNode(self, scripts::printedForm);
    const py::object to = file.is_none() ? py::module_::import("sys").attr("stdout") : file;
    to.attr("write")(text);
}

py::object placeOf(const HDNTDifference::Place& place) {
    if (place.file.empty() && place.line == 0) return py::none();
    return dataClass("Location")(orNone(place.file), place.line, place.column, py::none());
}

py::list diff(const py::object& before, const py::object& after) {
    const bool libraries = PyObject_TypeCheck(before.ptr(), typeOf(HDNTNodeKind::Library)) != 0;
    PyTypeObject* const type = typeOf(libraries ? HDNTNodeKind::Library : HDNTNodeKind::Block);
    const HandleInUse left(handleOf(before, type));
    const HandleInUse right(handleOf(after, type));
    const py::object make = dataClass("Difference");
    py::list list;
    for (const HDNTDifference& difference : scripts::differencesOf(interpreterLock(), *left.node(), *right.node()))
        list.append(make(HDNTComparison::nameOf(difference.effect), HDNTComparison::nameOf(difference.change),
                         HDNTComparison::nameOf(difference.element), HDNTComparison::nameOf(difference.facet),
                         orNone(difference.block), textObject(difference.path), textObject(difference.oldValue),
                         textObject(difference.newValue), placeOf(difference.oldPlace), placeOf(difference.newPlace)));
    return list;
}

} // namespace

void addTexts(py::module_& module) {
    for (const char* name : {"Library", "Block"}) {
        const py::object type = module.attr(name);
        auto* const wanted = reinterpret_cast<PyTypeObject*>(type.ptr());
        define(
            type, "print", "Writes the printed form to a file object, sys.stdout by default.",
            [wanted](const py::object& self, const py::object& file) {
                handleOf(self, wanted);
                print(self, file);
            },
            py::arg("file") = py::none());
        define(type, "source", "The NTL source that reads back to the same.", [wanted](const py::object& self) {
            handleOf(self, wanted);
            return textOfNode(self, scripts::sourceForm);
        });
        define(type, "diff", "The differences from this to the other, a list of Difference; empty when equal.", diff,
               py::arg("other"));
    }
}

} // namespace hdnt::python
