// What the tools for authors do with whole libraries.
#include "bindings/shared/Authoring.h"
#include "bindings/shared/Text.h"
#include "bindings/tcl/Command.h"
#include "bindings/tcl/Subcommand.h"
#include "hdnt/model/HDNTLibrary.h"

#include <algorithm>
#include <array>

namespace hdnt::tcl {

namespace {

std::vector<std::string> textsOf(const Command& command, Tcl_Obj* list) {
    std::vector<std::string> texts;
    for (Tcl_Obj* const text : wordsOf(command.interp, list)) texts.push_back(textOf(text));
    return texts;
}

Tcl_Obj* lint(const Command& command) {
    static const std::array<const char*, 4> names = {"-architectures", "-budget", "-thorough", nullptr};
    LintOptions options;
    command.options(1, names, "library ?-architectures list? ?-budget number? ?-thorough boolean?",
                    [&](int which, Tcl_Obj* value) {
                        if (which == 0) options.architectures = textsOf(command, value);
                        if (which == 1) options.budget = static_cast<size_t>(std::max(intOf(value), 1));
                        if (which == 2) options.isThorough = boolOf(value);
                    });
    const HandleInUse use(handleOf(command.session, command.argument(0), HDNTNodeKind::Library));
    return toTcl(scripts::lintOf(scriptLock(), *use.life()->library(), options));
}

Tcl_Obj* guide(const Command& command) {
    static const std::array<const char*, 5> names = {"-architectures", "-compare", "-parents", "-title", nullptr};
    const char* const usage =
        "library folder ?-architectures list? ?-compare library? ?-parents boolean? ?-title text?";
    command.check(2, 10, usage);
    const HandleInUse use(handleOf(command.session, command.argument(0), HDNTNodeKind::Library));
    const HDNTLibrary& library = *use.life()->library();
    author::GuideOptions options;
    command.options(2, names, usage, [&](int which, Tcl_Obj* value) {
        if (which == 0) options.architectures = textsOf(command, value);
        if (which == 1) {
            const HandleInUse before(handleOf(command.session, value, HDNTNodeKind::Library));
            const HDNTLibrary& older = *before.life()->library();
            options.changes = {older.getName(), scripts::differencesOf(scriptLock(), older, library)};
        }
        if (which == 2) options.withParents = boolOf(value);
        if (which == 3) options.title = textOf(value);
    });
    const author::WrittenGuide written =
        scripts::writeGuide(scriptLock(), library, textOf(command.argument(1)), options);
    return toTcl(Dict()
                     .put("pages", written.pages)
                     .put("drawings", written.drawings)
                     .put("undrawn", written.undrawn)
                     .put("left_behind", written.leftBehind)
                     .obj());
}

Tcl_Obj* exportBlocks(const Command& command) {
    static const std::array<const char*, 4> names = {"-blocks", "-parents", "-split", nullptr};
    scripts::ExportRequest request;
    command.options(2, names, "library form ?-blocks names? ?-parents boolean? ?-split boolean?",
                    [&](int which, Tcl_Obj* value) {
                        if (which == 0) request.blocks = textsOf(command, value);
                        if (which == 1) request.withParents = boolOf(value);
                        if (which == 2) request.isSplit = boolOf(value);
                    });
    request.form = textOf(command.argument(1));
    const HandleInUse use(handleOf(command.session, command.argument(0), HDNTNodeKind::Library));
    const author::Exported exported = scripts::exportBlocks(scriptLock(), *use.life()->library(), request);
    Dict files;
    if (request.isSplit)
        for (const author::ExportedFile& file : exported.files) files.put(file.name.c_str(), file.text);
    return toTcl(Dict()
                     .put("text", request.isSplit ? std::string() : exported.files.front().text)
                     .put("files", files.obj())
                     .put("left_out", exported.leftOut)
                     .obj());
}

std::vector<std::string> pathsOf(const Command& command, Tcl_Obj* list) {
    std::vector<std::string> paths;
    for (Tcl_Obj* const path : wordsOf(command.interp, list)) paths.push_back(pathOf(command.interp, path));
    return paths;
}

Tcl_Obj* compareModels(const Command& command) {
    static const std::array<const char*, 3> names = {"-include", "-missing", nullptr};
    author::ModelOptions options;
    command.options(2, names, "library files ?-include directories? ?-missing boolean?",
                    [&](int which, Tcl_Obj* value) {
                        if (which == 1) options.withMissing = boolOf(value);
                        if (which == 0) options.searchDirectories = pathsOf(command, value);
                    });
    const HandleInUse use(handleOf(command.session, command.argument(0), HDNTNodeKind::Library));
    return toTcl(
        scripts::compareModels(scriptLock(), *use.life()->library(), pathsOf(command, command.argument(1)), options));
}

Tcl_Obj* importBlocks(const Command& command) {
    command.check(2, 2, "form files");
    const author::Imported imported =
        scripts::importBlocks(scriptLock(), textOf(command.argument(0)), pathsOf(command, command.argument(1)));
    return toTcl(Dict().put("text", imported.text).put("left_out", imported.leftOut).obj());
}

} // namespace

void addAuthoringCommands(Tcl_Interp* interp) {
    addCommand(interp, "lint", runCommand<lint>);
    addCommand(interp, "guide", runCommand<guide>);
    addCommand(interp, "compare_models", runCommand<compareModels>);
    addCommand(interp, "export_blocks", runCommand<exportBlocks>);
    addCommand(interp, "import_blocks", runCommand<importBlocks>);
}

} // namespace hdnt::tcl
