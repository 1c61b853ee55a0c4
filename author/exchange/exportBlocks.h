#pragma once

#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

// What a library knows, for the tools that designs are made with.
namespace hdnt::author {

/// What another tool reads or writes.
struct ExchangeForm {
    const char* name;
    const char* extension; ///< of its files
    const char* summary;
};
/// All that exportBlocks() can write, by name.
HDNT_API std::vector<ExchangeForm> exportForms();
/// Throws HEXDataException, which names those near to it, when there is none of that name.
HDNT_API ExchangeForm exportForm(const std::string& name);

struct ExportOptions {
    /// Of the library or its parents; the order makes no difference. Empty: all own blocks that are in the architecture
    /// in force.
    std::vector<HDNTBlock*> blocks = {};
    bool withParents = false; ///< where all are meant, those of the parents too
    bool isSplit = false;     ///< a file a block, or for a form of several tables a file a table
};

struct ExportedFile {
    std::string name; ///< for a folder; no two differ in case alone. Empty when not split
    std::string text;
};

struct Exported {
    std::vector<ExportedFile> files;
    std::vector<std::string> leftOut; ///< what the form has nothing for: "BLOCK: NAME: why"
};

/// Writes blocks in a form, in the order in which the library has them. The same library gives the same bytes. Throws
/// HEXDataException when there is no such form, or when it cannot be one text. A form that tells of mappings loads
/// those of map libraries, where the parameter "ntl.enableMapLib" is on; what is wrong with one is reported, and the
/// block's mapping left out. The loading thread's.
HDNT_API Exported exportBlocks(const HDNTLibrary& library, const std::string& form, const ExportOptions& options = {});

} // namespace hdnt::author
