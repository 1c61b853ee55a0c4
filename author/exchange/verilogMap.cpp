#include "author/exchange/exportForms.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "author/exchange/mapScopes.internal.h"
#include "author/exchange/mapTerms.internal.h"
#include "author/exchange/mapWiring.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <memory>

namespace hdnt::author {

namespace {

using platform::joined, platform::printable;

// Behind the name of a block that stays beside what is added to it.
constexpr const char* keptSuffix = "._KEPT_";

std::string indented(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at) + 1;
        result += "    " + text.substr(at, end - at);
        at = end;
    }
    return result;
}

std::string connection(const std::string& name, const std::string& value) { return "." + name + "(" + value + ")"; }

// Whether the modules that were written lead from one of the blocks to the target.
bool leadsTo(const HDNTBlock& target, const std::set<const HDNTBlock*>& from, const ExportNotes& notes) {
    std::vector<const HDNTBlock*> left(from.begin(), from.end());
    std::set<const HDNTBlock*> seen = from;
    while (!left.empty()) {
        const HDNTBlock* const block = left.back();
        left.pop_back();
        if (block == &target) return true;
        if (const auto found = notes.mappedTo.find(block); found != notes.mappedTo.end())
            for (const HDNTBlock* next : found->second)
                if (seen.insert(next).second) left.push_back(next);
    }
    return false;
}

/// One mapping. Throws HEXAll for what has no counterpart in Verilog.
class MapModule {
public:
    MapModule(const ExportedBlock& block, const HDNTNetlist& netlist)
        : block_(block.model, block.json), keepsBlock_(netlist.section() == HDNTNetlist::Section::modifiedby),
          view_(netlist), ports_(portNames(block_, names_)), terms_(block_, names_),
          cellNames_(cellNames(view_, names_)), scopes_(view_, names_) {
        requireNames();
        if (!view_.calls().empty())
            throw HEXDataException("calls " + view_.calls().front().node->name() + "(), which only the host can do");
        addConditions();
        addCells();
        addValues();
        wiring_ = std::make_unique<MapWiring>(block_, keepsBlock_, view_, cells_, ports_, names_);
        for (const auto& [connect, scope] : view_.connects())
            for (const std::string& instance : instancesOf(*connect)) requireCell(instance, scope);
        if (keepsBlock_) leaveUnchanged();
    }

    std::string text() {
        std::map<std::size_t, std::string> lines;
        if (keepsBlock_) lines[0] += keptCell();
        for (std::size_t i = 0; i < cells_.size(); ++i)
            lines[cells_[i].scope] += choice(i, scopes_.waysTo(cells_[i].scope));
        for (const MapWiring::Assignment& made : wiring_->assignments())
            lines[made.scope] += "assign " + made.text + ";\n";
        const std::string body = branch(0, lines); // which may ask for constants and names
        return "\nmodule " + verilogName(block_.model().getName()) + head() + ";\n" +
               indented(conditions_ + declarations() + body) + "endmodule\n";
    }

    std::set<const HDNTBlock*> types() const {
        std::set<const HDNTBlock*> types;
        for (const auto& [type, block] : types_) types.insert(type);
        return types;
    }

private:
    struct Setting {
        std::size_t scope;
        std::string text;
    };
    /// A property of a cell, with its values in the order of the mapping: a later one replaces those before it.
    struct Value {
        const HDNTProperty* property;
        std::vector<Setting> settings;
    };

    static std::map<const HdlPort*, std::string> portNames(const MapBlock& block, VerilogNames& names) {
        std::map<const HdlPort*, std::string> ports;
        for (const HdlPort& port : block.shape().ports) ports[&port] = names.add(port.name);
        return ports;
    }

    static std::map<std::string, std::string> cellNames(const MappingView& view, VerilogNames& names) {
        std::map<std::string, std::string> cells;
        for (const auto& [inst, scope] : view.instances())
            if (std::string& name = cells[inst->instName()]; name.empty()) name = names.add(inst->instName());
        return cells;
    }

    void requireNames() const {
        block_.requireNames();
        for (const auto& [inst, scope] : view_.instances()) requireFree(inst->instName());
        for (const MappingView::Declared& signal : view_.signals()) requireFree(signal.name);
    }

