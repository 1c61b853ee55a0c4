#include "hdnt/platform/HEX.h"
#include "hdnt/platform/InputFile.h"
#include "hdnt/platform/Text.h"
#include "hdnt/registry/CellviewTable.internal.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <deque>
#include <map>
#include <sstream>
#include <vector>

namespace hdnt::registry {

namespace {

constexpr size_t slots = HDNTCellviewLib::UNKNOWN + 1;

/// The rows of one file, held against the names that are there.
class CellTable {
public:
    explicit CellTable(const std::string& path) : path_(path) {
        for (size_t value = 0; value < slots; ++value) {
            if (!HDNTCellviewLib::s_typeToName[value]) continue;
            names_[value] = HDNTCellviewLib::s_typeToName[value];
            values_[names_[value]] = value;
        }
    }

    void read() {
        std::string text;
        std::string why;
        if (!platform::readInput(path_, {}, text, why)) throw HEXDataException(path_ + ": cannot be opened: " + why);
        std::istringstream lines(std::move(text));
        lines.exceptions(std::ios::badbit); // std::bad_alloc, which would else be taken for the end
        for (std::string line; std::getline(lines, line);) {
            ++line_;
            addRow(line);
        }
    }

    /// The names live as long as the process.
    void publish() const {
        static auto* const names = new std::deque<std::string>;
        for (const size_t value : added_)
            HDNTCellviewLib::s_typeToName[value] = names->emplace_back(names_[value]).c_str();
    }

private:
    [[noreturn]] void refuse(const std::string& reason) const {
        throw HEXDataException(path_ + ":" + std::to_string(line_) + ": " + reason);
    }

    // Leading zeros are no value, so that a table has one form.
    static bool isValue(const std::string& text, size_t& value) {
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        return error == std::errc() && stop == end && (text.size() == 1 || text[0] != '0');
    }

    static bool isName(const std::string& text) {
        const auto fits = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; };
        return !text.empty() && std::all_of(text.begin(), text.end(), fits);
    }

    void addRow(const std::string& line) {
        const size_t comma = std::min(line.find(','), line.size());
        const std::string name = line.substr(std::min(comma + 1, line.size()));
        size_t value = 0;
        if (!isValue(line.substr(0, comma), value) || !isName(name))
            refuse("expected 'value,NAME', found '" + platform::clipped(line, 60) + "'");
        if (name.size() < 4 || name.size() > 35) refuse("name '" + name + "' has not 4 to 35 characters");
        if ((value == HDNTCellviewLib::UNKNOWN) != (name == "UNKNOWN") || value >= slots)
            refuse("value " + std::to_string(value) + " is not within 0 and 3999 (4000 is UNKNOWN)");
        if (names_[value] == name) return;
        if (!names_[value].empty())
            refuse("value " + std::to_string(value) + " of " + name + " is that of " + names_[value] + " already");
        const auto [known, isNew] = values_.emplace(name, value);
        if (!isNew)
            refuse("cell " + name + " has the value " + std::to_string(known->second) + " already, not " +
                   std::to_string(value));
        names_[value] = name;
        added_.push_back(value);
    }

    const std::string& path_;
    size_t line_ = 0;
    std::array<std::string, slots> names_;
    std::map<std::string, size_t> values_;
    std::vector<size_t> added_;
};

} // namespace

void addCells(const std::string& path) {
    CellTable table(path);
    table.read();
    table.publish();
}

} // namespace hdnt::registry
