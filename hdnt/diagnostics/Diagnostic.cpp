#include "hdnt/diagnostics/Diagnostic.h"

#include "hdnt/diagnostics/FilteredText.internal.h"
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/diagnostics/SourceLine.internal.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

namespace hdnt {

using diagnostics::FilteredText;
using diagnostics::LineStore;
using diagnostics::SourceLine;

static constexpr std::size_t longestLine = 4096;

// Everything but what needs the text.
static Place linesOf(const yyltype& location) {
    Place place;
    place.line = location.fileLine;
    place.textLine = location.first_line;
    place.order = location.first_line + std::max(location.storeOffset, 0);
    if (location.fileName) place.file = location.fileName;
    if (const FilteredText* const text = FilteredText::of(location)) {
        place.file = text->file;
        const FilteredText::Run* const run = text->runOf(location.fileLine);
        place.line = run ? run->fileLine + location.fileLine - run->line : 0;
    }
    return place;
}

// `start` is where the line begins in the file.
static void addColumns(Place& place, const yyltype& location, SourceLine& columns, std::string_view line,
                       std::size_t start) {
    if (line.size() <= longestLine) place.text = line;
    if (location.first_column <= 0) return;
    const SourceLine::Position first = columns.at(location.first_column);
    place.column = first.character;
    place.offset = start + first.byte;
    const SourceLine::Position last = columns.at(std::max(location.last_column + 1, location.first_column));
    place.endColumn = last.character;
    place.endOffset = start + last.byte;
}

// Places mostly come in the order of the text, and a whole library may be one line.
struct LastLine {
    std::size_t generation = 0;
    int line = 0;
    LineStore::Line at;
    SourceLine columns{""};
};

static Place placeWhileRead(const yyltype& location) {
    static auto* const last = new LastLine;
    Place place = linesOf(location);
    if (place.order <= 0) return place;
    const LineStore& store = LineStore::instance();
    if (last->line != place.order || last->generation != store.generation()) {
        const LineStore::Line at = store.at(static_cast<std::size_t>(place.order));
        *last = {store.generation(), place.order, at, SourceLine(at.text)};
    }
    std::size_t start = last->at.start;
    if (const FilteredText* const text = FilteredText::of(location))
        if (const FilteredText::Run* const run = text->runOf(location.fileLine)) start += run->fileOffset - run->offset;
    addColumns(place, location, last->columns, last->at.text, start);
    return place;
}

std::string describe(const Place& place) {
    std::string text = place.file.empty() ? "(unknown file)" : place.file;
    if (!place.isKnown()) return text;
    text += ':' + std::to_string(place.line);
    return place.column > 0 ? text + ':' + std::to_string(place.column) : text;
}

std::string textOf(const Diagnostic& diagnostic) {
    return diagnostic.detail.empty() ? diagnostic.message : diagnostic.message + ": " + diagnostic.detail;
}

static Diagnostic diagnosticOf(DiagnosticCode code, std::string message, std::string_view detail) {
    const DiagnosticRule& rule = ruleOf(code);
    return {rule.severity, std::string(rule.name), {}, std::move(message), std::string(detail), {}};
}

Diagnostic diagnosticOf(const HDNTReport& report) {
    Diagnostic result = diagnosticOf(report.code, std::string(report.message), report.detail);
    if (report.location) result.place = placeWhileRead(*report.location);
    if (report.earlier) result.related.push_back({placeWhileRead(*report.earlier), "first declared here"});
    return result;
}

Diagnostic diagnosticOf(const HDNTNotice& notice) {
    const DiagnosticCode code = codeOf(notice.kind);
    Diagnostic result = diagnosticOf(code, filledIn(ruleOf(code).wording, {notice.text}), notice.detail);
    result.place = placeWhileRead(notice.location);
    if (notice.earlier) result.related.push_back({placeWhileRead(*notice.earlier), "first declared here"});
    return result;
}

struct SourcePlaces::File {
    std::string bytes;
    std::vector<std::size_t> starts; ///< of its lines
    int line = 0;                    ///< the one asked for last
    SourceLine columns{""};

    std::string_view text(int wanted) const {
        const std::size_t start = starts[static_cast<std::size_t>(wanted) - 1];
        return std::string_view(bytes).substr(start, std::min(bytes.find('\n', start), bytes.size()) - start);
    }
};

SourcePlaces::SourcePlaces() = default;
SourcePlaces::SourcePlaces(std::map<std::string, std::string> texts) : texts_(std::move(texts)) {}
SourcePlaces::~SourcePlaces() = default;

SourcePlaces::File& SourcePlaces::fileAt(const std::string& path) {
    if (const auto known = files_.find(path); known != files_.end()) return *known->second;
    auto file = std::make_unique<File>();
    std::string reason;
    std::error_code error;
    std::optional<diagnostics::TextsInPlace> inPlace;
    if (!texts_.empty()) inPlace.emplace(texts_);
    if (!diagnostics::readSource(path, file->bytes, reason) && std::filesystem::is_regular_file(path, error))
        throw HEXDataException(path + ": cannot be read: " + reason);
    const std::string& bytes = file->bytes;
    for (std::size_t start = 0; start < bytes.size(); start = std::min(bytes.find('\n', start), bytes.size()) + 1)
        file->starts.push_back(start);
    return *files_.emplace(path, std::move(file)).first->second;
}

Place SourcePlaces::placeOf(const yyltype& location) {
    Place place = linesOf(location);
    if (place.file.empty() || place.line <= 0) return place;
    File& file = fileAt(place.file);
    if (static_cast<std::size_t>(place.line) > file.starts.size()) return place;
    const std::string_view line = file.text(place.line);
    if (file.line != place.line) file.columns = SourceLine(line);
    file.line = place.line;
    addColumns(place, location, file.columns, line, file.starts[static_cast<std::size_t>(place.line) - 1]);
    return place;
}

} // namespace hdnt
