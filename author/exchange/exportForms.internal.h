#pragma once

#include "author/exchange/BlockJson.h"

#include <set>
#include <string>
#include <vector>

// The forms of exportBlocks().
namespace hdnt::author {

/// What the texts of one export share.
struct ExportNotes {
    std::vector<std::string> leftOut;
    std::set<std::string> modules; ///< names that are taken
};

// Each adds to a text what a block, as jsonOf(HDNTBlock&) has it, is in that form.
void addBlockRow(const Json& block, std::string& text, ExportNotes& notes);
void addPinRows(const Json& block, std::string& text, ExportNotes& notes);
void addPropertyRows(const Json& block, std::string& text, ExportNotes& notes);
void addVerilogModule(const Json& block, std::string& text, ExportNotes& notes);

// What stands before the first block.
std::string blockColumns();
std::string pinColumns();
std::string propertyColumns();
std::string verilogHead();

} // namespace hdnt::author
