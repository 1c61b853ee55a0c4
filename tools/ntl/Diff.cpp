#include "hdnt/frontend/SearchPath.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/DiffResult.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Workers.h"

#include <new>
#include <optional>

namespace ntl {

namespace {

// What comes out of a worker: a mark, then the library's tree or the reason why there is none.
constexpr char goodMark = '+';
constexpr char badMark = '-';

// In the worker's process. An INCLUDE that brought nothing in makes another library, so that is said.
std::string described(const ComparedLibrary& side) {
    for (const std::string& directory : side.searchDirectories) NtlAddSearchDirectory(directory);
    std::string of;
    try {
        Loader loader;
        HDNTLibrary* library = nullptr;
        of = "parent library: ";
        for (const std::string& path : side.parents) library = loader.load(path, library);
        of.clear();
        loader.forget();
        library = loader.load(side.path, library);
        warn(loader.diagnostics());
        return goodMark + HDNTModelTree(*library).toBytes();
    } catch (const Failure& failure) {
        return badMark + of + failure.what();
    } catch (const std::bad_alloc&) {
        return badMark + of + side.path + ": out of memory";
    } catch (const std::exception& error) {
        return badMark + of + side.path + ": " + error.what();
    }
}

Status statusOf(const DiffResult& result, const std::string& failOn) {
    using Effect = HDNTDifference::Effect;
    size_t failing = result.count(Effect::breaking);
    if (failOn != "breaking") failing += result.count(Effect::compatible);
    if (failOn == "any") failing = result.differences.size();
    return failing == 0 ? Fine : Faulty;
}

} // namespace

std::array<std::optional<HDNTModelTree>, 2> treesOf(const std::array<ComparedLibrary, 2>& sides) {
    std::array<std::optional<HDNTModelTree>, 2> trees;
    WorkerTasks tasks;
    tasks.count = sides.size();
    tasks.atOnce = static_cast<int>(sides.size());
    tasks.work = [&](size_t i) { return described(sides[i]); };
    tasks.said = [](size_t, std::string_view text) { writeError(text); };
    tasks.tick = [](size_t) {};
    tasks.done = [&](size_t i, const WorkerResult& worker) {
        if (!worker.accident.empty()) complain(sides[i].path + ": " + worker.accident);
        else if (worker.bytes.front() == badMark) complain(worker.bytes.substr(1));
        else trees[i] = HDNTModelTree::fromBytes(std::string_view(worker.bytes).substr(1));
    };
    runWorkers(tasks);
    return trees;
}

int runDiff(const Settings& settings) {
    enableByDefault(settings, "arch.enableTestFeatures");
    const std::vector<std::string> parents = parentPaths(settings.parent);
    const auto [before, after] =
        treesOf({ComparedLibrary{settings.oldLibrary, parents, settings.oldSearchDirectories},
                 ComparedLibrary{settings.newLibrary, parents, settings.newSearchDirectories}});
    if (!before || !after) return Unusable;
    DiffResult result{{settings.oldLibrary, settings.newLibrary}, {}, HDNTComparison::compare(*before, *after)};
    result.libraries = {std::string(before->text(before->elements()[0].name)),
                        std::string(after->text(after->elements()[0].name))};
    const int status = statusOf(result, settings.failOn);
    writeOutput(settings.format == "json"       ? diffJson(result, status)
                : settings.format == "markdown" ? diffMarkdown(result)
                                                : diffText(result));
    return status;
}

} // namespace ntl
