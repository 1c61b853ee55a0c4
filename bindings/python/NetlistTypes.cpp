#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/MappingFields.h"

namespace hdnt::python {

namespace {

// Instances may name a block of the common library, which is loaded for that.
PyObject* typeBlock(PyObject* self, void*) noexcept {
    return guarded([&]() -> PyObject* {
        const HandleInUse use(self);
        const auto& instance = use.as<HDNTBlockInst>();
        auto& library = *static_cast<HDNTLibrary*>(use.library()->native.node());
        if (HDNTBlock* const block = library.getTypeBlockByName(instance.typeName(), true))
            return wrap(block, use.library());
        py::object found = py::none();
        inSection(LoadSection::Changes, instance.typeName(), [&] {
            HDNTBlock* const block = instance.getTypeBlock(&library);
            const InterpreterLock lock;
            if (!block) return;
            const auto owner = py::reinterpret_steal<py::object>(wrapLibrary(*block->getLibrary()));
            found = py::reinterpret_steal<py::object>(wrap(block, reinterpret_cast<Handle*>(owner.ptr())));
        });
        return found.release().ptr();
    });
}

} // namespace

void addNetlistTypes(py::module_& module) {
    makeType(module, "Netlist", HDNTNodeKind::Netlist, fieldsOf<scripts::netlistFields>(), "A block's mapping.");
    makeType(module, "Instance", HDNTNodeKind::BlockInst,
             fieldsOf<scripts::instanceFields>(
                 {{"type_block", typeBlock, nullptr,
                   "That block, of the library, its parents or the common one; None without.", nullptr}}),
             "An instance of another block.");
    makeType(module, "Signal", HDNTNodeKind::Signal, fieldsOf<scripts::signalFields>(), "A signal of a mapping.");
    makeType(module, "Connect", HDNTNodeKind::Connect, fieldsOf<scripts::connectFields>(),
             "Pins that are connected to a signal.");
    makeType(module, "PinRef", HDNTNodeKind::BlockPinName, fieldsOf<scripts::pinRefFields>(),
             "A pin named in a connect.");
    makeType(module, "BlockAssign", HDNTNodeKind::AssignBlockProperty, fieldsOf<scripts::blockAssignFields>(),
             "Gives a property of an instance a value.");
    makeType(module, "PinAssign", HDNTNodeKind::AssignPinProperty, fieldsOf<scripts::pinAssignFields>(),
             "Gives a property of a pin a value.");
    makeType(module, "If", HDNTNodeKind::IfStmt, fieldsOf<scripts::ifFields>(), "An if statement.");
    makeType(module, "Statements", HDNTNodeKind::StmtBlock, fieldsOf<scripts::statementsFields>(),
             "Statements in braces.");
    makeType(module, "Function", HDNTNodeKind::FunctionDecl, fieldsOf<scripts::functionFields>(),
             "A function that mappings of the library may call.");
}

} // namespace hdnt::python
