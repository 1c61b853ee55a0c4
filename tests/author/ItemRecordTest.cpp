#include "author/format/ItemRecord.internal.h"
#include "hdnt/frontend/SourceReader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

// The proof that a text which was laid out is still the same one.
namespace {

using hdnt::author::ItemRecord;
using hdnt::author::SourceItem;
using hdnt::frontend::SourceReader;
using Likeness = ItemRecord::Likeness;

// How a text is like another, and where the first differs.
std::pair<Likeness, std::size_t> likeness(const std::string& oldText, const std::string& text) {
    SourceReader oldReader(oldText);
    ItemRecord record(oldReader.text());
    std::vector<SourceItem> items;
    while (oldReader.more(items)) continue;
    bool mayFollow = false;
    for (const SourceItem& item : items) {
        const std::size_t number = record.next();
        record.add(item, ItemRecord::flagsOf(item, item.isComment() && item.newlines == 0 && mayFollow));
        if (item.newlines > 1) record.setBelowBlank(number);
        mayFollow = !item.forcesNewline();
    }
    SourceReader reader(text);
    std::size_t difference = 0;
    const Likeness found = record.likeness(reader, difference);
    return {found, found == Likeness::None ? difference : 0};
}

TEST(ItemRecord, TellsHowTextsAreAlike) {
    const std::string large(300, 'x');
    const std::string lines = "/* a\n   b */ ";
    const struct {
        std::string oldText, text;
        Likeness expected;
        std::size_t difference = 0;
    } cases[] = {
        {"pin \"A\" /* c */ input;", "pin\n\"A\"  /* c */ input ;\n", Likeness::All},
        {"pin \"A\" /* c */ input;", "pin \"A\" /* c */\n input;", Likeness::Items},
        {"pin \"A\" /* c */\ninput;", "pin \"A\"\n/* c */\ninput;", Likeness::Items},
        {"pin \"A\" input;\npin", "pin \"A\" input;\n\npin", Likeness::Items},
        {"pin \"A\";\n\n// c\npin", "pin \"A\";\n// c\npin", Likeness::Items},
        {lines + "pin", "/* a\n\tb */\npin", Likeness::All},
        {lines + "pin", "/* a\n   c */ pin", Likeness::None, 0},
        {lines + "/* c */ pin", lines + "/* d */ pin", Likeness::None, lines.size()},
        {"pin \"A\" input;", "pin \"B\" input;", Likeness::None, 4},
        {"pin \"A\"", "pin \"A\" input", Likeness::None, 7},
        {"pin \"A\" input", "pin \"A\"", Likeness::None, 7},
        {"pin \"" + large + "\" input", "pin \"" + large + "\"\ninput", Likeness::All},
        {"pin \"" + large + "y\"", "pin \"" + large + "z\"", Likeness::None, 4},
    };
    for (const auto& each : cases)
        EXPECT_EQ(likeness(each.oldText, each.text), std::pair(each.expected, each.difference)) << each.text;
}

} // namespace