    void addConditions() {
        for (std::size_t i = 0; i < view_.conditions().size(); ++i) {
            const auto& [stmt, scope] = view_.conditions()[i];
            if (!stmt->condition()) throw HEXDataException("an if without condition");
            conditions_ += "localparam [0:0] " + scopes_.conditions()[i].name + " = " +
                           terms_.truthOf(*stmt->condition(), scopes_.guardOf(scope)) + ";\n";
        }
    }

    void addCells() {
        for (const auto& [inst, scope] : view_.instances()) {
            HDNTBlock* const type = inst->getTypeBlock(block_.model().getLibrary());
            if (!type) throw HEXDataException("there is no block " + inst->typeName());
            for (const std::size_t other : cellsOf_[inst->instName()])
                if (!view_.areExclusive(cells_[other].scope, scope))
                    throw HEXDataException("there are two instances " + inst->instName());
            std::unique_ptr<MapBlock>& known = types_[type];
            if (!known) {
                known = std::make_unique<MapBlock>(*type, jsonOf(*type, places_));
                known->requireNames();
            }
            cellsOf_[inst->instName()].push_back(cells_.size());
            cells_.push_back({inst->instName(), scope, known.get()});
        }
        values_.resize(cells_.size());
    }

    // Of an instance that is not there nothing can be said.
    void requireCell(const std::string& instance, std::size_t scope) {
        std::set<std::size_t> scopes;
        for (const std::size_t one : cellsOf_[instance]) scopes.insert(cells_[one].scope);
        if (scopes.empty()) throw HEXDataException("there is no instance " + instance);
        if (!scopes_.isCovered(scope, scopes)) terms_.refuse(scopes_.guardOf(scope), noneOf(scopes));
    }

    // A block that stays is left alone where nothing is added to it.
    void leaveUnchanged() {
        std::set<std::size_t> scopes;
        for (const MapCell& cell : cells_) scopes.insert(cell.scope);
        for (const auto& [connect, scope] : view_.connects())
            if (connect->signalName() == "@0" || connect->signalName() == "@1") scopes.insert(scope);
        if (!scopes_.isCovered(0, scopes)) terms_.refuse("", scopes.empty() ? "1'b1" : noneOf(scopes));
    }

    std::string noneOf(const std::set<std::size_t>& scopes) const {
        std::vector<std::string> guards;
        for (const std::size_t scope : scopes) guards.push_back(scopes_.guardOf(scope));
        return "!(" + joined(guards, " || ") + ")";
    }

    static std::set<std::string> instancesOf(const HDNTConnect& connect) {
        std::set<std::string> names;
        for (const HDNTPinInst* pin : connect.pins())
            if (const auto* const named = nodeCast<HDNTBlockPinName>(pin); named && !named->instName().empty())
                names.insert(named->instName());
        return names;
    }

    void addValues() {
        for (const auto& [assign, scope] : view_.assigns()) {
            if (nodeCast<HDNTAssignPinProperty>(assign))
                throw HEXDataException(assign->propName() + ": cells have no properties of pins");
            if (!assign->value()) throw HEXDataException(assign->propName() + ": no value");
            requireCell(assign->instName(), scope);
            for (const std::size_t cell : cellsOf_[assign->instName()])
                if (!view_.areExclusive(cells_[cell].scope, scope)) addValue(cell, *assign, scope);
        }
    }

    void addValue(std::size_t cell, const HDNTAssignProperty& assign, std::size_t scope) {
        const MapBlock& type = *cells_[cell].type;
        const HDNTProperty* const property = type.model().findProperty(assign.propName());
        if (!property)
            throw HEXDataException("Block " + type.model().getName() + " has no property " + assign.propName());
        auto value = std::ranges::find(values_[cell], property, &Value::property);
        if (value == values_[cell].end()) value = values_[cell].insert(value, {property, {}});
        value->settings.push_back({scope, terms_.valueFor(*property, type, *assign.value(), scopes_.guardOf(scope))});
    }

    std::string head() const {
        std::vector<HdlLine> parameters;
        for (const MapTerms::Parameter& one : terms_.parameters())
            parameters.push_back({verilogParameter(*one.property, one.name), parameterFactsOf(*one.property)});
        for (const auto& [port, name] : terms_.connected())
            parameters.push_back(
                {"parameter " + name + " = 1'bx", commentOf("set where " + port->name + " is connected")});
        if (keepsBlock_) parameters.push_back({"parameter _TECHMAP_CELLNAME_ = \"\"", ""});
        std::vector<HdlLine> ports;
        for (const auto& [port, name] : ports_) ports.push_back({portText(*port, name), ""});
        std::string text;
        if (!parameters.empty()) text += " #(\n" + textOf(parameters, "    ", "//", ",") + ")";
        if (!ports.empty()) text += " (\n" + textOf(ports, "    ", "//", ",") + ")";
        return text;
    }

