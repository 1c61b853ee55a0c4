#include "author/judge/judge.h"
#include "author/lint/Waivers.h"
#include "author/lint/lint.h"
#include "author/server/Session.internal.h"
#include "author/server/judgeFolder.internal.h"
#include "author/syntax/SyntaxCode.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <utility>

namespace hdnt::author::server {

namespace {

namespace fs = std::filesystem;
using Diagnostics = std::vector<Diagnostic>;

void append(Diagnostics& list, const Diagnostics& more) { list.insert(list.end(), more.begin(), more.end()); }

/// Puts findings the way they are sent.
class FindingWriter {
public:
    FindingWriter(const LibraryTask& task, FoundInLibrary& out) : task_(task), out_(out) {}

    void write(const Diagnostic& one) {
        FoundInFile& in = out_.found[pathOf(one.place)];
        if (in.list.size() == mostDiagnostics) ++in.more;
        else in.list.push_back(foundOf(one));
    }

private:
    std::string pathOf(const Place& place) const {
        return place.file.empty() ? task_.document : fs::absolute(place.file).lexically_normal().string();
    }

    // A tab is one character, and so is a byte that is no UTF-8.
    std::size_t unitsBefore(int column, std::string_view line) const {
        const auto wanted = static_cast<std::size_t>(std::max(column, 1)) - 1;
        if (line.empty()) return wanted; // not known, or too long to be told
        std::size_t units = 0;
        std::size_t at = 0;
        for (std::size_t character = 0; character < wanted && at < line.size(); ++character) {
            const std::size_t begin = at++;
            while (at < line.size() && platform::continuesCharacter(line[at])) ++at;
            if (task_.encoding == Encoding::utf8) units += at - begin;
            else units += static_cast<unsigned char>(line[begin]) >= 0xf0 ? 2 : 1;
        }
        return units;
    }

    Json positionOf(const Place& place, int column) const {
        return server::jsonOf({static_cast<std::size_t>(std::max(place.line, 1)) - 1, unitsBefore(column, place.text)});
    }

    Spot spotOf(const Place& place) const {
        Spot spot;
        const int endColumn = std::max(place.column, place.endColumn);
        spot.range = {{"start", positionOf(place, place.column)}, {"end", positionOf(place, endColumn)}};
        if (place.offset == Place::unknown) return spot;
        const std::size_t end = place.endOffset == Place::unknown ? place.offset : place.endOffset;
        spot.bytes = Stretch{place.offset, std::max(place.offset, end)};
        return spot;
    }

    static Json tagsOf(const std::string& code) {
        constexpr int unnecessary = 1, deprecated = 2;
        const auto isA = [&](LintCode rule) { return code == lintRules()[static_cast<std::size_t>(rule)].name; };
        if (isA(LintCode::unusedInput) || isA(LintCode::propertyWithoutEffect)) return {unnecessary};
        if (isA(LintCode::deprecatedBlock)) return {deprecated};
        return Json::array();
    }

    static Found::Said howSaid(const std::string& code) {
        using Code = DiagnosticCode;
        constexpr Code byReader[] = {Code::syntaxError,        Code::parserDepth,         Code::unrecognizedCharacter,
                                     Code::longIdentifier,     Code::stringUnterminated,  Code::commentUnterminated,
                                     Code::unterminatedString, Code::unterminatedComment, Code::includeText};
        const auto& trees = syntaxRules();
        if (std::ranges::any_of(trees, [&](const DiagnosticRule& rule) { return rule.name == code; }))
            return Found::Said::byTree;
        const bool isOfText = std::ranges::any_of(byReader, [&](Code one) { return ruleOf(one).name == code; });
        return isOfText ? Found::Said::byReader : Found::Said::byRules;
    }

    Found foundOf(const Diagnostic& one) const {
        Found found{spotOf(one.place), {}, {}, isThoroughRule(one.code), howSaid(one.code)};
        found.said = {{"severity", static_cast<int>(one.severity) + 1}, {"source", "ntl"}, {"message", textOf(one)}};
        if (!one.code.empty()) found.said["code"] = one.code;
        if (Json tags = tagsOf(one.code); !tags.empty()) found.said["tags"] = std::move(tags);
        for (const RelatedPlace& related : one.related)
            found.related.push_back({pathOf(related.place), spotOf(related.place), related.message});
        return found;
    }

    const LibraryTask& task_;
    FoundInLibrary& out_;
};

/// What `ntl lint` does with one input.
class FolderJudge {
public:
    FolderJudge(LibraryTask task, const std::function<void(const FoundInLibrary&)>& send)
        : loader_(std::move(task)), send_(send) {}

    void run() {
        try {
            judge();
        } catch (const HEXAll& error) {
            loader_.note({loader_.task().document});
            send(true, {placed(error.what())});
        }
    }

private:
    void judge() {
        if (loader_.path().empty()) return send(true, {}); // gone
        if (Diagnostics faults = loader_.prepare(); !faults.empty()) return send(true, std::move(faults));
        options_.texts = loader_.task().texts;
        if (const std::optional<Project>& project = loader_.project()) {
            if (project->budget) options_.budget = *project->budget;
            options_.architectures = project->architectures;
        }
        const Loaded loaded = loader_.load(true);
        for (const bool isThorough : {false, true}) {
            options_.isThorough = isThorough;
            send(isThorough, loaded ? judged(loaded) : judgedAsFaulty(loaded));
        }
    }

    Diagnostics judged(const Loaded& loaded) const {
        return settled(judgeLoaded(*loaded.library, loaded.diagnostics, loaded.files, options_, ConfigScope::OwnCells));
    }

    Diagnostics judgedAsFaulty(const Loaded& loaded) {
        Judgement judgement;
        for (const Diagnostic& one : loaded.diagnostics)
            (one.severity == Severity::error ? judgement.errors : judgement.warnings).push_back(one);
        judgement.files = loaded.files;
        const auto& texts = options_.texts;
        judgeSyntax({loader_.path(), loader_.parent(), texts, loaded.files, ConfigScope::OwnCells, options_},
                    judgement);
        loader_.note(judgement.files);
        applyWaivers(judgement.warnings, judgement.files, {today(), Judged::Nothing, texts});
        Diagnostics all;
        for (std::size_t i = 0; i < judgement.errors.size(); ++i)
            if (!std::ranges::binary_search(judgement.saidBetter, i)) all.push_back(judgement.errors[i]);
        append(judgement.faults, judgement.warnings);
        append(all, settled(std::move(judgement.faults)));
        return all;
    }

    // Which findings are said, and as what, is the author's choice.
    Diagnostics settled(Diagnostics findings) const {
        if (!loader_.project()) return findings;
        applyExceptions(*loader_.project(), {}, findings);
        loader_.project()->rules.apply(findings);
        return findings;
    }

    // Of many, the worst are shown.
    void send(bool isThorough, Diagnostics findings) const {
        std::ranges::stable_sort(findings, {}, &Diagnostic::severity);
        FoundInLibrary found;
        found.isThorough = isThorough;
        for (const std::string& file : loader_.files())
            found.files.insert(fs::absolute(file).lexically_normal().string());
        FindingWriter writer(loader_.task(), found);
        for (const Diagnostic& one : findings) writer.write(one);
        send_(found);
    }

    FolderLoader loader_;
    const std::function<void(const FoundInLibrary&)>& send_;
    LintOptions options_;
};

} // namespace

void judgeFolder(LibraryTask task, const std::function<void(const FoundInLibrary&)>& send) {
    FolderJudge(std::move(task), send).run();
}

} // namespace hdnt::author::server
