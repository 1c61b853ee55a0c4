#include "author/lint/MappingView.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace hdnt::author {

MappingView::MappingView(const HDNTNetlist& netlist) {
    const auto all = [this](const auto& entities) {
        for (const auto* entity : entities) statement(*entity, 0);
    };
    instances_.reserve(netlist.instances().size());
    signals_.reserve(netlist.signals().size());
    connects_.reserve(netlist.signals().size() + netlist.connects().size());
    all(netlist.preInstanceCalls());
    all(netlist.instances());
    all(netlist.signals());
    all(netlist.connects());
    all(netlist.pinPropertyAssigns());
    all(netlist.blockPropertyAssigns());
    all(netlist.ifStmts());
    all(netlist.postInstanceCalls());
}

// As HDNTExpansion goes through them, but into both branches.
void MappingView::statement(const HDNTNetlistEntity& entity, std::size_t scope) {
    if (const auto* const inst = nodeCast<HDNTBlockInst>(&entity)) return instances_.push_back({inst, scope});
    if (const auto* const declared = nodeCast<HDNTSignal>(&entity)) return signal(*declared, scope);
    if (const auto* const pins = nodeCast<HDNTConnect>(&entity)) return connects_.push_back({pins, scope});
    if (const auto* const value = nodeCast<HDNTAssignProperty>(&entity)) return assigns_.push_back({value, scope});
    if (const auto* const call = nodeCast<HDNTFunctionCall>(&entity)) return calls_.push_back({call, scope});
    if (const auto* const stmt = nodeCast<HDNTIfStmt>(&entity)) {
        conditions_.push_back({stmt, scope});
        branch(*stmt, true, scope);
        branch(*stmt, false, scope);
    }
    const auto* const block = nodeCast<HDNTStmtBlock>(&entity);
    if (!block || !block->enabled()) return;
    for (const HDNTNetlistEntity* inner : block->statements()) statement(*inner, scope);
}

void MappingView::branch(const HDNTIfStmt& stmt, bool holds, std::size_t scope) {
    const HDNTNetlistEntity* const inside = holds ? stmt.thenStmt() : stmt.elseStmt();
    if (!inside) return;
    scopes_.push_back({scope, &stmt, holds, scopes_[scope].depth + 1});
    statement(*inside, scopes_.size() - 1);
}

void MappingView::signal(const HDNTSignal& signal, std::size_t scope) {
    if (signal.connect()) connects_.push_back({signal.connect(), scope});
    if (!nodeCast<HDNTSigList>(&signal)) return signals_.push_back({signal.name(), &signal, scope});
    std::vector<std::string> names;
    std::vector<int> bits;
    signal.unfoldRangedName(signal.name(), names, bits);
    for (std::size_t i = 0; i < names.size(); ++i)
        signals_.push_back({bits.empty() ? names[i] : names[i] + '[' + std::to_string(bits[i]) + ']', &signal, scope});
}

bool MappingView::isWithin(std::size_t inner, std::size_t outer) const {
    while (inner > outer) inner = scopes_[inner].outer;
    return inner == outer;
}

bool MappingView::areExclusive(std::size_t a, std::size_t b) const {
    while (scopes_[a].depth > scopes_[b].depth) a = scopes_[a].outer;
    while (scopes_[b].depth > scopes_[a].depth) b = scopes_[b].outer;
    for (; a != b; a = scopes_[a].outer, b = scopes_[b].outer)
        if (scopes_[a].stmt == scopes_[b].stmt) return true;
    return false;
}

static bool isBaseName(const HDNTBus& bus, std::string_view name) {
    return std::ranges::equal(name, bus.getBaseName(),
                              [](char c, char of) { return HSTStringUtils::to_upper(c) == of; });
}

// As HDNTExpansion finds them: names upper-cased, a bus by its base name alone.
NamedPins::NamedPins(const HDNTBlock& block, const std::string& name) {
    const std::size_t bracket = name.find('[');
    const HDNTBus* const bus = bracket == name.npos ? block.findBus(name) : nullptr;
    if (bracket != name.npos) takeBit(block, name, bracket);
    if (!bus || !isBaseName(*bus, name)) return;
    isBus_ = bus->getFirstIndex() >= 0;
    take(*bus, 0, bus->pinCount());
}

void NamedPins::take(const HDNTBus& bus, std::size_t offset, std::size_t count) {
    if (bus.getFirstPinIndex() < 0) return;
    bus_ = &bus;
    first_ = static_cast<std::size_t>(bus.getFirstPinIndex()) + offset;
    count_ = count;
}

// A bus whose parts are declared one by one has several declarations of one base name.
void NamedPins::takeBit(const HDNTBlock& block, const std::string& name, std::size_t bracket) {
    const char* const end = name.data() + name.size();
    int bit = 0;
    const std::from_chars_result read = std::from_chars(name.data() + bracket + 1, end, bit);
    const bool isPlain = read.ec == std::errc() && read.ptr + 1 == end && *read.ptr == ']' &&
                         (bit == 0 ? read.ptr == name.data() + bracket + 2 : name[bracket + 1] != '0');
    if (!isPlain || bit < 0) return;
    const std::string_view base = std::string_view(name).substr(0, bracket);
    const HDNTBus* const bus = block.findBus(base);
    const auto [least, greatest] = bus ? std::minmax({bus->getFirstIndex(), bus->getLastIndex()}) : std::pair(0, -1);
    if (bus && isBaseName(*bus, base) && least >= 0 && bit >= least && bit <= greatest)
        return take(*bus, static_cast<std::size_t>(std::abs(bit - bus->getFirstIndex())), 1);
    const HDNTPin* const pin = block.findPin(name);
    if (pin) take(*pin->getBus(), pin->getPinIndex() - static_cast<std::size_t>(pin->getBus()->getFirstPinIndex()), 1);
}

void forEachExpr(const HDNTExpr* outermost, const std::function<void(const HDNTExpr&)>& visit) {
    std::vector<const HDNTExpr*> left;
    for (const HDNTExpr* expr = outermost; expr;) {
        visit(*expr);
        if (const auto* const operation = nodeCast<HDNTCompoundExpr>(expr)) {
            for (const HDNTExpr* operand : {operation->rhs(), operation->lhs()})
                if (operand) left.push_back(operand);
        } else if (const auto* const call = nodeCast<HDNTFunctionCall>(expr)) {
            left.insert(left.end(), call->actuals().rbegin(), call->actuals().rend());
        }
        expr = left.empty() ? nullptr : left.back();
        if (expr) left.pop_back();
    }
}

Question questionOf(const HDNTExpr& expr) {
    struct Row {
        std::string_view name;
        Question::Of of;
        unsigned type;
    };
    using Of = Question::Of;
    static constexpr std::array<Row, 5> rows = {{{"intProperty", Of::property, HATAttrTypes::TypeInt},
                                                 {"doubleProperty", Of::property, HATAttrTypes::TypeDouble},
                                                 {"boolProperty", Of::property, HATAttrTypes::TypeBool},
                                                 {"stringProperty", Of::property, HATAttrTypes::TypeString},
                                                 {"isConnected", Of::connection, HATAttrTypes::TypeBool}}};
    const auto* const call = nodeCast<HDNTFunctionCall>(&expr);
    if (!call || call->actuals().size() != 1) return {};
    const auto* const name = nodeCast<HDNTStringConstant>(call->actuals().front());
    const auto* const row =
        std::find_if(rows.begin(), rows.end(), [&](const Row& r) { return r.name == call->name(); });
    return name && row != rows.end() ? Question{row->of, name->getValue(), row->type} : Question{};
}

} // namespace hdnt::author
