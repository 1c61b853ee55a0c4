// Visitors that are written in Python.
#include "bindings/python/Define.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/EventVisitor.h"
#include "hdnt/model/HDNTBlock.h"

#include <map>

namespace hdnt::python {

namespace {

py::object visitorClass() { return py::module_::import("hdnt._visitor").attr("Visitor"); }

/// Passes on what the Python visitor has a method of its own for. Runs with the interpreter lock.
class PythonVisitor : public scripts::EventVisitor {
public:
    PythonVisitor(const py::object& visitor, Handle* library) : library_(library), current_(library) {
        const py::object type = py::type::of(visitor);
        const py::object base = visitorClass();
        for (const auto& [name, method] : py::dict(base.attr("__dict__"))) {
            const bool isOwn = PyFunction_Check(method.ptr()) && !py::getattr(type, name).is(method);
            if (isOwn) methods_.emplace(textOf(name), py::getattr(visitor, name));
        }
    }

private:
    bool wants(std::string_view event) const override { return methods_.contains(event); }
    void tell(std::string_view event, HDNTNode& node) override { call(event, node); }
    bool ask(std::string_view event, HDNTNode& node) override { return py::bool_(call(event, node)); }
    void enterBlock(HDNTBlock& block) override { current_ = libraryOf(block, library_); }

    py::object handleTo(HDNTNode& node) const {
        if (!current_ || isDead(current_)) throw Gone("the library was closed during the walk");
        return py::reinterpret_steal<py::object>(wrap(&node, current_));
    }

    py::object call(std::string_view event, HDNTNode& node) const {
        return callBack(methods_.find(event)->second, py::make_tuple(handleTo(node)));
    }

    Handle* library_;
    Handle* current_; ///< of the block that is being visited
    std::map<std::string, py::object, std::less<>> methods_;
};

void accept(const py::object& self, const py::object& visitor, bool own) {
    const HandleInUse use(self.ptr());
    if (!py::isinstance(visitor, visitorClass()))
        throw py::type_error("an hdnt.Visitor is wanted, not " + std::string(Py_TYPE(visitor.ptr())->tp_name));
    PythonVisitor walker(visitor, use.library());
    inSection(LoadSection::Changes, describe(reinterpret_cast<Handle*>(self.ptr())), [&] {
        const InterpreterLock lock;
        scripts::walk(*use.node(), walker, own);
    });
}

} // namespace

void addVisiting(py::module_& module) {
    const auto add = [](const py::object& type, const char* name, bool own, const char* description) {
        define(
            type, name, description,
            [type, own](const py::object& self, const py::object& visitor) {
                handleOf(self, reinterpret_cast<PyTypeObject*>(type.ptr()));
                accept(self, visitor, own);
            },
            py::arg("visitor"));
    };
    for (const char* name : {"Library", "Block", "Netlist", "Instance", "Signal", "Connect", "BlockAssign", "PinAssign",
                             "If", "Statements", "Expression"})
        add(module.attr(name), "accept", false, "Walks it and what it holds with a Visitor.");
    for (const char* name : {"Library", "Block"})
        add(module.attr(name), "accept_own", true,
            "The same without blocks of parents and mappings of map libraries; loads nothing.");
}

} // namespace hdnt::python
