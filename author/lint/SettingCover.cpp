#include "author/lint/SettingCover.h"

#include "author/lint/MappingView.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <set>

namespace hdnt::author {

namespace {

constexpr std::size_t mostValues = 48; ///< of one factor

bool isComparison(const HDNTExpr& expr) {
    const auto* const operation = nodeCast<HDNTCompoundExpr>(&expr);
    return operation && operation->op() >= HDNTExpr::GREATER && operation->op() <= HDNTExpr::EQUAL;
}

template <typename T>
void addNumbersNear(double number, double step, std::vector<Value>& values) {
    for (const double near : {number - step, number, number + step})
        if (near >= static_cast<double>(std::numeric_limits<T>::lowest()) &&
            near <= static_cast<double>(std::numeric_limits<T>::max()))
            values.emplace_back(static_cast<T>(near));
}

// The constant, and what lies beside it, in the type of the factor.
void addNear(const Value& constant, const Value& example, double step, std::vector<Value>& values) {
    const auto* const whole = std::get_if<int>(&constant);
    const auto* const real = std::get_if<double>(&constant);
    if (!whole && !real) values.push_back(constant);
    else if (std::holds_alternative<int>(example)) addNumbersNear<int>(whole ? *whole : *real, 1, values);
    else if (std::holds_alternative<double>(example)) addNumbersNear<double>(whole ? *whole : *real, step, values);
}

void addBounds(const HDNTProperty& property, std::vector<Value>& values) {
    for (const std::optional<Value>& bound : {property.getMinValue(), property.getMaxValue()})
        if (bound) values.push_back(*bound);
}

// For what has neither list nor bounds nor constants to be compared with.
void addOthers(const HDNTProperty& property, std::vector<Value>& values) {
    const Value byDefault = property.getDefaultValue();
    const bool hex = property.getType() == HATAttrTypes::TypeBitHex;
    const std::string width = std::to_string(property.getBitWidth());
    if (const auto* const number = std::get_if<int>(&byDefault)) addNumbersNear<int>(*number, 1, values);
    if (const auto* const number = std::get_if<double>(&byDefault)) addNumbersNear<double>(*number, 1, values);
    if (!std::holds_alternative<std::string>(byDefault)) return;
    if (HATAttrTypes::isBitVector(property.getType()))
        for (const char* digit : {"0", "1"}) values.emplace_back(width + (hex ? "'h" : "'b") + digit);
    else values.emplace_back(std::get<std::string>(byDefault) + "_");
}

std::vector<Value> valuesOf(const HDNTProperty& property, const std::vector<Value>& compared) {
    const Value byDefault = property.getDefaultValue();
    std::vector<Value> all = {byDefault};
    if (std::holds_alternative<bool>(byDefault)) return {byDefault, !std::get<bool>(byDefault)};
    const std::vector<Value> listed = property.getAllowedValues();
    all.insert(all.end(), listed.begin(), listed.end());
    if (listed.empty()) {
        addBounds(property, all);
        const double step = std::pow(10.0, -std::clamp(property.getPrecision(), 0, 9));
        for (const Value& constant : compared) addNear(constant, byDefault, step, all);
        if (all.size() == 1) addOthers(property, all);
    }
    std::vector<Value> values;
    for (const Value& value : all)
        if (values.size() < mostValues && std::ranges::find(values, value) == values.end() &&
            (values.empty() || property.refusalOf(value).empty()))
            values.push_back(value);
    return values;
}

std::vector<Value> valuesOf(HATAttrTypes::AttrType result, const std::vector<Value>& compared) {
    std::vector<Value> values;
    switch (result) {
    case HATAttrTypes::TypeBool: return {false, true};
    case HATAttrTypes::TypeInt: values = {0, 1}; break;
    case HATAttrTypes::TypeDouble: values = {0.0, 1.0}; break;
    default: values = {std::string()}; break;
    }
    const Value example = values.front();
    for (const Value& constant : compared) addNear(constant, example, 1, values);
    std::vector<Value> once;
    for (const Value& value : values)
        if (once.size() < mostValues && std::ranges::find(once, value) == once.end()) once.push_back(value);
    return once;
}

/// Walks the expressions of a mapping and lists what they ask for.
class Collector {
public:
    Collector(const HDNTBlock& block, const MappingView& view) : block_(block), view_(view) {

        for (const auto& stmt : view_.conditions()) {
            note(stmt.node->condition());
            if (!isComparedAnywhere(stmt.node->condition())) compare(*stmt.node->condition(), {0});
        }
        for (const auto& assign : view_.assigns()) note(assign.node->value());
        for (const auto& call : view_.calls())
            for (const HDNTExpr* actual : call.node->actuals()) note(actual);
        for (const auto& stmt : view_.conditions()) deciders.push_back(decidersOf(stmt));
    }

