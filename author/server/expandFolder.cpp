// What a mapping becomes, in the process that makes the model.
#include "author/expansion/outcomes.h"
#include "author/judge/judge.h"
#include "author/server/FolderLoader.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::server {

namespace {

using platform::printable;

Json refusal(const std::string& reason) { return {{"refusal", reason}}; }

std::string firstError(const std::vector<Diagnostic>& said) {
    const auto error = std::ranges::find(said, Severity::error, &Diagnostic::severity);
    if (error == said.end()) return said.empty() ? "the library cannot be read" : textOf(said.front());
    return error->place.file.empty() ? textOf(*error) : describe(error->place) + ": " + textOf(*error);
}

// A document that is no file is a library by itself.
LibraryTask taskOfDocument(const Session& session, const std::string& uri) {
    if (const std::string path = pathOf(uri); !path.empty()) return server::taskOf(session, path);
    LibraryTask task;
    task.library.path = "/";
    task.document = "/untitled.btl";
    const auto open = session.documents.find(uri);
    if (open != session.documents.end()) task.texts.emplace(task.document, open->second.text());
    return task;
}

// What is wrong elsewhere in the library does not matter: what cannot be read is left out.
Loaded loadedBy(FolderLoader& loader) {
    constexpr bool isChecked = false;
    Loaded loaded = loader.load(isChecked);
    if (loaded) return loaded;
    const LintOptions options;
    const FailedLoad failed{loader.path(), loader.parent(), loader.task().texts, loaded.files, ConfigScope::None,
                            options,       isChecked};
    if (Loaded rest = loadSound(failed, loaded.diagnostics)) return rest;
    return loaded;
}

std::string written(const MappingOutcomes& outcomes) {
    constexpr std::size_t most = std::size_t{1} << 22;
    bool isCut = outcomes.isCut;
    std::string text;
    for (const MappingOutcome& outcome : outcomes.list) {
        if (text.size() > most) { // nobody reads more
            isCut = true;
            break;
        }
        const std::string setting = outcome.setting.empty() ? "the defaults" : outcome.setting;
        text += (text.empty() ? "// With " : "\n// With ") + printable(setting) + '\n';
        for (const std::string& problem : outcome.problems) text += "// " + printable(problem) + '\n';
        text += outcome.text;
    }
    if (isCut) text += "\n// What other settings give is left out.\n";
    return text;
}

} // namespace

Json expandBlock(const Session& session, const BlockToExpand& wanted) {
    const std::string& name = wanted.block;
    try {
        FolderLoader loader(taskOfDocument(session, wanted.uri));
        if (loader.path().empty()) return refusal("the library is gone");
        if (const std::vector<Diagnostic> faults = loader.prepare(); !faults.empty())
            return refusal(firstError(faults));
        const Loaded loaded = loadedBy(loader);
        if (!loaded) return refusal(firstError(loaded.diagnostics));
        HDNTBlock* const block = loaded.library->getTypeBlockByName(name, true);
        const bool isHidden = block && wanted.isOwn && block->getLibrary() != loaded.library.get();
        if (!block || isHidden)
            return refusal("block '" + name + (wanted.isOwn ? "' has faults" : "' is not declared"));
        OutcomeOptions options;
        if (loader.project() && loader.project()->budget) options.settings = *loader.project()->budget;
        options.texts = loader.task().texts;
        const MappingOutcomes outcomes = outcomesOf(*block, options);
        if (outcomes.list.empty()) return refusal("block '" + name + "' has no mapping");
        return {{"result", {{"uri", wanted.uri}, {"block", name}, {"text", written(outcomes)}}}};
    } catch (const HEXAll& error) {
        return refusal(error.what());
    }
}

} // namespace hdnt::author::server
