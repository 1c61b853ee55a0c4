#include "author/guide/guide.h"

#include "author/exchange/BlockWords.h"
#include "author/exchange/blocks.h"
#include "author/exchange/fileNames.internal.h"
#include "author/guide/GuideFolder.internal.h"
#include "author/guide/SourceTexts.internal.h"
#include "author/guide/Templates.internal.h"
#include "author/guide/pages.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace hdnt::author {

namespace guide {

namespace {

/// What the search knows of a name, and the index lists: where it is, what it is, and what is said of it.
Json entry(const std::string& name, const std::string& kind, const std::string& href, const std::string& text) {
    return {{"name", name}, {"kind", kind}, {"href", href}, {"text", text}};
}

// Those of the blocks before those of map libraries.
std::vector<std::string> filesOf(const Book& book) {
    std::vector<std::string> files;
    const auto add = [&](const std::string& file) {
        if (!file.empty() && std::ranges::find(files, file) == files.end()) files.push_back(file);
    };
    const auto addOf = [&](const HDNTNode* node) {
        const auto location = node ? node->copyOfLocation() : std::nullopt;
        if (location && location->fileName) add(location->fileName);
    };
    for (const HDNTBlock* block : book.blocks()) addOf(block);
    for (const HDNTBlock* block : book.blocks()) addOf(block->getAttachedNetlist());
    for (const HDNTBlock* block : book.blocks())
        if (!block->hasOwnNetlist() && !book.relationsOf(*block).variants.empty()) add(mapLibraryOf(*block));
    return files;
}

class Writer {
public:
    Writer(const Book& book, GuideFolder& folder) : book_(book), folder_(folder), sources_(filesOf(book)) {}

    WrittenGuide run() {
        for (HDNTBlock* block : book_.blocks()) {
            addBlock(*block);
            if (book_.options().progress) book_.options().progress(++done_, book_.blocks().size());
        }
        addWholePages();
        for (const char* const file : {"guide.css", "guide.js"}) folder_.write(file, guideFile(file));
        folder_.write("search.js", "guideEntries(" + searchData() + ");\n");
        return {pages_, progression_.drawn, progression_.drawn == 0 ? progression_.undrawn : ""};
    }

private:
    void addBlock(HDNTBlock& block) {
        // The facts speak of the mapping for the first architecture that has one.
        const auto& variants = book_.relationsOf(block).variants;
        const auto first =
            std::ranges::find_if(variants, [](const Book::Variant& variant) { return variant.problem.empty(); });
        if (first != variants.end()) mappingFor(block, first->architecture);
        const Json facts = jsonOf(block, progression_.places);
        const std::string& address = book_.pageOf(&block);
        rows_.push_back(blockRow(book_, block, facts));
        addNames(facts, address);
        write("block", address, blockPage(book_, block, facts, sources_.of(block.getName()), progression_));
    }

    void addNames(const Json& facts, const std::string& address) {
        using words::cell;
        const std::string block = cell(facts["name"]);
        names_.push_back(entry(block, "block", address, words::groupText(facts["group"], facts["subgroup"])));
        for (const Json& bus : facts["buses"])
            names_.push_back(entry(cell(bus["baseName"]), "pin of " + block,
                                   address + "#" + anchorOf("pin", cell(bus["name"])), cell(bus["function"])));
        for (const Json& property : facts["properties"]) {
            std::string text = cell(property["description"]);
            const std::string values = platform::joined(words::cells(property["values"]), ", ");
            if (!values.empty()) text += (text.empty() ? "" : " ") + values;
            names_.push_back(entry(cell(property["name"]), "property of " + block,
                                   address + "#" + anchorOf("property", cell(property["name"])), text));
        }
    }

    void addWholePages() {
        write("start", "index.html", startPage(book_, rows_));
        write("blocks", "blocks.html", {{"heading", "Blocks"}, {"root", ""}, {"rows", rows_}});
        write("matrix", "architectures.html", matrixPage(book_, rows_));
        write("mappings", "mappings.html", mappingsPage(book_));
        const Json functions = functionsPage(book_);
        write("functions", "functions.html", functions);
        write("findings", "findings.html", findingsPage(book_));
        if (book_.options().changes) write("changes", "changes.html", changesPage(book_));
        for (const Json& function : functions["rows"])
            names_.push_back(entry(words::cell(function["name"]), "function",
                                   "functions.html#" + words::cell(function["anchor"]), ""));
        write("names", "names.html", namesPage(names_));
    }

    Json navigation(const std::string& address, const std::string& root) const {
        Json list = Json::array();
        const std::pair<const char*, const char*> all[] = {
            {"index.html", "Start"},       {"blocks.html", "Blocks"},
            {"names.html", "Index"},       {"architectures.html", "Architectures"},
            {"mappings.html", "Mappings"}, {"functions.html", "Functions"},
            {"findings.html", "Findings"}, {"changes.html", "Changes"}};
        for (const auto& [file, name] : all) {
            if (std::string_view(file) == "changes.html" && !book_.options().changes) continue;
            list.push_back({{"href", root + file}, {"name", name}, {"isHere", address == file}});
        }
        return list;
    }

    void write(const std::string& name, const std::string& address, Json page) {
        const std::string root = words::cell(page["root"]);
        page["title"] = book_.title();
        page["navigation"] = navigation(address, root);
        page["isStart"] = name == "start";
        page["content"] = templates_.render(name, page);
        folder_.write(address, templates_.render("page", page));
        ++pages_;
    }

    // Short keys, since there are as many entries as names.
    std::string searchData() const {
        Json list = Json::array();
        const auto clean = [](const Json& text) { return platform::printable(text.get<std::string>()); };
        for (const Json& name : names_)
            list.push_back({clean(name["name"]), clean(name["kind"]), clean(name["href"]), clean(name["text"])});
        return list.dump();
    }

    const Book& book_;
    GuideFolder& folder_;
    Templates templates_;
    SourceTexts sources_;
    Json rows_ = Json::array();
    Json names_ = Json::array();
    Progression progression_;
    std::size_t pages_ = 0;
    std::size_t done_ = 0;
};

} // namespace

} // namespace guide

WrittenGuide writeGuide(const HDNTLibrary& library, const std::string& folder, const GuideOptions& options) {
    guide::GuideFolder draft(folder);
    const guide::Book book(library, options);
    WrittenGuide written = guide::Writer(book, draft).run();
    draft.finish();
    written.problems = book.problems();
    written.leftBehind = draft.removeOlder();
    return written;
}

} // namespace hdnt::author
