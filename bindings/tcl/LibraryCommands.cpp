#include "bindings/shared/Parameters.h"
#include "bindings/shared/Text.h"
#include "bindings/tcl/Command.h"
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

// Commands of the package.

Tcl_Obj* load(const Command& command) {
    static const std::array<const char*, 4> names = {"-check", "-parent", "-untrusted", nullptr};
    scripts::LoadRequest request;
    std::optional<HandleInUse> below;
    command.options(1, names, "path ?-parent library? ?-check boolean? ?-untrusted boolean?",
                    [&](int which, Tcl_Obj* value) {
                        if (which == 0) request.check = boolOf(value);
                        else if (which == 2) request.untrusted = boolOf(value);
                        else if (Tcl_GetCharLength(value) == 0) below.reset();
                        else below.emplace(handleOf(command.session, value, HDNTNodeKind::Library));
                    });
    const std::string path = pathOf(command.interp, command.argument(0));
    std::unique_ptr<HDNTLibrary> library;
    std::vector<Diagnostic> warnings;
    if (below) request.parent = below->life()->library();
    inSection(below ? LoadSection::Changes : LoadSection::Quiet, path,
              [&] { library = scripts::loadFrom(path, request, warnings); });
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
    const auto add = [&](const char* name, Tcl_ObjCmdProc* run) { addCommand(interp, name, run); };
    add("load", runCommand<load>);
    add("common", runCommand<common>);
    add("simulation", runCommand<simulation>);
    add("release", runCommand<release>);
    add("diff", runCommand<diff>);
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
