// Mappings as elements of a tree.
#include "hdnt/compare/ExpressionText.internal.h"
#include "hdnt/compare/TreeBuilder.internal.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/Words.h"

namespace hdnt::compare {

using Kind = HDNTElementKind;
using Facet = HDNTElementFacet;

namespace {

std::string pinTexts(const HDNTConnect& connect) {
    std::string text;
    for (const HDNTPinInst* item : connect.pins()) {
        if (!text.empty()) text += ", ";
        const auto* const pin = nodeCast<HDNTBlockPinName>(item);
        if (!pin) {
            text += "unknown";
            continue;
        }
        if (!pin->instName().empty()) {
            addQuoted(text, pin->instName());
            text += ' ';
        }
        if (pin->inverted()) addQuoted(text, "~" + pin->pinName());
        else addQuoted(text, pin->pinName());
    }
    return text;
}

class MappingDescription {
public:
    explicit MappingDescription(TreeBuilder& builder) : builder_(builder) {}

    void describe(const HDNTNetlist& netlist) {
        builder_.open(Kind::mapping, "mapping", netlist);
        builder_.facet(Facet::section, words::sections.wordOf(netlist.section()));
        describeAll(netlist.preInstanceCalls(), Kind::preCall);
        describeAll(netlist.instances());
        describeAll(netlist.signals());
        describeAll(netlist.connects());
        describeAll(netlist.pinPropertyAssigns());
        describeAll(netlist.blockPropertyAssigns());
        describeAll(netlist.ifStmts());
        describeAll(netlist.postInstanceCalls());
        builder_.close();
    }

private:
    // What is still to be described, the next one last, since statements nest: a statement; a branch of an if statement
    // to be opened; the end of the element that is open.
    struct Step {
        const HDNTNetlistEntity* statement = nullptr;
        const char* branch = nullptr;
    };

    template <typename Entity>
    void describeAll(const std::vector<Entity*>& entities, Kind callKind = Kind::call) {
        for (const Entity* entity : entities) {
            steps_.push_back({entity});
            while (!steps_.empty()) {
                const Step step = steps_.back();
                steps_.pop_back();
                if (step.branch) builder_.open(Kind::branch, step.branch, *step.statement);
                else if (step.statement) addStatement(*step.statement, callKind);
                else builder_.close();
            }
        }
    }

    void addStatement(const HDNTNetlistEntity& statement, Kind callKind) {
        if (const auto* const signal = nodeCast<HDNTSignal>(&statement)) add(*signal);
        else if (const auto* const connect = nodeCast<HDNTConnect>(&statement)) add(*connect);
        else if (const auto* const inst = nodeCast<HDNTBlockInst>(&statement)) add(*inst);
        else if (const auto* const assign = nodeCast<HDNTAssignProperty>(&statement)) add(*assign);
        else if (const auto* const choice = nodeCast<HDNTIfStmt>(&statement)) add(*choice);
        else if (const auto* const block = nodeCast<HDNTStmtBlock>(&statement)) add(*block);
        else if (const auto* const call = nodeCast<HDNTFunctionCall>(&statement)) add(*call, callKind);
        else addExpression(statement);
    }

    void open(Kind kind, const std::string& name, const HDNTNetlistEntity& entity) {
        builder_.open(kind, pathPart(name), entity);
    }

    // The signals of a ranged declaration follow one another.
    void add(const HDNTSignal& signal) {
        const HDNTSignal* const list = signal.sigList() ? signal.sigList() : nodeCast<HDNTSigList>(&signal);
        if (list && list == lastList_) return;
        lastList_ = list;
        const std::string& name = list ? list->name() : signal.name();
        const size_t bracket = list ? name.find('[') : name.npos;
        open(Kind::signal, name.substr(0, bracket), signal);
        if (bracket != name.npos) builder_.facet(Facet::range, name.substr(bracket));
        if (const HDNTConnect* const connect = signal.connect()) builder_.facet(Facet::pins, pinTexts(*connect));
        builder_.close();
    }

    void add(const HDNTConnect& connect) {
        open(Kind::connect, connect.signalName(), connect);
        builder_.facet(Facet::pins, pinTexts(connect));
        builder_.close();
    }

    void add(const HDNTBlockInst& inst) {
        open(Kind::instance, inst.instName(), inst);
        builder_.facet(Facet::type, quoted(inst.typeName()));
        builder_.close();
    }

    void add(const HDNTAssignProperty& assign) {
        const auto* const pinAssign = nodeCast<HDNTAssignPinProperty>(&assign);
        const std::string pin = pinAssign ? pathPart(pinAssign->pinName()) + '/' : "";
        builder_.open(pinAssign ? Kind::pinAssign : Kind::blockAssign,
                      pathPart(assign.instName()) + '/' + pin + pathPart(assign.propName()), assign);
        builder_.facet(Facet::value, expressionText(assign.value()));
        builder_.close();
    }

    void add(const HDNTIfStmt& choice) {
        builder_.open(Kind::ifStmt, "if", choice);
        builder_.facet(Facet::condition, expressionText(choice.condition()));
        steps_.push_back({});
        addBranch(choice.elseStmt(), "else");
        addBranch(choice.thenStmt(), "then");
    }

    void addBranch(const HDNTNetlistEntity* statement, const char* name) {
        if (!statement) return;
        steps_.push_back({});
        steps_.push_back({statement});
        steps_.push_back({statement, name});
    }

    void add(const HDNTStmtBlock& block) {
        builder_.open(Kind::statements, "{}", block);
        builder_.flag(Facet::disabled, !block.enabled());
        steps_.push_back({});
        for (size_t i = block.statements().size(); i-- > 0;)
            if (block.getStmt(i)) steps_.push_back({block.getStmt(i)});
    }

    void add(const HDNTFunctionCall& call, Kind kind) {
        open(kind, call.name(), call);
        builder_.facet(Facet::arguments, expressionTexts(call.actuals()));
        builder_.close();
    }

    void addExpression(const HDNTNetlistEntity& statement) {
        builder_.open(Kind::expression, "expression", statement);
        builder_.facet(Facet::value, expressionText(dynamic_cast<const HDNTExpr*>(&statement)));
        builder_.close();
    }

    TreeBuilder& builder_;
    std::vector<Step> steps_;
    const HDNTSignal* lastList_ = nullptr;
};

} // namespace

void describeMapping(TreeBuilder& builder, const HDNTNetlist& netlist) {
    MappingDescription(builder).describe(netlist);
}

} // namespace hdnt::compare
