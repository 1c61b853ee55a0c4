#include "author/format/HDNTFormatter.h"

#include "author/format/ItemRecord.internal.h"
#include "author/format/Layout.internal.h"
#include "hdnt/frontend/SourceReader.h"

#include <utility>

namespace hdnt::author {

using frontend::SourceReader;

namespace {

/// The lines of the new text.
class Text : public LineSink {
public:
    explicit Text(std::size_t size) { text_.reserve(size); }
    void take(std::string_view lines) override { text_ += lines; }
    std::string get() { return std::move(text_); }

private:
    std::string text_;
};

/// Lines that should be those of a text.
class Comparison : public LineSink {
public:
    explicit Comparison(std::string_view text) : rest_(text) {}
    void take(std::string_view lines) override {
        isSame_ = isSame_ && rest_.starts_with(lines);
        if (isSame_) rest_.remove_prefix(lines.size());
    }
    bool isSame() const { return isSame_ && rest_.empty(); }

private:
    std::string_view rest_;
    bool isSame_ = true;
};

// To be asked where the record does not say it all: some comments stand otherwise in their lines than they did.
bool isFixedPoint(std::string& text) {
    SourceReader reader(std::move(text));
    ItemRecord record(reader.text());
    Comparison lines(reader.text());
    Layout(reader, record, lines).run();
    text = reader.takeText();
    return lines.isSame();
}

// Proves that the new text is what the old one was, laid out, and that it is laid out so again. A problem here is a
// fault of this library.
bool isProven(const ItemRecord& record, std::string_view oldText, std::string& text, HDNTFormatProblem& problem) {
    SourceReader reader(std::move(text));
    std::size_t difference = 0;
    const ItemRecord::Likeness likeness = record.likeness(reader, difference);
    if (likeness == ItemRecord::Likeness::None) {
        problem = frontend::problemAt(oldText, difference, "formatting would change what is here; please report it");
        return false;
    }
    text = reader.takeText();
    if (likeness == ItemRecord::Likeness::All || isFixedPoint(text)) return true;
    problem = frontend::problemAt(oldText, 0, "formatting twice would give another text; please report it");
    return false;
}

// Tells how many refusals there are in all.
bool isRefused(SourceReader& reader, HDNTFormatProblem& problem) {
    for (std::vector<frontend::SourceItem> items; reader.more(items); items.clear()) continue;
    problem = reader.problem();
    return problem.count > 0;
}

} // namespace

} // namespace hdnt::author

bool HDNTFormatter::format(const std::string& text, std::string& out, HDNTFormatProblem& problem) {
    using namespace hdnt::author;
    SourceReader reader(text);
    ItemRecord record(reader.text());
    Text lines(text.size() + text.size() / 4);
    Layout(reader, record, lines).run();
    std::string result = lines.get();
    const bool good = !isRefused(reader, problem) && isProven(record, reader.text(), result, problem);
    out = good ? std::move(result) : std::string();
    return good;
}
