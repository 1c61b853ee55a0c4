#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/Words.h"

namespace hdnt::python {

namespace {

std::string_view section(HDNTNetlist& netlist) { return words::sections.wordOf(netlist.section()); }
OrNone referencedInstance(HDNTNetlist& netlist) { return {netlist.getReferencedInstanceName()}; }

PyGetSetDef netlistFields[] = {
    field<section>("section", "\"mapsto\", \"expandsto\", \"modifiedby\" or \"retargetsto\"."),
    field<&HDNTNetlist::getTypeBlock>("block", "The block that is mapped."),
    field<&HDNTNetlist::signals>("signals", "Tuple of its signals."),
    field<&HDNTNetlist::connects>("connects", "Tuple of its connects, without those of signals."),
    field<&HDNTNetlist::instances>("instances", "Tuple of the instances outside statements."),
    field<&HDNTNetlist::blockPropertyAssigns>("block_property_assigns",
                                              "Tuple of the property values given to instances."),
    field<&HDNTNetlist::pinPropertyAssigns>("pin_property_assigns", "Tuple of the property values given to pins."),
    field<&HDNTNetlist::ifStmts>("ifs", "Tuple of its if statements."),
    field<&HDNTNetlist::preInstanceCalls>("pre_instance_calls", "Tuple of the calls before the first instance."),
    field<&HDNTNetlist::postInstanceCalls>("post_instance_calls", "Tuple of the calls behind it."),
    field<referencedInstance>("referenced_instance", "Name of the instance that stands for it; None without one."),
    field<scripts::fields::isMapLibrary>("is_map_library", "Whether it comes from a map library."),
    noMoreFields};

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

PyGetSetDef instanceFields[] = {field<&HDNTBlockInst::instName>("name", "Name of the instance."),
                                field<&HDNTBlockInst::typeName>("type_name", "Name of the block it is an instance of."),
                                {"type_block", typeBlock, nullptr,
                                 "That block, of the library, its parents or the common one; None without.", nullptr},
                                noMoreFields};

PyGetSetDef signalFields[] = {
    field<&HDNTSignal::name>("name", "Name of the signal."),
    field<&HDNTSignal::connect>("connect", "The pins declared with it, a Connect; None without any."),
    field<&HDNTSignal::isOne>("is_one", "Whether it is the constant 1."),
    field<&HDNTSignal::isZero>("is_zero", "Whether it is the constant 0."), noMoreFields};

PyGetSetDef connectFields[] = {field<&HDNTConnect::signalName>("signal_name", "Name of the signal."),
                               field<&HDNTConnect::getSignal>("signal", "The signal; None when it is not declared."),
                               field<&HDNTConnect::pins>("pins", "Tuple of the pins that it connects, each a PinRef."),
                               noMoreFields};

OrNone refInstance(HDNTBlockPinName& pin) { return {pin.instName()}; }
PyGetSetDef pinRefFields[] = {
    field<refInstance>("instance", "Name of the instance; None for a pin of the mapped block."),
    field<&HDNTBlockPinName::pinName>("name", "Name of the pin."),
    field<&HDNTBlockPinName::inverted>("inverted", "Whether the pin is inverted."), noMoreFields};

PyGetSetDef blockAssignFields[] = {
    field<&HDNTAssignBlockProperty::instName>("instance", "Name of the instance."),
    field<&HDNTAssignBlockProperty::propName>("property", "Name of the property."),
    field<&HDNTAssignBlockProperty::value>("value", "The expression that gives the value."), noMoreFields};

PyGetSetDef pinAssignFields[] = {field<&HDNTAssignPinProperty::instName>("instance", "Name of the instance."),
                                 field<&HDNTAssignPinProperty::pinName>("pin", "Name of the pin."),
                                 field<&HDNTAssignPinProperty::propName>("property", "Name of the property."),
                                 field<&HDNTAssignPinProperty::value>("value", "The expression that gives the value."),
                                 noMoreFields};

PyGetSetDef ifFields[] = {field<&HDNTIfStmt::condition>("condition", "The expression that decides."),
                          field<&HDNTIfStmt::thenStmt>("then", "The statement for yes."),
                          field<&HDNTIfStmt::elseStmt>("otherwise", "The statement for no; None without one."),
                          noMoreFields};

PyGetSetDef statementsFields[] = {
    field<&HDNTStmtBlock::statements>("statements", "Tuple of what stands in the braces."), noMoreFields};

Word resultType(HDNTFunctionDecl& function) { return {typeWord(function.getType())}; }
py::object formals(HDNTFunctionDecl& function) {
    py::tuple types(function.getNumFormals());
    for (size_t i = 0; i < function.getNumFormals(); ++i)
        types[i] = py::reinterpret_borrow<py::object>(typeWord(function.getFormal(i)));
    return types;
}
PyGetSetDef functionFields[] = {field<&HDNTFunctionDecl::getName>("name", "Its name."),
                                field<resultType>("type", "Type of its result."),
                                field<formals>("arguments", "Tuple of the types of its arguments."), noMoreFields};

} // namespace

void addNetlistTypes(py::module_& module) {
    makeType(module, "Netlist", HDNTNodeKind::Netlist, netlistFields, "A block's mapping.");
    makeType(module, "Instance", HDNTNodeKind::BlockInst, instanceFields, "An instance of another block.");
    makeType(module, "Signal", HDNTNodeKind::Signal, signalFields, "A signal of a mapping.");
    makeType(module, "Connect", HDNTNodeKind::Connect, connectFields, "Pins that are connected to a signal.");
    makeType(module, "PinRef", HDNTNodeKind::BlockPinName, pinRefFields, "A pin named in a connect.");
    makeType(module, "BlockAssign", HDNTNodeKind::AssignBlockProperty, blockAssignFields,
             "Gives a property of an instance a value.");
    makeType(module, "PinAssign", HDNTNodeKind::AssignPinProperty, pinAssignFields,
             "Gives a property of a pin a value.");
    makeType(module, "If", HDNTNodeKind::IfStmt, ifFields, "An if statement.");
    makeType(module, "Statements", HDNTNodeKind::StmtBlock, statementsFields, "Statements in braces.");
    makeType(module, "Function", HDNTNodeKind::FunctionDecl, functionFields,
             "A function that mappings of the library may call.");
}

} // namespace hdnt::python
