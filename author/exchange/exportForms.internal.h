#pragma once

#include "author/exchange/BlockJson.h"

#include <set>
#include <string>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

// The forms of exportBlocks().
namespace hdnt::author {

/// What the texts of one export share.
struct ExportNotes {
    std::vector<std::string> leftOut;
    std::set<std::string> modules; ///< names that are taken
};

struct ExportedBlock {
    HDNTBlock& model;
    const Json& json; ///< as jsonOf(HDNTBlock&) has it
};

/// One text: what stands before the first block, what each block adds, and what stands behind the last.
struct ExportTable {
    const char* name; ///< of its file, where a form has several
    std::string (*head)(const HDNTLibrary& library);
    void (*add)(const ExportedBlock& block, std::string& text, ExportNotes& notes);
    const char* foot = "";
    bool hasMappings = false; ///< whether it tells of them
};

extern const ExportTable blockTable, pinTable, propertyTable;
extern const ExportTable libraryTable;
extern const ExportTable verilogTable;

} // namespace hdnt::author
