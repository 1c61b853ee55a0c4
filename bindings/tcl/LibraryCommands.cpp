#include "bindings/shared/Parameters.h"
#include "bindings/shared/Text.h"
#include "bindings/tcl/Subcommand.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/registry/registerCells.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <optional>

namespace hdnt::tcl {

namespace {

Tcl_Obj* parent(const Call& call) {
    return call.session.wrap(call.life->below ? call.life->below->node() : nullptr, call.life->below);
}
Tcl_Obj* path(const Call& call) { return toTcl(File{call.life->path}); }
Tcl_Obj* warnings(const Call& call) { return toTcl(call.life->warnings); }

Tcl_Obj* functions(const Call& call) {
    Obj list(Tcl_NewListObj(0, nullptr));
    for (HDNTFunctionDecl& function : call.as<HDNTLibrary>().functions())
        Tcl_ListObjAppendElement(nullptr, list.get(), call.wrap(&function));
    return toTcl(std::move(list));
}

Tcl_Obj* droppedMappings(const Call& call) {
    return toTcl(listOf(call.as<HDNTLibrary>().getDroppedMappings(), [](const HDNTLibrary::DroppedMapping& mapping) {
        return Dict()
            .put("block", mapping.blockName)
            .put("reason", mapping.reason)
            .put("location", toTcl(mapping.location))
            .obj();
    }));
}

Tcl_Obj* find(const Call& call) {
    return call.wrap(call.as<HDNTLibrary>().getTypeBlockByName(textOf(call.argument(0)), true));
}

Tcl_Obj* exists(const Call& call) {
    return toTcl(call.as<HDNTLibrary>().getTypeBlockByName(textOf(call.argument(0)), false) != nullptr);
}

Tcl_Obj* startingWith(const Call& call) {
    std::vector<HDNTBlock*> blocks;
    const bool withParents = call.arguments() < 2 || boolOf(call.argument(1));
    call.as<HDNTLibrary>().getTypeBlocksBeginWith(textOf(call.argument(0)), blocks, withParents);
    return toTcl(listOf(blocks, [&](HDNTBlock* block) { return Obj(call.wrap(block)); }));
}

Tcl_Obj* close(const Call& call) {
    if (call.life->path.empty())
        throw Refused({"HDNT", "MANAGED"}, "this library belongs to the manager: hdnt::release releases those");
    call.session.close(*call.life);
    return Tcl_NewObj();
}

// Commands of the package: what the words behind the name ask for.

struct Command {
    Session& session;
    Tcl_Interp* interp;
    int count;
    Tcl_Obj* const* words;

