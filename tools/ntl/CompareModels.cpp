#include "author/exchange/compareModels.h"

#include "tools/ntl/Checker.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Json.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/RuleOptions.h"

#include <algorithm>

namespace ntl {

namespace {

using hdnt::author::ModelComparison, hdnt::author::ModelFile;

ModelComparison comparisonOf(const OpenedLibrary& opened, const Settings& settings) {
    std::vector<std::string> files;
    for (const std::string& name : settings.files) files.push_back(pathOfInput(name));
    const OutputToError redirect;
    return orUnusable([&] {
        return hdnt::author::compareModels(*opened.library, files, {settings.searchDirectories, settings.withMissing});
    });
}

CheckResult resultOf(const std::string& input, size_t blocks, std::vector<hdnt::Diagnostic> findings,
                     const Settings& settings) {
    CheckResult result;
    result.input = input;
    result.isLoaded = true;
    result.blocks = blocks;
    rulesOf(settings).apply(findings);
    result.take(std::move(findings));
    return result;
}

std::vector<CheckResult> resultsOf(const ModelComparison& comparison, const std::string& library,
                                   const Settings& settings) {
    std::vector<CheckResult> results;
    for (size_t i = 0; i < comparison.files.size(); ++i) {
        const ModelFile& file = comparison.files[i];
        results.push_back(resultOf(settings.files[i], file.blocks.size(), file.findings, settings));
        if (file.isReadable) continue;
        results.back().status = Unusable;
        results.back().reason = settings.files[i] + ": cannot be read";
    }
    if (settings.withMissing) results.push_back(resultOf(library, comparison.ownBlocks, comparison.missing, settings));
    return results;
}

std::string jsonOf(const ModelComparison& comparison, const std::vector<CheckResult>& results, int status) {
    Json head = jsonHead("compare-models");
    head["ownBlockCount"] = comparison.ownBlocks;
    head["modelledBlockCount"] = comparison.modelled;
    return jsonDocument(std::move(head), results, status);
}

} // namespace

int runCompareModels(const Settings& given) {
    Settings settings = given;
    settings.mostErrors = 0;
    const OpenedLibrary opened = openLibrary(settings);
    const ModelComparison comparison = comparisonOf(opened, settings);
    std::vector<CheckResult> results = resultsOf(comparison, opened.path, settings);
    int status = Fine;
    for (CheckResult& result : results) {
        const bool failed = fails(result, settings);
        if (failed) status = std::max<int>(status, std::max(result.status, Faulty));
        write(result, failed, settings);
    }
    if (settings.format == "text" && !settings.quiet)
        writeOutput(grouped(comparison.modelled) + " of " + counted(comparison.ownBlocks, "block") +
                    (comparison.modelled == 1 ? " has a model\n" : " have a model\n"));
    if (settings.format == "json") writeOutput(jsonOf(comparison, results, status));
    if (settings.format == "sarif") writeOutput(sarifDocument(results));
    return status;
}

} // namespace ntl
