#include "author/judge/judge.h"
#include "author/lint/Waivers.h"
#include "author/lint/lint.h"
#include "author/project/Project.h"
#include "author/project/parents.h"
#include "author/server/Session.internal.h"
#include "author/server/judgeFolder.internal.h"
#include "author/syntax/SyntaxCode.h"
#include "hdnt/loading/load.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
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
    FindingWriter(const JudgeTask& task, FoundInLibrary& out) : task_(task), out_(out) {}

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

    const JudgeTask& task_;
    FoundInLibrary& out_;
};

/// What `ntl lint` does with one input.
class FolderJudge {
public:
    FolderJudge(JudgeTask task, const std::function<void(const FoundInLibrary&)>& send)
        : task_(std::move(task)), send_(send) {}

    void run() {
        try {
            judge();
        } catch (const HEXAll& error) {
            files_.push_back(task_.document);
            send(true, {placed(error.what())});
        }
    }

private:
    void judge() {
        const bool isOpen = task_.texts.contains(task_.document);
        if (task_.library.path.empty() || (task_.library.files.empty() && !isOpen)) return send(true, {}); // gone
        // A text that was never saved is in no folder yet.
        const std::string& path = task_.library.files.empty() ? task_.document : task_.library.path;
        if (!enterProject(path) || !loadParents()) return;
        Loaded loaded = load(path);
        note(loaded.files);
        for (const bool isThorough : {false, true}) {
            options_.isThorough = isThorough;
            send(isThorough, loaded ? judged(loaded) : judgedAsFaulty(path, loaded));
        }
    }

    bool enterProject(const std::string& path) {
        const std::string file = findProject(path);
        if (!file.empty()) {
            note({file});
            try {
                project_ = readProject(file);
                author::enterProject(*project_);
            } catch (const HEXDataException& error) {
                return send(true, {placed(error.what(), file)}), false;
            }
        }
        options_.texts = task_.texts;
        if (project_ && project_->budget) options_.budget = *project_->budget;
        if (project_) options_.architectures = project_->architectures;
        return true;
    }

    Loaded load(const std::string& path) const {
        LoadOptions options;
        options.parent = parents_.empty() ? nullptr : parents_.back().get();
        options.texts = task_.texts;
        return hdnt::load(path, options);
    }

    bool loadParents() {
        for (const std::string& path : project_ ? parentPaths(*project_) : std::vector<std::string>()) {
            Loaded loaded = load(path);
            note(loaded.files);
            if (!loaded) {
                loaded.diagnostics.push_back(
                    placed("not judged, since the parent library " + path + " has errors", task_.document));
                return send(true, std::move(loaded.diagnostics)), false;
            }
            parents_.push_back(std::move(loaded.library));
        }
        return true;
    }

    Diagnostics judged(const Loaded& loaded) const {
        return settled(judgeLoaded(*loaded.library, loaded.diagnostics, loaded.files, options_, ConfigScope::OwnCells));
    }

    Diagnostics judgedAsFaulty(const std::string& path, const Loaded& loaded) {
        Judgement judgement;
        for (const Diagnostic& one : loaded.diagnostics)
            (one.severity == Severity::error ? judgement.errors : judgement.warnings).push_back(one);
        judgement.files = loaded.files;
        HDNTLibrary* const parent = parents_.empty() ? nullptr : parents_.back().get();
        judgeSyntax({path, parent, task_.texts, loaded.files, ConfigScope::OwnCells, options_}, judgement);
        note(judgement.files);
        applyWaivers(judgement.warnings, judgement.files, {today(), Judged::Nothing, task_.texts});
        Diagnostics all;
        for (std::size_t i = 0; i < judgement.errors.size(); ++i)
            if (!std::ranges::binary_search(judgement.saidBetter, i)) all.push_back(judgement.errors[i]);
        append(judgement.faults, judgement.warnings);
        append(all, settled(std::move(judgement.faults)));
        return all;
    }

    // Which findings are said, and as what, is the author's choice.
    Diagnostics settled(Diagnostics findings) const {
        if (!project_) return findings;
        applyExceptions(*project_, {}, findings);
        project_->rules.apply(findings);
        return findings;
    }

    void note(const std::vector<std::string>& files) { files_.insert(files_.end(), files.begin(), files.end()); }

    // "file:line: what is wrong", when the message says so.
    static Diagnostic placed(std::string message, const std::string& file = {}) {
        Diagnostic said;
        said.place.file = file;
        const std::string head = file + ":";
        const std::size_t behind = message.find(": ", head.size());
        if (!file.empty() && message.starts_with(head) && behind != message.npos) {
            said.place.line = std::max(std::atoi(message.c_str() + head.size()), 0);
            message.erase(0, behind + 2);
        }
        said.message = std::move(message);
        return said;
    }

    // Of many, the worst are shown.
    void send(bool isThorough, Diagnostics findings) const {
        std::ranges::stable_sort(findings, {}, &Diagnostic::severity);
        FoundInLibrary found;
        found.isThorough = isThorough;
        for (const std::string& file : files_) found.files.insert(fs::absolute(file).lexically_normal().string());
        FindingWriter writer(task_, found);
        for (const Diagnostic& one : findings) writer.write(one);
        send_(found);
    }

    JudgeTask task_;
    const std::function<void(const FoundInLibrary&)>& send_;
    std::optional<Project> project_;
    LintOptions options_;
    std::vector<std::unique_ptr<HDNTLibrary>> parents_; ///< the root first
    std::vector<std::string> files_;
};

} // namespace

void judgeFolder(JudgeTask task, const std::function<void(const FoundInLibrary&)>& send) {
    FolderJudge(std::move(task), send).run();
}

} // namespace hdnt::author::server