    int arguments() const { return count - 1; }
    Tcl_Obj* argument(int index) const { return words[index + 1]; }
    void check(int least, int most, const char* usage) const {
        if (arguments() >= least && arguments() <= most) return;
        Tcl_WrongNumArgs(interp, 1, words, usage);
        throw ResultIsSet();
    }
};

Tcl_Obj* load(const Command& command) {
    static const char* const usage = "path ?-parent library? ?-check boolean?";
    static const std::array<const char*, 3> options = {"-check", "-parent", nullptr};
    command.check(1, 5, usage);
    if (command.arguments() % 2 == 0) command.check(0, 0, usage);
    bool check = false;
    std::optional<HandleInUse> below;
    for (int i = 1; i < command.arguments(); i += 2) {
        int which = 0;
        if (Tcl_GetIndexFromObj(command.interp, command.argument(i), options.data(), "option", TCL_EXACT, &which) !=
            TCL_OK)
            throw ResultIsSet();
        if (which == 0) check = boolOf(command.argument(i + 1));
        else if (Tcl_GetCharLength(command.argument(i + 1)) == 0) below.reset();
        else below.emplace(handleOf(command.session, command.argument(i + 1), HDNTNodeKind::Library));
    }
    const std::string path = pathOf(command.interp, command.argument(0));
    std::unique_ptr<HDNTLibrary> library;
    std::vector<Diagnostic> warnings;
    inSection(below ? LoadSection::Changes : LoadSection::Quiet, path,
              [&] { library = scripts::loadFrom(path, below ? below->life()->library() : nullptr, check, warnings); });
    const std::shared_ptr<SharedLibrary> life = command.session.own(std::move(library));
    life->path = path;
    life->warnings = std::move(warnings);
    return command.session.wrap(life->node(), life);
}

Tcl_Obj* managed(const Command& command, HDNTLibrary* (*get)(), const char* name) {
    command.check(0, 0, nullptr);
    std::optional<Obj> result;
    std::vector<Diagnostic> warnings;
    std::shared_ptr<SharedLibrary> life;
    inSection(
        LoadSection::Changes, name,
        [&] {
            HDNTLibrary& library = *get();
            const Locked lock;
            life = Session::lifeOf(library);
            result.emplace(command.session.wrap(&library, life));
        },
        &warnings);
    if (!warnings.empty()) life->warnings = std::move(warnings);
    return toTcl(std::move(*result));
}

Tcl_Obj* common(const Command& command) { return managed(command, HDNTLibraryMgr::getCommonLibrary, "common"); }
Tcl_Obj* simulation(const Command& command) {
    return managed(command, HDNTLibraryMgr::getSimulationLibrary, "simulation");
}

Tcl_Obj* release(const Command& command) {
    command.check(0, 0, nullptr);
    bool released = true;
    {
        const LoadSection section(LoadSection::Changes, scriptLock());
        const Locked lock;
        released = Session::closeManaged();
        if (released) HDNTLibraryMgr::releaseLibraries();
    }
    if (!released)
        throw Refused({"HDNT", "BUSY"}, "a library of the manager is in use by an operation that is under way");
    command.session.wantSweep();
    return Tcl_NewObj();
}

Tcl_Obj* diff(const Command& command) {
    command.check(2, 2, "old new");
    Handle* const first = handleAt(command.interp, command.argument(0));
    const HDNTNodeKind kind = first && first->kind == HDNTNodeKind::Block ? first->kind : HDNTNodeKind::Library;
    const HandleInUse before(handleOf(command.session, command.argument(0), kind));
    const HandleInUse after(handleOf(command.session, command.argument(1), kind));
    return differences(before, after);
}

Tcl_Obj* lint(const Command& command) {
    static const char* const usage = "library ?-architectures list? ?-budget number? ?-thorough boolean?";
    static const std::array<const char*, 4> names = {"-architectures", "-budget", "-thorough", nullptr};
    command.check(1, 7, usage);
    if (command.arguments() % 2 == 0) command.check(0, 0, usage);
    LintOptions options;
    std::vector<std::string> architectures;
    for (int i = 1; i < command.arguments(); i += 2) {
        int which = 0;
        Tcl_Obj* const value = command.argument(i + 1);
        if (Tcl_GetIndexFromObj(command.interp, command.argument(i), names.data(), "option", TCL_EXACT, &which) !=
            TCL_OK)
            throw ResultIsSet();
        if (which == 2) options.isThorough = boolOf(value);
        else if (which == 1) options.budget = static_cast<size_t>(std::max(intOf(value), 1));
        else
            for (Tcl_Obj* const name : wordsOf(command.interp, value)) architectures.push_back(textOf(name));
        if (which == 0) options.architectures = architectures;
    }
    const HandleInUse use(handleOf(command.session, command.argument(0), HDNTNodeKind::Library));
    return toTcl(scripts::lintOf(scriptLock(), *use.life()->library(), options));
}

Tcl_Obj* guide(const Command& command) {
    static const char* const usage =
        "library folder ?-architectures list? ?-compare library? ?-parents boolean? ?-title text?";
    static const std::array<const char*, 5> names = {"-architectures", "-compare", "-parents", "-title", nullptr};
    command.check(2, 10, usage);
    if (command.arguments() % 2 == 1) command.check(0, 0, usage);
    const HandleInUse use(handleOf(command.session, command.argument(0), HDNTNodeKind::Library));
    const HDNTLibrary& library = *use.life()->library();
    author::GuideOptions options;
    for (int i = 2; i < command.arguments(); i += 2) {
        int which = 0;
        Tcl_Obj* const value = command.argument(i + 1);
        if (Tcl_GetIndexFromObj(command.interp, command.argument(i), names.data(), "option", TCL_EXACT, &which) !=
            TCL_OK)
            throw ResultIsSet();
        if (which == 0)
            for (Tcl_Obj* const name : wordsOf(command.interp, value)) options.architectures.push_back(textOf(name));
        if (which == 1) {
            const HandleInUse before(handleOf(command.session, value, HDNTNodeKind::Library));
            const HDNTLibrary& older = *before.life()->library();
            options.changes = {older.getName(), scripts::differencesOf(scriptLock(), older, library)};
        }
        if (which == 2) options.withParents = boolOf(value);
        if (which == 3) options.title = textOf(value);
    }
    const std::size_t pages = scripts::writeGuide(scriptLock(), library, textOf(command.argument(1)), options);
    return Tcl_NewWideIntObj(static_cast<Tcl_WideInt>(pages));
}

Tcl_Obj* alive(const Command& command) {
    command.check(1, 1, "handle");
    const Handle* const handle = handleAt(command.interp, command.argument(0));
    return toTcl(handle && !handle->isDead());
}

Tcl_Obj* libraries(const Command& command) {
    command.check(0, 0, nullptr);
    std::vector<Obj> open;
    for (const std::shared_ptr<SharedLibrary>& life : command.session.libraries())
        if (!life->isGone()) open.emplace_back(command.session.wrap(life->node(), life));
    return toTcl(listOf(open, [](const Obj& one) { return one; }));
}

Tcl_Obj* parameter(const Command& command) {
    command.check(1, 2, "name ?value?");
    HPAParamMgr& parameters = *HPAParamMgr::getParamMgr();
    const std::string name = textOf(command.argument(0));
    const std::string unknown = scripts::unknownParameter(name);
    if (!unknown.empty()) throw Refused({"HDNT", "LOOKUP", "PARAMETER", name}, unknown);
    if (command.arguments() == 2 && Tcl_GetCharLength(command.argument(1)) == 0) parameters.unset(name);
    else if (command.arguments() == 2) parameters.setValueAsBool(name, boolOf(command.argument(1)));
    return toTcl(parameters.getValueAsBool(name));
}

Tcl_Obj* architecture(const Command& command) {
    command.check(0, 1, "?name?");
    HDNTLibraryMgr& manager = *HDNTLibraryMgr::getLibraryMgr();
    if (command.arguments() == 1) {
        const std::string name = textOf(command.argument(0));
        const LoadSection section(LoadSection::Changes, scriptLock());
        manager.m_architecture = name;
    }
    return toTcl(manager.m_architecture);
}

Tcl_Obj* addSearchDirectory(const Command& command) {
    command.check(1, 1, "path");
    const std::string path = pathOf(command.interp, command.argument(0));
    const LoadSection section(LoadSection::Quiet, scriptLock());
    NtlAddSearchDirectory(path);
    return Tcl_NewObj();
}

Tcl_Obj* registerCells(const Command& command) {
    command.check(1, 1, "path");
    hdnt::registerCells(pathOf(command.interp, command.argument(0)));
    return Tcl_NewObj();
}

Tcl_Obj* errorCount(const Command& command) {
    command.check(0, 0, nullptr);
    return toTcl(HDNTError::numErrors);
}
Tcl_Obj* liveHandles(const Command& command) {
    command.check(0, 0, nullptr);
    return toTcl(command.session.size());
}
Tcl_Obj* tool(const Command& command) {
    command.check(0, 0, nullptr);
    const std::string path = scripts::toolPath();
    return toTcl(File{path});
}

Obj fromJson(const nlohmann::json& value) {
    if (value.is_null()) return Obj(Tcl_NewObj());
    if (value.is_boolean()) return Obj(toTcl(value.get<bool>()));
    if (value.is_number_integer()) return Obj(toTcl(value.get<long long>()));
    if (value.is_number()) return Obj(toTcl(value.get<double>()));
    if (value.is_string()) return Obj(toTcl(value.get_ref<const std::string&>()));
    if (value.is_array()) return listOf(value, fromJson);
    Dict dict;
    for (const auto& [key, item] : value.items()) dict.put(key.c_str(), fromJson(item));
    return dict.obj();
}

Tcl_Obj* parsed(const Command& command) {
    command.check(1, 1, "text");
    return toTcl(fromJson(nlohmann::json::parse(textOf(command.argument(0)))));
}

// Throws when the name is that of a handle that was there once.
Tcl_Obj* checkName(const Command& command) {
    command.check(1, 1, "name");
    std::string name = textOf(command.argument(0));
    if (!name.starts_with("::")) name = (name.starts_with("hdnt::") ? "::" : "::hdnt::") + name;
    if (!command.session.wasHandle(name)) return Tcl_NewObj();
    const size_t begin = name.rfind(':') + 1;
    throw DeadHandle(name.substr(begin, name.find_first_of("0123456789") - begin), name);
}

template <Tcl_Obj* (*Run)(const Command&)>
int runCommand(ClientData, Tcl_Interp* interp, int count, Tcl_Obj* const words[]) {
    Session* const found = Session::of(interp);
    if (!found) return TCL_ERROR;
    const std::shared_ptr<Session> session = found->shared_from_this();
    Tcl_Preserve(interp);
    const int status = guarded(interp, [&] {
        const Locked lock;
        return Run({*session, interp, count, words});
    });
    session->sweep();
    Tcl_Release(interp);
    return status;
}

} // namespace

std::vector<Subcommand> librarySubcommands() {
    using scripts::list;
    static constexpr std::tuple fields{scripts::field<&HDNTLibrary::getName>("name", ""),
                                       list<scripts::ownBlocks, HDNTNodeKind::Block>("blocks", "block", "")};
    std::vector<Subcommand> all =
        subcommands(fields, {{"all_blocks", [](const Call& call) { return elements(call, scripts::allBlocks); }, 0, 2,
                              "?-names? ?pattern?", false},
                             {"parent", parent, 0, 0, nullptr, false},
                             {"path", path, 0, 0, nullptr, true},
                             {"warnings", warnings, 0, 0, nullptr, true},
                             {"find", find, 1, 1, "name", false},
                             {"exists", exists, 1, 1, "name", false},
                             {"starting_with", startingWith, 1, 2, "prefix ?withParents?", false},
                             {"functions", functions, 0, 0, nullptr, false},
                             {"dropped_mappings", droppedMappings, 0, 0, nullptr, true},
                             {"close", close, 0, 0, nullptr, false}});
    for (const Subcommand& one : textSubcommands()) all.push_back(one);
    return all;
}

void addCommands(Tcl_Interp* interp) {
    const auto add = [&](const char* name, Tcl_ObjCmdProc* run) {
        Tcl_CreateObjCommand(interp, (std::string("::hdnt::") + name).c_str(), run, nullptr, nullptr);
    };
    add("load", runCommand<load>);
    add("common", runCommand<common>);
    add("simulation", runCommand<simulation>);
    add("release", runCommand<release>);
    add("diff", runCommand<diff>);
    add("lint", runCommand<lint>);
    add("guide", runCommand<guide>);
    add("alive", runCommand<alive>);
    add("libraries", runCommand<libraries>);
    add("parameter", runCommand<parameter>);
    add("architecture", runCommand<architecture>);
    add("add_search_directory", runCommand<addSearchDirectory>);
    add("register_cells", runCommand<registerCells>);
    add("error_count", runCommand<errorCount>);
    add("live_handles", runCommand<liveHandles>);
    add("Tool", runCommand<tool>);
    add("Parsed", runCommand<parsed>);
    add("CheckName", runCommand<checkName>);
}

} // namespace hdnt::tcl