    std::vector<SettingFactor> factors() const {
        std::vector<SettingFactor> list;
        for (const Asked& asked : asked_) list.push_back({asked.kind, asked.name, valuesOfAsked(asked)});
        return list;
    }

    std::vector<std::vector<std::size_t>> deciders; ///< of each if statement

private:
    struct Asked {
        SettingFactor::Kind kind;
        std::string name; ///< as declared
        const HDNTProperty* property;
        HATAttrTypes::AttrType type;
        std::vector<Value> compared;
    };
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void note(const HDNTExpr* outermost) {
        forEachExpr(outermost, [this](const HDNTExpr& expr) {
            factorOf(expr);
            if (isComparison(expr)) compare(expr, {});
        });
    }

    static bool isComparedAnywhere(const HDNTExpr* outermost) {
        bool found = !outermost;
        forEachExpr(outermost, [&](const HDNTExpr& expr) { found = found || isComparison(expr); });
        return found;
    }

    // Every question in a comparison may meet every constant in it.
    void compare(const HDNTExpr& comparison, std::vector<Value> constants) {
        std::set<const HDNTExpr*> names;
        std::set<std::size_t> factors;
        forEachExpr(&comparison, [&](const HDNTExpr& expr) {
            if (questionOf(expr).of != Question::Of::nothing)
                names.insert(nodeCast<HDNTFunctionCall>(&expr)->actuals().front());
            if (const std::size_t factor = factorOf(expr); factor != none) factors.insert(factor);
            const auto* const constant = nodeCast<HDNTValue>(&expr);
            if (constant && !names.contains(constant)) constants.push_back(constant->getPlainValue());
        });
        for (const std::size_t factor : factors) {
            std::vector<Value>& compared = asked_[factor].compared;
            compared.insert(compared.end(), constants.begin(), constants.end());
        }
    }

    std::size_t factorOf(const HDNTExpr& expr) {
        const Question asked = questionOf(expr);
        if (asked.of == Question::Of::connection)
            return noted({SettingFactor::Kind::pin, HSTStringUtils::to_upper_copy(asked.name), nullptr, {}, {}});
        if (asked.of == Question::Of::property) {
            const HDNTProperty* const property = block_.findProperty(asked.name);
            if (!property) return none;
            return noted({SettingFactor::Kind::property, property->getName(), property, property->getType(), {}});
        }
        const auto* const call = nodeCast<HDNTFunctionCall>(&expr);
        const HDNTFunctionDecl* const decl = call && !call->isStatement() ? call->getDecl() : nullptr;
        if (!decl || HDNTFunctionTable::findInForce(call->name())) return none;
        return noted({SettingFactor::Kind::call, call->name(), nullptr, decl->getType(), {}});
    }

    std::size_t noted(Asked asked) {
        const auto [found, isNew] = index_.emplace(std::pair(asked.kind, asked.name), asked_.size());
        if (isNew) asked_.push_back(std::move(asked));
        return found->second;
    }

    static std::vector<Value> valuesOfAsked(const Asked& asked) {
        if (asked.kind == SettingFactor::Kind::pin) return {false, true};
        return asked.property ? valuesOf(*asked.property, asked.compared) : valuesOf(asked.type, asked.compared);
    }

    std::vector<std::size_t> decidersOf(const MappingView::In<HDNTIfStmt>& stmt) {
        std::set<std::size_t> factors;
        const auto addThose = [&](const HDNTIfStmt& one) {
            forEachExpr(one.condition(), [&](const HDNTExpr& expr) {
                if (const std::size_t factor = factorOf(expr); factor != none) factors.insert(factor);
            });
        };
        addThose(*stmt.node);
        for (std::size_t scope = stmt.scope; scope != 0; scope = view_.scopes()[scope].outer)
            addThose(*view_.scopes()[scope].stmt);
        return {factors.begin(), factors.end()};
    }