    // Cells may drive pins of a block that stays, and what the design leaves open stays so.
    std::string portText(const HdlPort& port, const std::string& name) const {
        if (!keepsBlock_) return verilogPort(port, name);
        if (!wiring_->usedPorts().contains(&port)) return "(* techmap_autopurge *) " + verilogPort(port, name);
        return "inout " + port.bounds("[", ":", "] ") + name;
    }

    std::string declarations() {
        std::string text;
        for (const std::string& constant : terms_.constants()) text += "localparam " + constant + ";\n";
        std::vector<std::string> refusals = terms_.refusals();
        if (keepsBlock_) {
            const std::string suffix = keptSuffix;
            refusals.push_back("(_TECHMAP_CELLNAME_ & {" + std::to_string(8 * suffix.size()) + "{1'b1}}) == \"" +
                               suffix + '"');
        }
        if (!refusals.empty())
            text += "if (" + joined(refusals, "\n    || ") + ") begin : " + names_.add("refused") +
                    "\n    wire _TECHMAP_FAIL_ = 1'b1;\nend\n";
        for (const std::string& wire : wiring_->wires()) text += "wire " + wire + ";\n";
        return text;
    }

    std::string keptCell() const {
        std::vector<std::string> parameters, ports;
        for (const MapTerms::Parameter& one : terms_.parameters()) {
            if (!isSettable(*one.property)) continue;
            terms_.requireHandedDown(one);
            parameters.push_back(connection(one.name, one.name));
        }
        for (const auto& [port, name] : ports_) ports.push_back(connection(name, name));
        return cellText(block_, "\\_TECHMAP_REPLACE_" + std::string(keptSuffix) + " ", parameters, ports);
    }

    static std::string cellText(const MapBlock& type, const std::string& name,
                                const std::vector<std::string>& parameters, const std::vector<std::string>& ports) {
        const auto list = [](const std::vector<std::string>& items) {
            return items.empty() ? "()" : "(\n    " + joined(items, ",\n    ") + "\n)";
        };
        return verilogName(type.model().getName()) + (parameters.empty() ? "" : " #" + list(parameters)) + " " + name +
               " " + list(ports) + ";\n";
    }

    // What no condition is left for is the cell. A text that depends on one, for texts have no common width, and a
    // value or port that is not always there take a cell for each way it goes.
    std::string choice(std::size_t cell, const MapScopes::Ways& ways, std::size_t depth = 0) {
        constexpr std::size_t most = 6;
        const std::size_t condition = openCondition(cell, ways);
        if (condition == MapScopes::none) return cellOf(cell, ways);
        if (depth == most)
            throw HEXDataException(cells_[cell].instance + ": texts, or what is there of it, depend on more than " +
                                   std::to_string(most) + " conditions");
        MapScopes::Ways way = ways;
        std::string text;
        for (const bool holds : {true, false}) {
            way[condition] = holds;
            text += holds ? "if (" + scopes_.conditions()[condition].name + ")" : " else";
            text += generated(condition, holds, choice(cell, way, depth + 1));
        }
        return text + "\n";
    }

    // The first one that decides about the cell and is reached.
    std::size_t openCondition(std::size_t cell, const MapScopes::Ways& ways) const {
        std::set<std::size_t> scopes;
        const auto add = [&](const std::set<std::size_t>& used, bool alwaysOne) {
            if (!alwaysOne || !scopes_.isCovered(cells_[cell].scope, used)) scopes.insert(used.begin(), used.end());
        };
        for (const Value& value : values_[cell]) {
            std::set<std::size_t> used;
            for (const Setting& setting : value.settings) used.insert(setting.scope);
            add(used, value.property->getType() != HATAttrTypes::TypeString);
        }
        for (const MapWiring::PortUse& use : wiring_->portsOf(cell)) add(use.scopes, true);
        for (const std::size_t scope : scopes)
            for (const auto& [condition, holds] : scopes_.waysTo(scope))
                if (!ways.contains(condition) && scopes_.isThere(scopes_.conditions()[condition].outer, ways))
                    return condition;
        return MapScopes::none;
    }

