// What is written of a model, what two differ in, and walks.
#include "bindings/shared/EventVisitor.h"
#include "bindings/shared/Text.h"
#include "bindings/tcl/Subcommand.h"
#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/model/HDNTBlock.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace hdnt::tcl {

namespace {

// A whole library takes its time, so other threads run meanwhile.
template <std::string (*Make)(HDNTNode&)>
Tcl_Obj* textOfNode(const Call& call) {
    std::string text;
    inSection(LoadSection::Changes, scripts::nameOf(call.node), [&] { text = Make(call.node); });
    return toTcl(text);
}

Obj placeOf(const HDNTDifference::Place& place) {
    if (place.file.empty() && place.line == 0) return Obj(Tcl_NewObj());
    return Dict()
        .put("file", File{place.file})
        .put("line", place.line)
        .put("column", place.column)
        .put("end_column", "")
        .obj();
}

Tcl_Obj* diff(const Call& call) {
    const HandleInUse before(handleOf(call.session, call.session.wrap(&call.node, call.life), call.node.getKind()));
    const HandleInUse after(handleOf(call.session, call.argument(0), call.node.getKind()));
    return differences(before, after);
}

struct WalkEnded {};

/// Calls the command prefixes of a script.
class Walker : public scripts::EventVisitor {
public:
    explicit Walker(const Call& call) : session_(call.session), life_(call.life), current_(call.life) {}

    void on(const std::string& event, Tcl_Obj* prefix) {
        if (std::ranges::find(events(), event) == events().end()) {
            std::string known;
            for (const std::string_view one : events()) known += (known.empty() ? "" : ", ") + std::string(one);
            throw Refused({"HDNT", "LOOKUP", "EVENT", event}, "bad event \"" + event + "\": must be one of " + known);
        }
        prefixes_.insert_or_assign(event, Obj(prefix));
    }

private:
    bool wants(std::string_view event) const override { return prefixes_.contains(event); }
    void tell(std::string_view event, HDNTNode& node) override { call(event, node); }
    bool ask(std::string_view event, HDNTNode& node) override {
        if (call(event, node) == TCL_CONTINUE) return false;
        const Obj answer(Tcl_GetObjResult(session_.interp()));
        return Tcl_GetCharLength(answer.get()) == 0 || boolOf(answer.get());
    }
    void enterBlock(HDNTBlock& block) override {
        const Locked lock;
        current_ = Session::lifeOf(block, life_);
    }

    int call(std::string_view event, HDNTNode& node) {
        std::vector<Obj> words;
        {
            const Locked lock;
            if (!current_ || current_->isGone()) throw Gone("the library was closed during the walk");
            words.emplace_back(session_.wrap(&node, current_));
        }
        const int code = callBack(session_.interp(), prefixes_.find(event)->second.get(), words);
        if (code == TCL_BREAK) throw WalkEnded();
        return code;
    }

    Session& session_;
    std::shared_ptr<SharedLibrary> life_;
    std::shared_ptr<SharedLibrary> current_; ///< of the block that is being visited
    std::map<std::string, Obj, std::less<>> prefixes_;
};

} // namespace

Tcl_Obj* differences(const HandleInUse& before, const HandleInUse& after) {
    const std::vector<HDNTDifference> found = scripts::differencesOf(scriptLock(), before.node(), after.node());
    return toTcl(listOf(found, [](const HDNTDifference& one) {
        return Dict()
            .put("effect", HDNTComparison::nameOf(one.effect))
            .put("change", HDNTComparison::nameOf(one.change))
            .put("element", HDNTComparison::nameOf(one.element))
            .put("facet", HDNTComparison::nameOf(one.facet))
            .put("block", one.block)
            .put("path", one.path)
            .put("old", one.oldValue)
            .put("new", one.newValue)
            .put("old_location", placeOf(one.oldPlace))
            .put("new_location", placeOf(one.newPlace))
            .obj();
    }));
}

Tcl_Obj* visit(const Call& call) {
    const bool hasOwn = nodeCast<HDNTLibrary>(&call.node) || nodeCast<HDNTBlock>(&call.node);
    int at = 0;
    bool own = false;
    if (hasOwn && std::strcmp(Tcl_GetString(call.argument(0)), "-own") == 0) {
        own = boolOf(call.argument(1));
        at = 2;
    }
    if ((call.arguments() - at) % 2 != 0)
        wrongArguments(call,
                       hasOwn ? "?-own boolean? event prefix ?event prefix ...?" : "event prefix ?event prefix ...?");
    Walker walker(call);
    for (; at < call.arguments(); at += 2) walker.on(textOf(call.argument(at)), call.argument(at + 1));
    inSection(LoadSection::Changes, scripts::nameOf(call.node), [&] {
        try {
            scripts::walk(call.node, walker, own);
        } catch (const WalkEnded&) {
            Tcl_ResetResult(call.interp());
        }
    });
    return Tcl_NewObj();
}

std::vector<Subcommand> textSubcommands() {
    return {{"printed", textOfNode<scripts::printedForm>, 0, 0, nullptr, false},
            {"source", textOfNode<scripts::sourceForm>, 0, 0, nullptr, false},
            {"diff", diff, 1, 1, "other", false},
            {"visit", visit, 2, -1, "?-own boolean? event prefix ?event prefix ...?", false}};
}

} // namespace hdnt::tcl
