#include "author/lint/Baseline.h"

#include "author/lint/lint.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/InputFile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <set>
#include <sstream>

namespace hdnt::author {

namespace fs = std::filesystem;

static constexpr std::string_view head = "# ntl baseline 1: code, file, element, count";

static std::string inOneCell(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
    return text;
}

Baseline::Baseline(std::string path) : path_(std::move(path)) {}

std::string Baseline::nameOf(const std::string& file) const {
    if (file.empty()) return file;
    const fs::path folder = fs::absolute(path_).lexically_normal().parent_path();
    return inOneCell(fs::absolute(file).lexically_normal().lexically_relative(folder).string());
}

Baseline::Key Baseline::keyOf(const Diagnostic& finding) const {
    return {nameOf(finding.place.file), inOneCell(finding.element), finding.code};
}

void Baseline::read() {
    std::string text;
    std::string why;
    if (!platform::readInput(path_, {}, text, why)) throw HEXDataException(path_ + ": cannot be read: " + why);
    std::istringstream lines(text);
    lines.exceptions(std::ios::badbit); // std::bad_alloc, which would else be taken for the end
    int number = 1;
    for (std::string line; std::getline(lines, line); ++number) {
        const auto fail = [&](const std::string& reason) {
            throw HEXDataException(path_ + ":" + std::to_string(number) + ": " + reason);
        };
        if (number == 1 && line != head) fail("no baseline; --write-baseline writes one");
        if (number == 1 || line.empty()) continue;
        std::istringstream cells(line);
        cells.exceptions(std::ios::badbit);
        std::array<std::string, 4> cell;
        for (std::string& one : cell) std::getline(cells, one, '\t');
        std::size_t count = 0;
        const char* const end = cell[3].data() + cell[3].size();
        const bool isNumber = std::from_chars(cell[3].data(), end, count).ptr == end && count > 0;
        if (!isNumber) fail("not code, file, element and count with tabs between");
        entries_[{cell[1], cell[2], cell[0]}].count += count;
    }
    if (number == 1) throw HEXDataException(path_ + ":1: no baseline; --write-baseline writes one");
}

std::string Baseline::text() const {
    std::ostringstream out;
    out << head << '\n';
    for (const auto& [key, entry] : entries_) {
        const auto& [file, element, code] = key;
        out << code << '\t' << file << '\t' << element << '\t' << entry.count << '\n';
    }
    return std::move(out).str();
}

void Baseline::add(const std::vector<Diagnostic>& findings) {
    std::map<Key, std::size_t> counts;
    for (const Diagnostic& one : findings) ++counts[keyOf(one)];
    for (const auto& [key, count] : counts) entries_[key].count = std::max(entries_[key].count, count);
}

void Baseline::hide(std::vector<Diagnostic>& findings) {
    std::map<Key, std::size_t> counts;
    std::erase_if(findings, [&](const Diagnostic& one) {
        const auto known = entries_.find(keyOf(one));
        return known != entries_.end() && ++counts[known->first] <= known->second.count;
    });
    for (const auto& [key, count] : counts) {
        Entry& entry = entries_[key];
        entry.hidden = std::max(entry.hidden, std::min(count, entry.count));
    }
}

std::size_t Baseline::missing(const std::vector<std::string>& files, bool isThorough) const {
    std::set<std::string> names;
    for (const std::string& file : files) names.insert(nameOf(file));
    return static_cast<std::size_t>(std::ranges::count_if(entries_, [&](const auto& one) {
        const auto& [file, element, code] = one.first;
        return one.second.hidden < one.second.count && names.contains(file) && (isThorough || !isThoroughRule(code));
    }));
}

} // namespace hdnt::author
