// Mappings applied to property values.
#include "bindings/shared/PropertyFacts.h"
#include "bindings/tcl/Subcommand.h"
#include "bindings/tcl/Values.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/netlist/Words.h"

#include <array>

namespace hdnt::tcl {

namespace {

using Expansion = HDNTExpansion;

Obj index(size_t number) { return Obj(number == Expansion::none ? Tcl_NewObj() : toTcl(number)); }
Obj place(const yyltype& at) { return Obj(at.fileLine == 0 && !at.fileName ? Tcl_NewObj() : toTcl(at)); }
Obj originOf(const Expansion::Origin& origin) {
    return Dict().put("location", place(origin.location)).put("branch", index(origin.branch)).obj();
}
Obj problemOf(const Expansion::Problem& problem) {
    return Dict()
        .put("message", problem.message)
        .put("location", place(problem.location))
        .put("level", static_cast<int>(problem.level))
        .obj();
}
Obj propertyOf(const Expansion::PropertyValue& value) {
    return Dict()
        .put("pin", value.pin)
        .put("name", value.name)
        .put("value", value.value)
        .put("origin", originOf(value.origin))
        .obj();
}

/// An expansion as a dict, with handles of its blocks.
class Result {
public:
    explicit Result(const Call& call) : call_(call) {}

    Obj of(const Expansion& expansion) {
        return Dict()
            .put("levels", listOf(expansion.levels(), [&](const auto& level) { return this->level(level); }))
            .put("problems", listOf(expansion.problems(), problemOf))
            .obj();
    }

private:
    Obj instance(const Expansion::Instance& instance) {
        return Dict()
            .put("name", instance.name)
            .put("type", instance.type)
            .put("block", block(instance.block))
            .put("properties", listOf(instance.properties, propertyOf))
            .put("level", index(instance.level))
            .put("origin", originOf(instance.origin))
            .obj();
    }

    Obj level(const Expansion::Level& level) {
        Dict all;
        all.put("block", block(level.block)).put("type", level.block->getName()).put("path", level.path);
        all.put("section", words::sections.wordOf(level.section)).put("outer", index(level.outer));
        all.put("location", place(level.location));
        all.put("is_map_library", !level.location.fileName);
        all.put("branches", listOf(level.branches, [](const auto& branch) {
                    return Dict().put("taken", branch.taken).put("origin", originOf(branch.origin)).obj();
                }));
        all.put("instances", listOf(level.instances, [&](const auto& one) { return instance(one); }));
        all.put("signals", listOf(level.signals, [](const auto& signal) {
                    return Dict().put("name", signal.name).put("origin", originOf(signal.origin)).obj();
                }));
        all.put("connections", listOf(level.connections, [](const auto& connection) {
                    return Dict()
                        .put("signal", connection.signal)
                        .put("instance", connection.instance)
                        .put("pin", connection.pin)
                        .put("inverted", connection.inverted)
                        .put("origin", originOf(connection.origin))
                        .obj();
                }));
        all.put("pin_properties", listOf(level.pinProperties, propertyOf));
        all.put("calls", listOf(level.calls, [](const auto& made) {
                    return Dict()
                        .put("name", made.name)
                        .put("arguments", made.arguments)
                        .put("made", made.made)
                        .put("origin", originOf(made.origin))
                        .obj();
                }));
        return all.obj();
    }

    // A block of the common library need not be below the one that is expanded.
    Obj block(HDNTBlock* block) {
        if (!block) return Obj(Tcl_NewObj());
        const bool isNear = Session::lifeOf(*block, call_.life) != nullptr;
        return Obj(call_.session.wrap(block, isNear ? call_.life : Session::lifeOf(*block->getLibrary())));
    }

    const Call& call_;
};

struct Options {
    std::vector<Tcl_Obj*> connected;
    bool deep = false;
    std::string architecture;
    Tcl_Obj* functions = nullptr;
};

// Returns where the property values begin.
int readOptions(const Call& call, Options& options) {
    static const std::array<const char*, 6> names = {"-architecture", "-connected", "-deep",
                                                     "-functions",    "--",         nullptr};
    int at = 0;
    while (at < call.arguments() && Tcl_GetString(call.argument(at))[0] == '-') {
        int which = 0;
        if (Tcl_GetIndexFromObj(call.interp(), call.argument(at), names.data(), "option", TCL_EXACT, &which) != TCL_OK)
            throw ResultIsSet();
        if (which == 4) return at + 1;
        if (at + 1 >= call.arguments()) wrongArguments(call, "?option value ...? ?--? ?property value ...?");
        Tcl_Obj* const value = call.argument(at + 1);
        if (which == 0) options.architecture = textOf(value);
        else if (which == 1) options.connected = wordsOf(call.interp(), value);
        else if (which == 2) options.deep = boolOf(value);
        else options.functions = value;
        at += 2;
    }
    return at;
}

void setProperties(Expansion& expansion, const HDNTBlock& block, const Call& call, int at) {
    if ((call.arguments() - at) % 2 != 0) wrongArguments(call, "?option value ...? ?--? ?property value ...?");
    for (; at < call.arguments(); at += 2) {
        const std::string name = textOf(call.argument(at));
        Tcl_Obj* const word = call.argument(at + 1);
        const std::optional<Value> value = valueFor(block.getPropertyByName(name), word);
        std::string reason;
        if (!value || !expansion.setProperty(name, *value, reason))
            throw Refused({"HDNT", "VALUE", name},
                          scripts::refusalText(block, name, value, '\'' + textOf(word) + '\''));
    }
}

} // namespace

Tcl_Obj* expand(const Call& call) {
    Options options;
    const int values = readOptions(call, options);
    auto& block = call.as<HDNTBlock>();
    if (options.deep || !block.hasOwnNetlist()) scripts::Reading::mustNotAskMapLibrary(block);
    Expansion expansion(block, options.architecture);
    setProperties(expansion, block, call, values);
    for (Tcl_Obj* const pin : options.connected) {
        std::string reason;
        if (!expansion.connect(textOf(pin), reason)) throw Refused({"HDNT", "VALUE", textOf(pin)}, reason);
    }
    TclFunctions functions(call.interp());
    if (options.functions) functions.add(options.functions);
    std::optional<Obj> result;
    functions.run(block.getName(), LoadSection::Changes, [&] {
        expansion.expand(options.deep);
        const Locked lock;
        result.emplace(Result(call).of(expansion));
    });
    return toTcl(std::move(*result));
}

} // namespace hdnt::tcl
