#include "hdnt/netlist/HDNTConnect.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"

#include <memory>
#include <string_view>

HDNTBlockPinName::HDNTBlockPinName(std::string_view instName, std::string_view pinName)
    : inverted_(pinName.starts_with('~')), instName_(instName) {
    setKind(HDNTNodeKind::BlockPinName);
    pinName_ = HSTUniqString(pinName.substr(inverted_ ? 1 : 0));
}

HDNTConnect::HDNTConnect(std::string_view signalName, std::vector<HDNTPinInst*>* pins) : signalName_(signalName) {
    setKind(HDNTNodeKind::Connect);
    const std::unique_ptr<std::vector<HDNTPinInst*>> owned(pins);
    if (pins) pins_ = std::move(*pins);
}

HDNTConnect::HDNTConnect(std::string_view signalName, const std::vector<HDNTPinInst*>& pins)
    : signalName_(signalName), pins_(pins) {
    setKind(HDNTNodeKind::Connect);
}

HDNTConnect::~HDNTConnect() {
    for (const HDNTPinInst* pin : pins_) delete pin;
}

void HDNTConnect::check() {
    if (!getSignal()) HDNTError::NoValidSignalOnConnectStmt(getLocation());
}

HDNTSignal* HDNTConnect::getSignal() const {
    if (auto* const signal = nodeCast<HDNTSignal>(getParent())) return signal;
    for (HDNTNode* node = getParent(); node; node = node->getParent())
        if (const auto* const netlist = nodeCast<HDNTNetlist>(node)) return netlist->findSignal(signalName());
    return nullptr;
}