    std::string cellOf(std::size_t cell, const MapScopes::Ways& ways) const {
        const MapCell& made = cells_[cell];
        std::vector<std::string> parameters, ports;
        for (const Value& value : values_[cell])
            if (const std::string text = valueText(value, ways); !text.empty())
                parameters.push_back(connection(verilogName(value.property->getName()), text));
        const auto isThere = [&](std::size_t scope) { return scopes_.isThere(scope, ways); };
        for (const MapWiring::PortUse& use : wiring_->portsOf(cell))
            if (scopes_.isCovered(made.scope, use.scopes) || std::ranges::any_of(use.scopes, isThere))
                ports.push_back(connection(verilogName(use.port->name), use.net));
        return cellText(*made.type, cellNames_.at(made.instance), parameters, ports);
    }

    // Empty when there is none that way.
    std::string valueText(const Value& value, const MapScopes::Ways& ways) const {
        std::string text;
        for (const Setting& setting : value.settings) {
            std::vector<std::string> open;
            bool isPossible = true;
            for (const auto& [condition, holds] : scopes_.waysTo(setting.scope)) {
                const auto way = ways.find(condition);
                if (way == ways.end()) open.push_back((holds ? "" : "!") + scopes_.conditions()[condition].name);
                else isPossible = isPossible && way->second == holds;
            }
            if (!isPossible) continue;
            const bool isCertain = text.empty() || open.empty(); // one of them always holds
            text = isCertain ? setting.text : joined(open, " && ") + " ? " + setting.text + " : " + text;
        }
        return text;
    }

    std::string branch(std::size_t scope, const std::map<std::size_t, std::string>& lines) {
        if (scope == MapScopes::none) return {};
        const auto own = lines.find(scope);
        std::string text = own == lines.end() ? "" : own->second;
        for (const std::size_t i : scopes_.conditionsIn(scope)) {
            const MapScopes::Condition& condition = scopes_.conditions()[i];
            const std::string holds = branch(condition.branches[1], lines);
            const std::string fails = branch(condition.branches[0], lines);
            if (!holds.empty()) text += "if (" + condition.name + ")" + generated(i, true, holds);
            if (!fails.empty())
                text += (holds.empty() ? "if (!" + condition.name + ")" : " else") + generated(i, false, fails);
            if (!holds.empty() || !fails.empty()) text += "\n";
        }
        return text;
    }

    std::string generated(std::size_t condition, bool holds, const std::string& body) {
        const std::string name = names_.add((holds ? "then_" : "else_") + std::to_string(condition + 1));
        return " begin : " + name + "\n" + indented(body) + "end";
    }

    VerilogNames names_;
    MapBlock block_;
    bool keepsBlock_;
    MappingView view_;
    std::map<const HdlPort*, std::string> ports_;
    MapTerms terms_;
    std::map<std::string, std::string> cellNames_; ///< in Verilog
    MapScopes scopes_;
    SourcePlaces places_;
    std::map<const HDNTBlock*, std::unique_ptr<MapBlock>> types_;
    std::vector<MapCell> cells_;
    std::map<std::string, std::vector<std::size_t>> cellsOf_; ///< by name
    std::vector<std::vector<Value>> values_;                  ///< of each cell, in the order of the mapping
    std::string conditions_;
    std::unique_ptr<MapWiring> wiring_;
};

std::string head(const ExportNotes&) {
    return "// Mappings, for techmap: a cell of a mapped block becomes what the mapping makes of it.\n";
}

void addModule(const ExportedBlock& block, std::string& text, ExportNotes& notes) {
    const std::string& name = block.model.getName();
    const auto leaveOut = [&](const std::string& why) { notes.leftOut.push_back(printable(name + ": " + why)); };
    const std::string shown = verilogName(name);
    if (!notes.modules.insert(shown).second) return leaveOut(shown + " is the name of another module");
    try {
        MapModule module(block, *block.model.getAttachedNetlist());
        const std::set<const HDNTBlock*> types = module.types();
        if (leadsTo(block.model, types, notes))
            return leaveOut("closes a circle of mappings, which techmap never leaves");
        text += module.text();
        notes.mappedTo[&block.model] = types;
    } catch (const HEXAll& refusal) {
        leaveOut(refusal.what());
    }
}

} // namespace

constinit const ExportTable verilogMapTable = {"verilog-map", head, addModule, "", true, true};

} // namespace hdnt::author
