#include "bindings/shared/Authoring.h"

#include "author/lint/Waivers.h"
#include "hdnt/model/HDNTLibrary.h"

namespace hdnt::scripts {

std::vector<Diagnostic> lintOf(ScriptLock& lock, const HDNTLibrary& library, const LintOptions& options) {
    Reading::mustNotBe(library.getName(), "no library is judged");
    std::vector<Diagnostic> said;
    inSection(lock, LoadSection::Changes, library.getName(), [&] {
        said = hdnt::lint(library, options);
        author::applyWaivers(
            said, {}, {author::today(), options.isThorough ? author::Judged::AllRules : author::Judged::QuickRules});
    });
    return said;
}

author::WrittenGuide writeGuide(ScriptLock& lock, const HDNTLibrary& library, const std::string& folder,
                                const author::GuideOptions& options) {
    Reading::mustNotBe(library.getName(), "no guide is written");
    author::WrittenGuide written;
    inSection(lock, LoadSection::Changes, library.getName(),
              [&] { written = author::writeGuide(library, folder, options); });
    return written;
}

author::Exported exportBlocks(ScriptLock& lock, const HDNTLibrary& library, const ExportRequest& request) {
    Reading::mustNotBe(library.getName(), "nothing is exported");
    author::exportForm(request.form);
    author::ExportOptions options;
    options.withParents = request.withParents;
    options.isSplit = request.isSplit;
    for (const std::string& name : request.blocks) {
        options.blocks.push_back(library.getTypeBlockByName(name, true));
        if (!options.blocks.back()) throw HEXDataException(library.getName() + ": no block '" + name + "'");
    }
    author::Exported exported;
    inSection(lock, LoadSection::Changes, library.getName(),
              [&] { exported = author::exportBlocks(library, request.form, options); });
    return exported;
}

std::vector<Diagnostic> compareModels(ScriptLock& lock, const HDNTLibrary& library,
                                      const std::vector<std::string>& files, const author::ModelOptions& options) {
    Reading::mustNotBe(library.getName(), "no models are compared");
    std::vector<Diagnostic> findings;
    inSection(lock, LoadSection::Changes, library.getName(), [&] {
        const author::ModelComparison comparison = author::compareModels(library, files, options);
        for (const author::ModelFile& file : comparison.files)
            findings.insert(findings.end(), file.findings.begin(), file.findings.end());
        findings.insert(findings.end(), comparison.missing.begin(), comparison.missing.end());
    });
    return findings;
}

author::Imported importBlocks(ScriptLock& lock, const std::string& form, const std::vector<std::string>& files) {
    author::Imported imported;
    inSection(lock, LoadSection::Quiet, form, [&] { imported = author::importBlocks(form, files); });
    return imported;
}

} // namespace hdnt::scripts