    const HDNTBlock& block_;
    const MappingView& view_;
    std::vector<Asked> asked_;
    std::map<std::pair<SettingFactor::Kind, std::string>, std::size_t> index_;
};

/// Chooses settings until every value, and every pair of values of factors that belong together, was there.
class PairCover {
public:
    PairCover(const std::vector<SettingFactor>& factors, const std::vector<std::vector<std::size_t>>& groups)
        : factors_(factors), partners_(factors.size()) {
        std::set<std::pair<std::size_t, std::size_t>> pairs;
        for (const std::vector<std::size_t>& group : groups)
            for (std::size_t i = 0; i < group.size(); ++i)
                for (std::size_t j = i + 1; j < group.size(); ++j) pairs.emplace(group[i], group[j]);
        std::vector<bool> isPaired(factors.size());
        for (const auto& [a, b] : pairs) {
            addTable(a, b);
            isPaired[a] = isPaired[b] = true;
        }
        for (std::size_t i = 0; i < factors.size(); ++i)
            if (!isPaired[i]) addTable(i, i);
    }

    void choose(std::size_t most, std::vector<SettingChoice>& choices) {
        for (const SettingChoice& choice : choices) tick(choice);
        while (choices.size() < most) {
            const auto table = std::ranges::find_if(tables_, [](const Table& one) { return one.left > 0; });
            if (table == tables_.end()) return;
            choices.push_back(filled(*table));
            tick(choices.back());
        }
    }

private:
    /// Which pairs of values are still to come. A factor that stands alone is paired with itself.
    struct Table {
        std::size_t a;
        std::size_t b;
        std::vector<bool> isOpen;
        std::size_t left;
    };

    std::size_t sizeOf(std::size_t factor) const { return factors_[factor].values.size(); }
    std::size_t placeIn(const Table& table, std::size_t valueOfA, std::size_t valueOfB) const {
        return valueOfA * sizeOf(table.b) + valueOfB;
    }

    void addTable(std::size_t a, std::size_t b) {
        Table table{a, b, std::vector<bool>(sizeOf(a) * sizeOf(b), a != b), a == b ? sizeOf(a) : sizeOf(a) * sizeOf(b)};
        for (std::size_t i = 0; a == b && i < sizeOf(a); ++i) table.isOpen[placeIn(table, i, i)] = true;
        partners_[a].push_back(tables_.size());
        if (b != a) partners_[b].push_back(tables_.size());
        tables_.push_back(std::move(table));
    }

    void tick(const SettingChoice& choice) {
        for (Table& table : tables_) {
            const std::size_t place = placeIn(table, choice[table.a], choice[table.b]);
            if (!table.isOpen[place]) continue;
            table.isOpen[place] = false;
            --table.left;
        }
    }

    // The first open pair, and for each other factor the value that closes most pairs with what is chosen already.
    SettingChoice filled(const Table& table) const {
        SettingChoice choice(factors_.size());
        std::vector<bool> isChosen(factors_.size());
        const auto place = static_cast<std::size_t>(std::ranges::find(table.isOpen, true) - table.isOpen.begin());
        const auto set = [&](std::size_t factor, std::size_t value) {
            choice[factor] = static_cast<unsigned short>(value);
            isChosen[factor] = true;
        };
        set(table.a, place / sizeOf(table.b));
        set(table.b, place % sizeOf(table.b));
        for (std::size_t factor = 0; factor < factors_.size(); ++factor)
            if (!isChosen[factor]) set(factor, bestValue(factor, choice, isChosen));
        return choice;
    }

    std::size_t bestValue(std::size_t factor, const SettingChoice& choice, const std::vector<bool>& isChosen) const {
        std::vector<std::size_t> gains(sizeOf(factor));
        for (const std::size_t index : partners_[factor]) {
            const Table& table = tables_[index];
            const std::size_t other = table.a == factor ? table.b : table.a;
            if (other != factor && !isChosen[other]) continue;
            for (std::size_t value = 0; value < gains.size(); ++value) {
                const std::size_t a = table.a == factor ? value : choice[table.a];
                const std::size_t b = table.b == factor ? value : choice[table.b];
                gains[value] += table.isOpen[placeIn(table, a, b)] ? 1 : 0;
            }
        }
        return static_cast<std::size_t>(std::ranges::max_element(gains) - gains.begin());
    }

