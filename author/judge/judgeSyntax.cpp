#include "author/judge/judge.h"
#include "author/syntax/SoundTexts.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/loading/load.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/InputFile.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace hdnt::author {

namespace {

bool isSyntactic(const Diagnostic& one) {
    constexpr DiagnosticCode codes[] = {DiagnosticCode::syntaxError,           DiagnosticCode::parserDepth,
                                        DiagnosticCode::unrecognizedCharacter, DiagnosticCode::longIdentifier,
                                        DiagnosticCode::stringUnterminated,    DiagnosticCode::commentUnterminated};
    return std::any_of(std::begin(codes), std::end(codes),
                       [&](DiagnosticCode code) { return one.code == ruleOf(code).name; });
}

// Of a file whose path may be written in several ways.
std::string plainPath(const std::string& path) {
    std::error_code error;
    return std::filesystem::absolute(path, error).lexically_normal().string();
}

/// What was said already, to be told from what is new.
class Said {
public:
    explicit Said(const std::vector<Diagnostic>& list) : list_(list), size_(list.size()) {}
    // Mostly little is asked, and the list may be long. What came to it since does not count.
    bool contains(const Diagnostic& one) {
        for (; read_ < size_; ++read_) keys_.insert(keyOf(list_[read_]));
        return keys_.contains(keyOf(one));
    }

private:
    using Key = std::tuple<std::string, int, int, std::string, std::string>;
    static Key keyOf(const Diagnostic& one) {
        return {one.place.file, one.place.line, one.place.column, one.code, one.message};
    }
    const std::vector<Diagnostic>& list_;
    std::size_t size_;
    std::size_t read_ = 0;
    std::set<Key> keys_;
};

/// A file of a library and those that it brings in, which one parse reads.
struct Unit {
    std::set<std::string> files;
    bool isFaulty = false; ///< the parse reported faults of syntax
    bool isSaid = false;   ///< and the trees have errors, too
};

class SyntaxJudge {
public:
    SyntaxJudge(const FailedLoad& failed, Judgement& result) : failed_(failed), result_(result) {
        std::error_code error;
        isFolder_ = std::filesystem::is_directory(failed.path, error);
    }

    bool run() {
        if (!isOfSyntax()) return false;
        if (const Loaded rest = loadRest()) judgeLibrary(rest);
        for (auto* const list : {&result_.faults, &result_.warnings})
            std::stable_sort(list->begin(), list->end(),
                             [&](const Diagnostic& a, const Diagnostic& b) { return placeOf(a) < placeOf(b); });
        return true;
    }

    /// Without what is faulty; what else is found out about it goes into the judgement.
    Loaded loadRest() {
        if (!isOfSyntax()) return {};
        take(result_.errors, failed_.files);
        for (std::size_t i = 0; i < result_.errors.size(); ++i)
            if (isSaid(result_.errors[i])) result_.saidBetter.push_back(i);
        return loadSound();
    }

private:
    bool isOfSyntax() const { return std::any_of(result_.errors.begin(), result_.errors.end(), isSyntactic); }

    bool begins(const std::string& file) const {
        return isFolder_ ? file.ends_with(".btl") && std::filesystem::path(file).parent_path() == folder()
                         : file == failed_.path;
    }
    std::filesystem::path folder() const { return std::filesystem::path(failed_.path + "/").parent_path(); }

    std::tuple<std::size_t, int, int> placeOf(const Diagnostic& one) const {
        const auto known = order_.find(one.place.file);
        return {known == order_.end() ? order_.size() : known->second, one.place.line, one.place.column};
    }

    const Unit* unitOf(const std::string& file) const {
        for (const Unit& unit : units_)
            if (unit.files.contains(file)) return &unit;
        return nullptr;
    }
    bool isSaid(const Diagnostic& report) const {
        const Unit* const unit = isSyntactic(report) ? unitOf(report.place.file) : nullptr;
        return unit && unit->isSaid;
    }

    // Reads the trees of what a load read and refused. True when more is left out now.
    bool take(const std::vector<Diagnostic>& said, const std::vector<std::string>& files) {
        divide(said, files);
        bool more = false;
        for (Unit& unit : units_) {
            if (!unit.isFaulty) continue;
            for (const std::string& file : unit.files) more |= add(file, unit);
        }
        for (const Diagnostic& one : said) {
            if (!isSyntactic(one) || isSaid(one)) continue;
            more |= sound_.leaveOut(one.place.file, one.place.offset);
        }
        return more;
    }

    void divide(const std::vector<Diagnostic>& said, const std::vector<std::string>& files) {
        units_.clear();
        for (const std::string& file : files) {
            if (units_.empty() || begins(file)) units_.emplace_back();
            units_.back().files.insert(file);
            order_.emplace(file, order_.size());
        }
        for (Unit& unit : units_)
            unit.isFaulty = std::any_of(said.begin(), said.end(), [&](const Diagnostic& one) {
                return isSyntactic(one) && (one.place.file.empty() || unit.files.contains(one.place.file));
            });
    }

    std::optional<std::string> textOf(const std::string& file) const {
        const std::string plain = plainPath(file);
        for (const auto& [path, text] : failed_.texts)
            if (plainPath(path) == plain) return text;
        const HDNTLimits& limits = HDNTLimits::get();
        std::string text;
        std::string reason;
        const bool read =
            platform::readInput(file, {limits.inputBytes, limits.expansionRatio, limits.expansionFloor}, text, reason);
        return read ? std::optional(std::move(text)) : std::nullopt;
    }

