#include "author/exchange/mappingJson.internal.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/writer/HDNTSourceVisitor.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

namespace hdnt::author {

namespace {

/// A stream into memory.
class TextStream {
public:
    TextStream() : stream_(open_memstream(&text_, &size_)) {
        if (!stream_) throw std::bad_alloc();
    }
    ~TextStream() {
        std::fclose(stream_);
        std::free(text_);
    }
    TextStream(const TextStream&) = delete;

    FILE* stream() { return stream_; }
    std::string text() {
        if (std::fflush(stream_) != 0) throw std::bad_alloc();
        return {text_, size_};
    }

private:
    char* text_ = nullptr;
    std::size_t size_ = 0;
    FILE* stream_;
};

class Statements {
public:
    explicit Statements(std::vector<std::string>& problems) : problems_(problems) {}

    template <typename Entity>
    void add(const std::vector<Entity*>& entities) {
        for (const HDNTNetlistEntity* const entity : entities) addTo(json, entity);
    }

    Json json = Json::array();

private:
    // The signals of a ranged declaration follow each other, and are one statement.
    void addTo(Json& list, const HDNTNetlistEntity* entity) {
        const auto* const signal = nodeCast<HDNTSignal>(entity);
        if (signal && signal->sigList() && signal->sigList()->firstExpanded() != signal) return;
        list.push_back(of(entity));
    }

    Json of(const HDNTNetlistEntity* entity) {
        if (depth_ == deepestStatement) {
            problems_.push_back("statements nested more than " + std::to_string(deepestStatement) + " deep");
            return nullptr;
        }
        ++depth_;
        Json json = ofShallow(entity);
        --depth_;
        return json;
    }

    Json ofShallow(const HDNTNetlistEntity* entity) {
        if (const auto* const inst = nodeCast<HDNTBlockInst>(entity))
            return {{"kind", "instance"}, {"name", inst->instName()}, {"type", inst->typeName()}};
        if (const auto* const signal = nodeCast<HDNTSignal>(entity)) return of(*signal);
        if (const auto* const connect = nodeCast<HDNTConnect>(entity))
            return {{"kind", "connect"}, {"signal", connect->signalName()}, {"pins", of(connect->pins())}};
        if (const auto* const assign = nodeCast<HDNTAssignProperty>(entity)) return of(*assign);
        if (const auto* const call = nodeCast<HDNTFunctionCall>(entity)) return of(*call);
        if (const auto* const choice = nodeCast<HDNTIfStmt>(entity)) return of(*choice);
        if (const auto* const block = nodeCast<HDNTStmtBlock>(entity)) return of(*block);
        problems_.emplace_back("a statement that is missing, or that the language does not have");
        return nullptr;
    }

    Json of(const HDNTSignal& signal) {
        const HDNTSigList* const list = signal.sigList();
        Json json = {{"kind", "signal"}, {"name", list ? list->name() : signal.name()}};
        if (signal.connect()) json["pins"] = of(signal.connect()->pins());
        return json;
    }

    Json of(const std::vector<HDNTPinInst*>& pins) {
        Json list = Json::array();
        for (const HDNTPinInst* const item : pins) {
            if (const auto* const pin = nodeCast<HDNTBlockPinName>(item))
                list.push_back(
                    {{"instance", orNull(pin->instName())}, {"pin", pin->pinName()}, {"isInverted", pin->inverted()}});
            else problems_.emplace_back("a pin of a kind that the language does not have");
        }
        return list;
    }

    Json of(const HDNTAssignProperty& assign) {
        const auto* const onPin = nodeCast<HDNTAssignPinProperty>(&assign);
        Json json = {{"kind", onPin ? "pinProperty" : "blockProperty"}, {"instance", assign.instName()}};
        if (onPin) json["pin"] = onPin->pinName();
        json["property"] = assign.propName();
        json["value"] = textOf(assign.value());
        return json;
    }

    Json of(const HDNTFunctionCall& call) {
        Json json = {{"kind", "call"}, {"function", call.name()}, {"arguments", Json::array()}};
        for (const HDNTExpr* const actual : call.actuals()) json["arguments"].push_back(textOf(actual));
        return json;
    }

    // "else if" goes on in the list of branches.
    Json of(const HDNTIfStmt& first) {
        Json json = {{"kind", "if"}, {"branches", Json::array()}};
        const HDNTNetlistEntity* otherwise = nullptr;
        for (const HDNTIfStmt* choice = &first; choice; choice = nodeCast<HDNTIfStmt>(otherwise)) {
            json["branches"].push_back({{"condition", textOf(choice->condition())}, {"then", of(choice->thenStmt())}});
            otherwise = choice->elseStmt();
        }
        if (otherwise) json["else"] = of(otherwise);
        return json;
    }

    Json of(const HDNTStmtBlock& block) {
        Json list = Json::array();
        if (!block.enabled()) problems_.emplace_back("a statement block that is not enabled");
        for (const HDNTNetlistEntity* const statement : block.statements()) addTo(list, statement);
        return list;
    }

    std::string textOf(const HDNTExpr* expr) {
        TextStream stream;
        std::vector<std::string> said;
        {
            HDNTSourceVisitor visitor(stream.stream(), &said);
            expr->acceptOwn(visitor);
            visitor.print();
        }
        problems_.insert(problems_.end(), said.begin(), said.end());
        return stream.text();
    }

    int depth_ = 0;
    std::vector<std::string>& problems_;
};

} // namespace

Json statementsOf(const HDNTNetlist& netlist, std::vector<std::string>& problems) {
    Statements statements(problems);
    statements.add(netlist.preInstanceCalls());
    statements.add(netlist.instances());
    statements.add(netlist.signals());
    statements.add(netlist.connects());
    statements.add(netlist.pinPropertyAssigns());
    statements.add(netlist.blockPropertyAssigns());
    statements.add(netlist.ifStmts());
    statements.add(netlist.postInstanceCalls());
    return std::move(statements.json);
}

} // namespace hdnt::author
