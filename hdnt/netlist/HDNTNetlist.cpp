#include "hdnt/netlist/HDNTNetlist.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTReferencedInstanceVisitor.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>

using hdnt::platform::textHash;

// Appends the entity when it is of the list's kind.
template <typename Kind>
static bool sortInto(std::vector<Kind*>& list, HDNTNetlistEntity* entity) {
    auto* const item = nodeCast<Kind>(entity);
    if (item) list.push_back(item);
    return item != nullptr;
}

template <typename Kind>
static void reserveFor(std::vector<Kind*>& list, const std::vector<HDNTNetlistEntity*>& entities) {
    const auto isItem = [](const HDNTNetlistEntity* entity) { return nodeCast<Kind>(entity) != nullptr; };
    list.reserve(static_cast<std::size_t>(std::count_if(entities.begin(), entities.end(), isItem)));
}

HDNTNetlist::HDNTNetlist(std::vector<HDNTNetlistEntity*>* entities) {
    setKind(HDNTNodeKind::Netlist);
    if (!entities) return;
    reserveFor(signals_, *entities);
    reserveFor(connects_, *entities);
    reserveFor(instances_, *entities);
    reserveFor(blockPropertyAssigns_, *entities);
    for (HDNTNetlistEntity* entity : *entities)
        sortInto(signals_, entity) || sortInto(connects_, entity) || sortInto(instances_, entity) ||
            sortInto(blockPropertyAssigns_, entity) || sortInto(pinPropertyAssigns_, entity) ||
            sortInto(ifStmts_, entity) || sortInto(instances_.empty() ? preInstanceCalls_ : postInstanceCalls_, entity);
}

template <typename Kind>
static void deleteAll(const std::vector<Kind*>& list) {
    for (const Kind* item : list) delete item;
}

HDNTNetlist::~HDNTNetlist() {
    deleteAll(signals_);
    deleteAll(connects_);
    deleteAll(instances_);
    deleteAll(blockPropertyAssigns_);
    deleteAll(pinPropertyAssigns_);
    deleteAll(ifStmts_);
    deleteAll(preInstanceCalls_);
    deleteAll(postInstanceCalls_);
}

// Lists that became signals are referred to by them and so live as long as the process, in reach of leak checkers.
static void keep(HDNTSigList* list) {
    static auto* const kept = new std::vector<HDNTSigList*>;
    kept->push_back(list);
}

void HDNTNetlist::expandSignals() {
    if (std::any_of(signals_.begin(), signals_.end(),
                    [](const HDNTSignal* signal) { return nodeCast<HDNTSigList>(signal) != nullptr; })) {
        std::vector<HDNTSignal*> expanded;
        expanded.reserve(2 * signals_.size());
        for (HDNTSignal* signal : signals_) {
            auto* const list = nodeCast<HDNTSigList>(signal);
            if (!list) expanded.push_back(signal);
            else if (list->expand(expanded)) keep(list);
            else delete list;
        }
        signals_ = std::move(expanded);
    }
    signalsByName_.build(signals_.size(), [this](size_t i) { return textHash(signals_[i]->name()); });
}

template <typename Kind>
static void finalizeAll(const std::vector<Kind*>& list, HDNTNetlist* parent) {
    for (Kind* item : list) {
        item->setParent(parent);
        item->finalize();
    }
}

void HDNTNetlist::finalize() {
    expandSignals();
    finalizeAll(instances_, this);
    finalizeAll(signals_, this);
    finalizeAll(connects_, this);
    finalizeAll(blockPropertyAssigns_, this);
    finalizeAll(ifStmts_, this);
    for (HDNTFunctionCall* call : preInstanceCalls_) call->setParent(this);
    finalizeAll(postInstanceCalls_, this);
}

template <typename Kind>
static void checkAll(const std::vector<Kind*>& list) {
    for (Kind* item : list) item->check();
}

void HDNTNetlist::check() {
    checkAll(instances_);
    checkAll(connects_);
    checkAll(blockPropertyAssigns_);
    checkAll(ifStmts_);
    checkAll(preInstanceCalls_);
    checkAll(postInstanceCalls_);
}

HDNTBlock* HDNTNetlist::getTypeBlock() const { return nodeCast<HDNTBlock>(getParent()); }

// The interface passes it by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
HDNTSignal* HDNTNetlist::getSignal(std::string name) const { return findSignal(name); }

HDNTSignal* HDNTNetlist::findSignal(std::string_view name) const {
    for (const uint32_t position : signalsByName_.find(textHash(name)))
        if (signals_[position]->name() == name) return signals_[position];
    if (!signalsByName_.empty()) return nullptr;
    for (HDNTSignal* signal : signals_)
        if (signal->name() == name) return signal;
    return nullptr;
}

std::string HDNTNetlist::getReferencedInstanceName() {
    if (!instances_.empty()) return instances_.front()->instName();
    HDNTReferencedInstanceVisitor visitor;
    accept(visitor);
    return visitor.recordedName();
}
