#include "hdnt/netlist/HDNTSignal.h"

#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTNetlist.h"

HDNTSignal::HDNTSignal(std::string_view name, std::vector<HDNTPinInst*>* pins) : name_(name) {
    setKind(HDNTNodeKind::Signal);
    if (pins) connect_ = std::make_unique<HDNTConnect>(name, pins);
}

HDNTSignal::HDNTSignal(std::string_view name, const std::vector<HDNTPinInst*>& pins)
    : name_(name), connect_(std::make_unique<HDNTConnect>(name, pins)) {
    setKind(HDNTNodeKind::Signal);
}

HDNTSignal::HDNTSignal(std::string_view name, std::nullptr_t) : name_(name) { setKind(HDNTNodeKind::Signal); }

HDNTSignal::HDNTSignal(std::string_view name, HDNTSigList* sigList) : name_(name), sigList_(sigList) {
    setKind(HDNTNodeKind::Signal);
}

HDNTSignal::~HDNTSignal() = default;

void HDNTSignal::finalize() {
    isOne_ = name() == "@1";
    isZero_ = name() == "@0";
    if (connect_) connect_->setParent(this);
}

HDNTBlock* HDNTSignal::getBlock() {
    const HDNTNetlist* const netlist = getNetlist();
    return netlist ? netlist->getTypeBlock() : nullptr;
}

bool HDNTSigList::expand(std::vector<HDNTSignal*>& out) {
    const auto append = [&](const std::string& name, HDNTSigList* list) {
        auto signal = std::make_unique<HDNTSignal>(name, list);
        signal->takeLocation(*this);
        out.push_back(signal.get());
        return signal.release();
    };
    if (!isMultipleInstances(name())) {
        append(name(), nullptr);
        return false;
    }
    std::string base;
    int first = 0;
    int last = 0;
    if (!rangeOf(name(), base, first, last)) return true;
    const long step = first > last ? -1 : 1;
    for (long i = first; i != last + step; i += step) {
        HDNTSignal* const signal = append(base + '[' + std::to_string(i) + ']', this);
        if (!firstExpanded_) firstExpanded_ = signal;
    }
    return true;
}
