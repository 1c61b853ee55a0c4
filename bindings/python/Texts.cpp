// What is written of a model, and what two differ in.
#include "bindings/python/LoadSection.h"
#include "bindings/python/Text.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/writer/HDNTComparison.h"
#include "hdnt/writer/HDNTPrintVisitor.h"
#include "hdnt/writer/HDNTSourceVisitor.h"

#include <algorithm>

namespace hdnt::python {

namespace {

std::string printed(HDNTNode& node) {
    return written([&](FILE* stream) {
        if (auto* const library = nodeCast<HDNTLibrary>(&node)) return library->print(stream);
        HDNTPrintVisitor visitor(stream);
        static_cast<HDNTBlock&>(node).accept(visitor);
    });
}

// A block stands by itself here and not in a library: its outermost lines, which have one blank, have none.
std::string unindented(const std::string& text) {
    std::string result;
    for (size_t at = text.find_first_not_of('\n'); at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const size_t begin = text[at] == ' ' && text[at + 1] != ' ' ? at + 1 : at;
        result.append(text, begin, end - begin);
        at = end;
    }
    while (result.ends_with("\n\n")) result.pop_back();
    return result;
}

std::string source(HDNTNode& node) {
    std::vector<std::string> problems;
    bool complete = true;
    std::string text = written([&](FILE* stream) {
        if (auto* const library = nodeCast<HDNTLibrary>(&node)) {
            complete = library->printSource(stream, &problems);
            return;
        }
        HDNTSourceVisitor visitor(stream, &problems);
        static_cast<HDNTBlock&>(node).acceptOwn(visitor);
        complete = visitor.isComplete();
    });
    if (!complete) throw std::runtime_error("this cannot be written as source: " + problems.at(0));
    return nodeCast<HDNTBlock>(&node) ? unindented(text) : text;
}

// A whole library takes its time, so other Python threads run meanwhile.
py::object textOfNode(const py::object& self, std::string (*make)(HDNTNode&)) {
    const Use use(self.ptr());
    std::string text;
    inSection(LoadSection::Changes, describe(reinterpret_cast<Handle*>(self.ptr())), [&] { text = make(*use.node()); });
    return textObject(text);
}

void print(const py::object& self, const py::object& file) {
    const py::object text = textOfNode(self, printed);
    const py::object to = file.is_none() ? py::module_::import("sys").attr("stdout") : file;
    to.attr("write")(text);
}

py::object placeOf(const HDNTDifference::Place& place) {
    if (place.file.empty() && place.line == 0) return py::none();
    return dataClass("Location")(orNone(place.file), place.line, place.column, place.column);
}

template <typename Model>
std::vector<HDNTDifference> compare(const Use& before, const Use& after) {
    return HDNTComparison::compare(before.as<const Model>(), after.as<const Model>());
}

py::list diff(const py::object& before, const py::object& after) {
    const bool libraries = PyObject_TypeCheck(before.ptr(), typeOf(HDNTNodeKind::Library)) != 0;
    PyTypeObject* const type = typeOf(libraries ? HDNTNodeKind::Library : HDNTNodeKind::Block);
    const Use left(handleOf(before, type));
    const Use right(handleOf(after, type));
    std::vector<HDNTDifference> differences;
    inSection(LoadSection::Quiet, "diff",
              [&] { differences = libraries ? compare<HDNTLibrary>(left, right) : compare<HDNTBlock>(left, right); });
    const py::object make = dataClass("Difference");
    py::list list;
    for (const HDNTDifference& difference : differences)
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
        type.attr("print") = py::cpp_function(
            [wanted](const py::object& self, const py::object& file) {
                handleOf(self, wanted);
                print(self, file);
            },
            py::name("print"), py::is_method(type), py::arg("file") = py::none(),
            "Writes the printed form to a file object, sys.stdout by default.");
        type.attr("source") = py::cpp_function(
            [wanted](const py::object& self) {
                handleOf(self, wanted);
                return textOfNode(self, source);
            },
            py::name("source"), py::is_method(type), "The NTL source that reads back to the same.");
        type.attr("diff") =
            py::cpp_function(diff, py::name("diff"), py::is_method(type), py::arg("other"),
                             "The differences from this to the other, a list of Difference; empty when equal.");
    }
}

} // namespace hdnt::python
