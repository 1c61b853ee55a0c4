// Visitors that are written in Python.
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTPrimGroup.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/netlist/HDNTVisitor.h"

#include <map>

namespace hdnt::python {

namespace {

py::object visitorClass() { return py::module_::import("hdnt._visitor").attr("Visitor"); }

/// Passes on what the Python visitor has a method of its own for. Runs with the interpreter lock.
class PythonVisitor : public HDNTVisitor {
public:
    PythonVisitor(const py::object& visitor, Handle* library) : library_(library), current_(library) {
        const py::object type = py::type::of(visitor);
        const py::object base = visitorClass();
        for (const auto& [name, method] : py::dict(base.attr("__dict__"))) {
            const bool isOwn = PyFunction_Check(method.ptr()) && !py::getattr(type, name).is(method);
            if (isOwn) methods_.emplace(textOf(name), py::getattr(visitor, name));
        }
    }

    bool visitsPins() const override { return methods_.contains("visit_pin"); }
    bool enter(HDNTNetlist* netlist) override {
        const auto method = methods_.find("enter_netlist");
        return method == methods_.end() || py::bool_(callBack(method->second, py::make_tuple(handleTo(netlist))));
    }
    void sectionSeparator(HDNTNetlist* netlist) override { call("visit_section", netlist); }
    void elseVisit(HDNTIfStmt* statement) override { call("visit_else", statement); }
    void visit(HDNTBlock* block) override {
        current_ = libraryOf(*block, library_);
        call("visit_block", block);
    }
    void postVisit(HDNTBlock* block) override { call("leave_block", block); }
    void visit(HDNTPrimGroup*) override {}
    void postVisit(HDNTPrimGroup*) override {}

#define HDNT_PYTHON_VISITS(Class, name)                                                                                \
    void visit(Class* node) override { call("visit_" name, node); }                                                    \
    void postVisit(Class* node) override { call("leave_" name, node); }
    HDNT_PYTHON_VISITS(HDNTLibrary, "library")
    HDNT_PYTHON_VISITS(HDNTFunctionDecl, "function")
    HDNT_PYTHON_VISITS(HDNTBlockInst, "instance")
    HDNT_PYTHON_VISITS(HDNTPin, "pin")
    HDNT_PYTHON_VISITS(HDNTBus, "bus")
    HDNT_PYTHON_VISITS(HDNTProperty, "property")
    HDNT_PYTHON_VISITS(HDNTSignal, "signal")
    HDNT_PYTHON_VISITS(HDNTConnect, "connect")
    HDNT_PYTHON_VISITS(HDNTAssignBlockProperty, "block_assign")
    HDNT_PYTHON_VISITS(HDNTAssignPinProperty, "pin_assign")
    HDNT_PYTHON_VISITS(HDNTNetlist, "netlist")
    HDNT_PYTHON_VISITS(HDNTFunctionCall, "call")
    HDNT_PYTHON_VISITS(HDNTStmtBlock, "statements")
    HDNT_PYTHON_VISITS(HDNTIfStmt, "if")
    HDNT_PYTHON_VISITS(HDNTBlockPinName, "pin_ref")
    HDNT_PYTHON_VISITS(HDNTIntConstant, "int")
    HDNT_PYTHON_VISITS(HDNTBoolConstant, "bool")
    HDNT_PYTHON_VISITS(HDNTDoubleConstant, "double")
    HDNT_PYTHON_VISITS(HDNTStringConstant, "string")
    HDNT_PYTHON_VISITS(HDNTCompoundExpr, "operation")
#undef HDNT_PYTHON_VISITS

private:
    py::object handleTo(HDNTNode* node) const {
        if (!current_ || isDead(current_)) throw Gone("the library was closed during the walk");
        return py::reinterpret_steal<py::object>(wrap(node, current_));
    }

    void call(const char* name, HDNTNode* node) {
        const auto method = methods_.find(name);
        if (method != methods_.end()) callBack(method->second, py::make_tuple(handleTo(node)));
    }

    Handle* library_;
    Handle* current_; ///< of the block that is being visited
    std::map<std::string, py::object, std::less<>> methods_;
};

void accept(const py::object& self, const py::object& visitor, bool own) {
    const Use use(self.ptr());
    if (!py::isinstance(visitor, visitorClass()))
        throw py::type_error("an hdnt.Visitor is wanted, not " + std::string(Py_TYPE(visitor.ptr())->tp_name));
    PythonVisitor walker(visitor, use.library());
    inSection(LoadSection::Changes, describe(reinterpret_cast<Handle*>(self.ptr())), [&] {
        const InterpreterLock lock;
        if (auto* const library = nodeCast<HDNTLibrary>(use.node()))
            own ? library->acceptOwn(walker) : library->accept(walker);
        else if (auto* const block = nodeCast<HDNTBlock>(use.node()))
            own ? block->acceptOwn(walker) : block->accept(walker);
        else if (auto* const netlist = nodeCast<HDNTNetlist>(use.node())) netlist->accept(walker);
        else static_cast<HDNTNetlistEntity*>(use.node())->accept(walker);
    });
}

} // namespace

void addVisiting(py::module_& module) {
    const auto add = [](const py::object& type, const char* name, bool own, const char* description) {
        type.attr(name) = py::cpp_function(
            [type, own](const py::object& self, const py::object& visitor) {
                handleOf(self, reinterpret_cast<PyTypeObject*>(type.ptr()));
                accept(self, visitor, own);
            },
            py::name(name), py::is_method(type), py::arg("visitor"), description);
    };
    for (const char* name : {"Library", "Block", "Netlist", "Instance", "Signal", "Connect", "BlockAssign", "PinAssign",
                             "If", "Statements", "Expression"})
        add(module.attr(name), "accept", false, "Walks it and what it holds with a Visitor.");
    for (const char* name : {"Library", "Block"})
        add(module.attr(name), "accept_own", true,
            "The same without blocks of parents and mappings of map libraries; loads nothing.");
}

} // namespace hdnt::python
