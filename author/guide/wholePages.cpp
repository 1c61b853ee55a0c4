// What the pages show that are about all blocks.
#include "author/exchange/ChangeWords.h"
#include "author/exchange/fileNames.internal.h"
#include "author/guide/Svg.internal.h"
#include "author/guide/Symbol.internal.h"
#include "author/guide/pages.internal.h"
#include "author/lint/lint.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <set>

namespace hdnt::author::guide {

namespace {

Json pageWith(const std::string& heading) { return {{"heading", heading}, {"root", ""}}; }

// Blocks by group, and in that by what stands behind the colon.
Json groupsOf(const Json& rows) {
    std::map<std::string, std::map<std::string, Json>> byGroup;
    for (const Json& row : rows) {
        const auto text = row["group"].get<std::string>();
        const std::size_t colon = std::min(text.find(':'), text.size());
        const std::string group = text.empty() ? "without a group" : text.substr(0, colon);
        Json& list = byGroup[group][colon < text.size() ? text.substr(colon + 1) : ""];
        list.push_back({{"name", row["name"]}, {"href", row["href"]}});
    }
    Json groups = Json::array();
    for (auto& [name, byPart] : byGroup) {
        std::size_t count = 0;
        Json parts = Json::array();
        for (auto& [part, list] : byPart) {
            count += list.size();
            parts.push_back({{"name", part}, {"blocks", std::move(list)}});
        }
        groups.push_back(
            {{"name", name}, {"anchor", anchorOf("group", name)}, {"count", count}, {"parts", std::move(parts)}});
    }
    return groups;
}

std::string htmlCode(const std::string& text) { return "<code>" + escaped(text) + "</code>"; }

std::string typeWord(HATAttrTypes::AttrType type) { return std::string(words::propertyTypes.wordOf(type)); }

Json functionRow(const HDNTFunctionDecl& function, const HDNTLibrary& library) {
    std::vector<std::string> formals;
    for (std::size_t i = 0; i < function.getNumFormals(); ++i) formals.push_back(typeWord(function.getFormal(i)));
    return {{"anchor", anchorOf("function", function.getName())},
            {"name", function.getName()},
            {"type", typeWord(function.getType())},
            {"formals", platform::joined(formals, ", ")},
            {"library", library.getName()}};
}

} // namespace

Json startPage(const Book& book, const Json& rows) {
    Json page = pageWith(book.title());
    page["library"] = book.library().getName();
    page["blockCount"] = book.blocks().size();
    page["mappedCount"] = std::ranges::count_if(rows, [](const Json& row) { return row["isMapped"].get<bool>(); });
    page["architectures"] = platform::joined(book.architectures(), ", ");
    page["groups"] = groupsOf(rows);
    page["groupCount"] = page["groups"].size();
    page["legend"] = symbolLegend();
    return page;
}

Json namesPage(const Json& names) {
    const auto key = [](const Json& name) { return HSTStringUtils::to_upper_copy(name["name"].get<std::string>()); };
    std::vector<Json> sorted(names.begin(), names.end());
    std::ranges::stable_sort(sorted, {}, key);
    std::map<std::string, Json> byLetter;
    for (const Json& name : sorted) {
        const std::string first = key(name).substr(0, 1);
        const bool isLetter = !first.empty() && first[0] >= 'A' && first[0] <= 'Z';
        byLetter[isLetter ? first : "other"].push_back(name);
    }
    Json page = pageWith("Index");
    page["letters"] = Json::array();
    for (auto& [letter, list] : byLetter) {
        page["letters"].push_back({{"letter", letter}, {"anchor", "letter-" + letter}, {"entries", std::move(list)}});
    }
    return page;
}

Json matrixPage(const Book& book, const Json& rows) {
    Json page = pageWith("Architectures");
    page["columns"] = Json::array();
    for (const std::string& architecture : book.architectures()) page["columns"].push_back({{"column", architecture}});
    page["rows"] = rows;
    return page;
}

Json mappingsPage(const Book& book) {
    Json page = pageWith("Mappings");
    page["svg"] = mappingGraphOf(book);
    page["rows"] = Json::array();
    for (const HDNTBlock* block : book.blocks()) {
        const Book::Relations& relations = book.relationsOf(*block);
        if (relations.variants.empty() && relations.usedBy.empty()) continue;
        Json row = book.linkTo(*block, "");
        row["mapsTo"] = Json::array();
        for (const std::string& type : relations.mapsTo)
            row["mapsTo"].push_back(book.linkTo(book.find(type), type, ""));
        row["usedBy"] = Json::array();
        for (const HDNTBlock* user : relations.usedBy) row["usedBy"].push_back(book.linkTo(*user, ""));
        page["rows"].push_back(std::move(row));
    }
    return page;
}

Json functionsPage(const Book& book) {
    Json page = pageWith("Functions");
    page["rows"] = Json::array();
    for (const HDNTLibrary* library = &book.library(); library; library = library->getParentLibrary()) {
        for (std::size_t i = 0; i < library->getNumFunctionDecls(); ++i)
            page["rows"].push_back(functionRow(*library->getFunctionDecl(i), *library));
        if (!book.options().withParents) break;
    }
    return page;
}

Json findingsPage(const Book& book) {
    Json page = pageWith("Findings");
    page["rows"] = Json::array();
    std::set<std::string> codes;
    for (const Diagnostic& finding : book.findings()) {
        Place place = finding.place;
        place.file = HUTPathUtils::leafOf(place.file);
        const std::string block =
            finding.element.starts_with("block ") ? finding.element.substr(6, finding.element.find('/') - 6) : "";
        page["rows"].push_back({{"severity", nameOf(finding.severity)},
                                {"code", finding.code},
                                {"codeHref", "#" + anchorOf("code", finding.code)},
                                {"place", describe(place)},
                                {"message", textOf(finding)},
                                {"block", book.linkTo(book.find(block), block, "")}});
        codes.insert(finding.code);
    }
    page["codes"] = Json::array();
    for (const std::string& code : codes) {
        const DiagnosticRule* const rule = findRule(code);
        page["codes"].push_back(
            {{"code", code}, {"anchor", anchorOf("code", code)}, {"explanation", rule ? explanationOf(*rule) : ""}});
    }
    return page;
}

// The name as the block has it: in a path some characters stand behind a backslash.
static std::string blockOf(const HDNTDifference& difference) {
    std::string name;
    for (std::size_t i = 0; i < difference.block.size(); ++i) {
        if (difference.block[i] == '\\' && i + 1 < difference.block.size()) ++i;
        name += difference.block[i];
    }
    return name;
}

Json changesOf(const Book& book, const std::string& block) {
    Json chapters = Json::array();
    if (!book.options().changes) return chapters;
    for (const ReleaseChapter& chapter : releaseChapters()) {
        Json items = Json::array();
        for (const HDNTDifference& item : book.options().changes->differences) {
            if (!chapter.holds(item) || (!block.empty() && blockOf(item) != block)) continue;
            Json entry = {{"html", changeText(item, htmlCode, " → ")}};
            entry["block"] = block.empty() && !item.block.empty()
                                 ? book.linkTo(book.find(blockOf(item)), blockOf(item), "")
                                 : Json();
            items.push_back(std::move(entry));
        }
        if (!items.empty()) chapters.push_back({{"title", chapter.title}, {"items", std::move(items)}});
    }
    return chapters;
}

Json changesPage(const Book& book) {
    Json page = pageWith("Changes");
    page["since"] = book.options().changes ? Json(book.options().changes->since) : Json();
    page["chapters"] = changesOf(book, "");
    return page;
}

} // namespace hdnt::author::guide