    const std::vector<SettingFactor>& factors_;
    std::vector<Table> tables_;
    std::vector<std::vector<std::size_t>> partners_; ///< of each factor, its tables
};

} // namespace

SettingCover::SettingCover(const HDNTBlock& block, const HDNTNetlist& netlist) {
    const MappingView view(netlist);
    Collector collector(block, view);
    factors_ = collector.factors();
    deciders_ = std::move(collector.deciders);
}

std::vector<SettingChoice> SettingCover::choices(std::size_t most) const {
    std::vector<SettingChoice> choices = {SettingChoice(factors_.size())};
    PairCover(factors_, deciders_).choose(most, choices);
    return choices;
}

std::vector<SettingChoice> SettingCover::combinations(const std::vector<std::size_t>& factors,
                                                      const SettingChoice& base, std::size_t most) const {
    std::vector<SettingChoice> all = {base};
    for (const std::size_t factor : factors) {
        const std::size_t size = factors_[factor].values.size();
        if (all.size() * size > most) return {};
        std::vector<SettingChoice> more;
        for (const SettingChoice& choice : all) {
            for (std::size_t value = 0; value < size; ++value) {
                more.push_back(choice);
                more.back()[factor] = static_cast<unsigned short>(value);
            }
        }
        all = std::move(more);
    }
    return all;
}

void SettingCover::apply(const SettingChoice& choice, HDNTExpansion& expansion) const {
    std::string reason;
    for (std::size_t i = 0; i < factors_.size(); ++i) {
        const SettingFactor& factor = factors_[i];
        const Value& value = factor.values[choice[i]];
        if (factor.kind == SettingFactor::Kind::property && choice[i] != 0)
            expansion.setProperty(factor.name, value, reason);
        if (factor.kind == SettingFactor::Kind::pin && choice[i] != 0) expansion.connect(factor.name, reason);
    }
}

void SettingCover::addFunctions(const SettingChoice& choice, HDNTFunctionTable& table) const {
    for (std::size_t i = 0; i < factors_.size(); ++i)
        if (factors_[i].kind == SettingFactor::Kind::call)
            table.add(factors_[i].name, [this, &choice, i](const HDNTFunctionCall&, const auto&) {
                return HDNTValue::makeConstant(factors_[i].values[choice[i]]);
            });
}

std::string SettingCover::textOf(const SettingChoice& choice) const {
    std::string text;
    for (std::size_t i = 0; i < factors_.size(); ++i) {
        if (choice[i] == 0) continue;
        const SettingFactor& factor = factors_[i];
        const Value& value = factor.values[choice[i]];
        const bool isText = std::holds_alternative<std::string>(value);
        const std::string shown = isText ? '"' + hdnt::textOf(value) + '"' : hdnt::textOf(value);
        text += text.empty() ? "" : ", ";
        if (factor.kind == SettingFactor::Kind::pin) text += factor.name + " connected";
        else text += factor.name + (factor.kind == SettingFactor::Kind::call ? "()" : "") + " = " + shown;
    }
    return text;
}

std::string outcomeOf(const HDNTExpansion::Level& level) {
    std::string text;
    const auto add = [&text](const auto&... parts) { ((text += parts, text += '\0'), ...); };
    const auto addValues = [&](const std::vector<HDNTExpansion::PropertyValue>& values) {
        for (const auto& one : values) add(one.pin, one.name, hdnt::textOf(one.value));
    };
    for (const auto& instance : level.instances) {
        add(instance.name, instance.type);
        addValues(instance.properties);
    }
    for (const auto& one : level.connections) add(one.signal, one.instance, one.pin, one.inverted ? "~" : "");
    addValues(level.pinProperties);
    for (const auto& call : level.calls) {
        add(call.name);
        for (const Value& argument : call.arguments) add(hdnt::textOf(argument));
    }
    return text;
}

} // namespace hdnt::author