    // True when the file is new, and faulty.
    bool add(const std::string& file, Unit& unit) {
        const bool isNew = !sound_.has(file);
        std::optional<std::string> text = isNew ? textOf(file) : std::nullopt;
        if (isNew && (!text || !sound_.add(file, std::move(*text), !begins(file)))) return false;
        bool faulty = false;
        for (Diagnostic& one : sound_.diagnostics(file)) {
            const bool isError = one.severity == Severity::error;
            faulty |= isError;
            if (!isNew) continue;
            if (isError) result_.faults.push_back(placed(std::move(one)));
            else if (!hasWarningAt(one.place)) result_.warnings.push_back(placed(std::move(one)));
        }
        unit.isSaid |= faulty;
        return isNew && faulty;
    }

    // Which line of all that one parse reads it is, only the parse of the whole text knows.
    Diagnostic placed(Diagnostic one) const {
        const Unit* const unit = unitOf(one.place.file);
        if (unit && unit->files.size() > 1) one.place.textLine = 0;
        return one;
    }

    bool hasWarningAt(const Place& place) {
        for (; seen_ < result_.warnings.size(); ++seen_) {
            const Place& at = result_.warnings[seen_].place;
            warned_.emplace(at.file, at.line);
        }
        return warned_.contains({place.file, place.line});
    }

    // Loads without what is faulty, and leaves out more until there is a library. An error that only says that
    // something was left out is none; nor are those of later rounds, which leave out what has other errors.
    Loaded loadSound() {
        bool isJudged = false;
        for (bool more = true; more;) {
            std::optional<std::map<std::string, std::string>> texts = sound_.texts();
            if (!texts || texts->empty()) return {};
            if (!isJudged) dropConsequences();
            LoadOptions options;
            options.parent = failed_.parent;
            options.check = failed_.isChecked;
            for (auto& [path, text] : *texts) options.texts.emplace(plainPath(path), std::move(text));
            for (const auto& [path, text] : failed_.texts) options.texts.emplace(plainPath(path), text);
            Loaded loaded = load(failed_.path, options);
            noteFiles(loaded.files);
            if (loaded) return loaded;
            more = take(loaded.diagnostics, loaded.files);
            if (std::any_of(loaded.diagnostics.begin(), loaded.diagnostics.end(), isSyntactic)) continue;
            if (!std::exchange(isJudged, true)) {
                addErrors(loaded.diagnostics);
                addWarnings(loaded.diagnostics);
            }
            for (const Diagnostic& one : loaded.diagnostics)
                if (one.severity == Severity::error) more |= sound_.leaveOut(one.place.file, one.place.offset);
        }
        return {};
    }

    // Mappings that only lack a block of the faulty text.
    void dropConsequences() {
        const std::string_view dropped = ruleOf(DiagnosticCode::droppedMapping).name;
        std::erase_if(result_.warnings, [&](const Diagnostic& one) {
            return one.code == dropped && sound_.speaksOfLeftOut(one.message);
        });
        warned_.clear();
        seen_ = 0;
    }

    void noteFiles(const std::vector<std::string>& files) {
        for (const std::string& file : files)
            if (std::find(result_.files.begin(), result_.files.end(), file) == result_.files.end())
                result_.files.push_back(file);
    }

    void addErrors(const std::vector<Diagnostic>& said) {
        Said before(result_.errors);
        for (const Diagnostic& one : said)
            if (one.severity == Severity::error && !before.contains(one) && !sound_.speaksOfLeftOut(one.message))
                result_.faults.push_back(placed(one));
    }

    void judgeLibrary(const Loaded& loaded) {
        std::vector<Diagnostic> findings = lint(*loaded.library, failed_.options);
        findings.insert(findings.end(), loaded.diagnostics.begin(), loaded.diagnostics.end());
        sortByPlace(findings);
        // The whole configuration speaks of what is left out, too.
        const bool isWhole = failed_.configuration == ConfigScope::Whole;
        const std::vector<Diagnostic> more =
            lintConfiguration(*loaded.library, isWhole ? ConfigScope::OwnCells : failed_.configuration);
        findings.insert(findings.end(), more.begin(), more.end());
        addErrors(findings);
        addWarnings(findings);
    }

    void addWarnings(const std::vector<Diagnostic>& said) {
        Said before(result_.warnings);
        for (const Diagnostic& one : said)
            if (one.severity != Severity::error && !before.contains(one) && !sound_.speaksOfLeftOut(one.message))
                result_.warnings.push_back(placed(one));
    }

    const FailedLoad& failed_;
    Judgement& result_;
    bool isFolder_ = false;
    SoundTexts sound_;
    std::vector<Unit> units_; ///< of the last load
    std::map<std::string, std::size_t> order_;
    std::set<std::pair<std::string, int>> warned_; ///< lines of the first so many warnings
    std::size_t seen_ = 0;
};

} // namespace

bool judgeSyntax(const FailedLoad& failed, Judgement& judgement) { return SyntaxJudge(failed, judgement).run(); }

Loaded loadSound(const FailedLoad& failed, std::vector<Diagnostic> said) {
    Judgement judgement;
    judgement.errors = std::move(said);
    return SyntaxJudge(failed, judgement).loadRest();
}

} // namespace hdnt::author
