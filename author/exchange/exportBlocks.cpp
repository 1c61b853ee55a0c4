#include "author/exchange/exportBlocks.h"

#include "author/exchange/blocks.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/fileNames.internal.h"
#include "author/exchange/forms.internal.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <set>
#include <utility>

namespace hdnt::author {

namespace {

struct FormRow {
    ExchangeForm form;
    std::vector<ExportTable> tables;
};

const std::vector<FormRow>& formRows() {
    static const std::vector<FormRow> rows = {
        {{"csv", "csv", "the three tables below, as files of a folder"}, {blockTable, pinTable, propertyTable}},
        {{"csv-blocks", "csv", "a table with a row for each block"}, {blockTable}},
        {{"csv-pins", "csv", "a table with a row for each pin or bus"}, {pinTable}},
        {{"csv-properties", "csv", "a table with a row for each property of blocks and pins"}, {propertyTable}},
        {{"json", "json", "everything, also for ntl import"}, {libraryTable}},
        {{"verilog", "v", "black-box modules for synthesis and simulation"}, {verilogTable}},
    };
    return rows;
}

// In the order of the library.
std::vector<HDNTBlock*> meantBlocks(const HDNTLibrary& library, const ExportOptions& options) {
    const std::set<const HDNTBlock*> named(options.blocks.begin(), options.blocks.end());
    std::vector<HDNTBlock*> blocks = blocksOf(library, options.withParents || !named.empty());
    const std::string& architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
    std::erase_if(blocks, [&](const HDNTBlock* block) {
        if (!named.empty()) return !named.contains(block);
        return !architecture.empty() && !isInArchitecture(*block, architecture);
    });
    return blocks;
}

// What is wrong with a map library was reported.
void loadMapping(HDNTBlock& block, ExportNotes& notes) {
    try {
        block.getNetlist(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
    } catch (const HEXDataException& error) {
        notes.leftOut.push_back(platform::printable(block.getName() + ": mapping: " + error.what()));
    }
}

} // namespace

std::vector<ExchangeForm> exportForms() { return formsOf(formRows()); }

ExchangeForm exportForm(const std::string& name) { return rowNamed(name, formRows()).form; }

Exported exportBlocks(const HDNTLibrary& library, const std::string& form, const ExportOptions& options) {
    const FormRow& row = rowNamed(form, formRows());
    const bool hasTables = row.tables.size() > 1;
    if (hasTables && !options.isSplit)
        throw HEXDataException(form + " is several tables: name a folder for them, or one of them, as in " + form +
                               "-" + row.tables.front().name);
    const std::string extension = std::string(".") + row.form.extension;
    const bool isByBlock = options.isSplit && !hasTables;
    std::vector<ExportedFile> files;
    const auto begin = [&](const ExportTable& table, const std::string& name) {
        files.push_back({name, table.head(library)});
    };
    if (!isByBlock)
        for (const ExportTable& table : row.tables) begin(table, hasTables ? table.name + extension : "");
    ExportNotes notes;
    FileNames names;
    SourcePlaces places;
    const bool hasMappings = std::ranges::any_of(row.tables, &ExportTable::hasMappings);
    for (HDNTBlock* block : meantBlocks(library, options)) {
        if (hasMappings) loadMapping(*block, notes);
        const Json json = jsonOf(*block, places);
        if (isByBlock) begin(row.tables.front(), names.add(block->getName()) + extension);
        for (std::size_t i = 0; i < row.tables.size(); ++i)
            row.tables[i].add({*block, json}, isByBlock ? files.back().text : files[i].text, notes);
    }
    for (std::size_t i = 0; i < files.size(); ++i) files[i].text += row.tables[isByBlock ? 0 : i].foot;
    return {std::move(files), std::move(notes.leftOut)};
}

} // namespace hdnt::author
