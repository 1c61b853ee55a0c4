#include "author/exchange/exportBlocks.h"

#include "author/exchange/BlockWords.h"
#include "author/exchange/blocks.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/fileNames.internal.h"
#include "author/exchange/forms.internal.h"
#include "author/exchange/hdlNames.internal.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
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
        {{"c++", "h", "a header with enumerations of names and constants of defaults"}, {cppTable}},
        {{"csv", "csv", "the three tables below, as files of a folder"}, {blockTable, pinTable, propertyTable}},
        {{"csv-blocks", "csv", "a table with a row for each block"}, {blockTable}},
        {{"csv-pins", "csv", "a table with a row for each pin or bus"}, {pinTable}},
        {{"csv-properties", "csv", "a table with a row for each property of blocks and pins"}, {propertyTable}},
        {{"json", "json", "everything, also for ntl import"}, {libraryTable}},
        {{"liberty", "lib", "cells with pins and directions, without timing"}, {libertyTable}},
        {{"python", "py", "a module with enumerations of names and constants of defaults"}, {pythonTable}},
        {{"verilog", "v", "black-box modules for synthesis and simulation"}, {verilogTable}},
        {{"verilog-map", "v", "mappings as modules for techmap in synthesis"}, {verilogMapTable}},
        {{"vhdl", "vhd", "a package of component declarations"}, {vhdlTable}},
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

// Of all, before anything is said of one: a map library may have mappings of other blocks, too. What is wrong with one
// was reported.
void loadMappings(const std::vector<HDNTBlock*>& blocks, ExportNotes& notes) {
    for (HDNTBlock* block : blocks) {
        try {
            block->getNetlist(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
        } catch (const HEXAll& error) {
            notes.leftOut.push_back(platform::printable(block->getName() + ": mapping: " + error.what()));
        }
    }
}

// Leaves those that have a mapping.
void keepMapped(std::vector<HDNTBlock*>& blocks, bool areNamed, ExportNotes& notes) {
    std::erase_if(blocks, [&](const HDNTBlock* block) {
        const bool isMapped = block->getAttachedNetlist();
        if (!isMapped && areNamed) notes.leftOut.push_back(platform::printable(block->getName()) + ": no mapping");
        return !isMapped;
    });
}

std::vector<ExportedFile> filesOfBlocks(const std::vector<HDNTBlock*>& blocks, const ExportTable& table,
                                        const std::string& extension, ExportNotes& notes) {
    std::vector<ExportedFile> files;
    FileNames names;
    SourcePlaces places;
    for (HDNTBlock* block : blocks) {
        notes.block = block->getName();
        notes.declared.clear();
        notes.renamed.clear();
        const Json json = jsonOf(*block, places);
        std::string text;
        table.add({*block, json}, text, notes);
        if (table.onlyMapped && text.empty()) continue;
        files.push_back({names.add(block->getName()) + extension, table.whole(text, notes)});
    }
    return files;
}

std::vector<ExportedFile> filesOfTables(const std::vector<HDNTBlock*>& blocks, const std::vector<ExportTable>& tables,
                                        const std::string& extension, ExportNotes& notes) {
    std::vector<ExportedFile> files;
    files.reserve(tables.size());
    for (const ExportTable& table : tables) files.push_back({tables.size() > 1 ? table.name + extension : "", ""});
    SourcePlaces places;
    for (HDNTBlock* block : blocks) {
        const Json json = jsonOf(*block, places);
        for (std::size_t i = 0; i < tables.size(); ++i) tables[i].add({*block, json}, files[i].text, notes);
    }
    for (std::size_t i = 0; i < files.size(); ++i) files[i].text = tables[i].whole(files[i].text, notes);
    return files;
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
    std::vector<HDNTBlock*> blocks = meantBlocks(library, options);
    const std::string extension = std::string(".") + row.form.extension;
    ExportNotes notes{library};
    if (std::ranges::any_of(row.tables, &ExportTable::hasMappings)) loadMappings(blocks, notes);
    if (row.tables.front().onlyMapped) keepMapped(blocks, !options.blocks.empty(), notes);
    std::set<std::string> names;
    for (const HDNTBlock* block : blocks)
        if (names.insert(block->getName()).second) notes.blocks.texts.push_back(block->getName());
    std::vector<ExportedFile> files = options.isSplit && !hasTables
                                          ? filesOfBlocks(blocks, row.tables.front(), extension, notes)
                                          : filesOfTables(blocks, row.tables, extension, notes);
    for (const ExportTable& table : row.tables)
        if (std::string loss = table.loss ? table.loss(library) : std::string(); !loss.empty())
            notes.leftOut.push_back(std::move(loss));
    return {std::move(files), std::move(notes.leftOut)};
}

void ExportNotes::leaveOut(const Json& block, const std::vector<std::string>& what) {
    for (const std::string& one : what) leftOut.push_back(platform::printable(words::cell(block["name"])) + ": " + one);
}

bool ExportNotes::take(const Json& block, const std::string& shown, const std::string& kind) {
    const bool isNew = modules.insert(shown).second;
    if (!isNew) leaveOut(block, {platform::printable(shown) + " is the name of another " + kind});
    return isNew;
}

void ExportNotes::rename(const std::string& where, const std::string& name, const std::string& shown) {
    if (shown != name) renamed.push_back(asciiOf(where + name, "*") + " is " + shown);
}

std::string ExportNotes::renamedText(const std::string& before, const std::string& behind) const {
    if (renamed.empty()) return {};
    std::string text = before + "Names that are not as the library has them:" + behind + "\n";
    for (const std::string& line : renamed) text.append(before).append("    ").append(line).append(behind).append("\n");
    return text;
}

} // namespace hdnt::author
