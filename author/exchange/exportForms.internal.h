#pragma once

#include "author/exchange/BlockJson.h"
#include "author/exchange/codeNames.internal.h"

#include <map>
#include <set>
#include <string>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

// The forms of exportBlocks().
namespace hdnt::author {

/// What the texts of one export share.
struct ExportNotes {
    const HDNTLibrary& library; ///< the one that is exported
    CodeEnum blocks = {};       ///< all that are; identifiers are for who wants them
    std::vector<std::string> leftOut = {};
    std::set<std::string> modules = {}; ///< names that are taken
    /// For mappings that were written, the types of their instances.
    std::map<const HDNTBlock*, std::set<const HDNTBlock*>> mappedTo = {};
    // Of the text at hand:
    std::string block = {};                 ///< the name of the one that it is for; empty when it is for all
    std::vector<std::string> declared = {}; ///< what its head declares for its blocks
    std::vector<std::string> renamed = {};  ///< "BLOCK: NAME is NAME", where it has another name

    /// Each is "NAME: why".
    void leaveOut(const Json& block, const std::vector<std::string>& what);
    /// False when the name for a block is taken, which is then said.
    bool take(const Json& block, const std::string& shown, const std::string& kind);
    /// Remembers what is shown under another name; `where` is "BLOCK: " for what is in a block.
    void rename(const std::string& where, const std::string& name, const std::string& shown);
    /// A comment of a line for each that was renamed; empty when none was. "*" is escaped, for it may end comments.
    std::string renamedText(const std::string& before, const std::string& behind = "") const;
};

struct ExportedBlock {
    HDNTBlock& model;
    const Json& json; ///< as jsonOf(HDNTBlock&) has it
};

/// One text: what stands before the first block, which is asked when all are there, what each block adds, and what
/// stands behind the last.
struct ExportTable {
    const char* name; ///< of its file, where a form has several
    std::string (*head)(const ExportNotes& notes);
    void (*add)(const ExportedBlock& block, std::string& text, ExportNotes& notes);
    const char* foot = "";
    bool hasMappings = false; ///< whether it tells of them
    bool onlyMapped = false;  ///< other blocks are left out; those that were named are a complaint
    std::string (*loss)(const HDNTLibrary& library) = nullptr; ///< beside its blocks; empty: none

    std::string whole(const std::string& text, const ExportNotes& notes) const { return head(notes) + text + foot; }
};

extern const ExportTable blockTable, pinTable, propertyTable;
extern const ExportTable libraryTable;
extern const ExportTable cppTable, pythonTable;
extern const ExportTable libertyTable;
extern const ExportTable verilogTable;
extern const ExportTable verilogMapTable;
extern const ExportTable vhdlTable;

} // namespace hdnt::author
