#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/loading/ParseInput.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HUTFile.h"

#include <memory>

namespace hdnt::loading {

static const std::string suffix = ".btl";

static bool parseFolder(HDNTLibrary& library, const HUTFile& folder) {
    struct FolderMode {
        FolderMode() { frontend::Scanner::instance().setFolderMode(true); }
        ~FolderMode() { frontend::Scanner::instance().setFolderMode(false); }
    };
    const FolderMode mode;
    const std::unique_ptr<HUTFileIter> entries(folder.createFileIter());
    bool parsed = true;
    while (entries->hasNext()) {
        entries->next();
        const std::string& entry = entries->current();
        if (entry.substr(entry.size() - suffix.size()) == suffix) parsed &= library.parseFile(entry) == 0;
    }
    return parsed;
}

bool parseInput(HDNTLibrary& library, const std::string& path) {
    const HUTFile file(path);
    return file.isDir() ? parseFolder(library, file) : library.parseFile(path) == 0;
}

std::vector<std::string> shortEntries(const std::string& folder) {
    const std::unique_ptr<HUTFileIter> entries(HUTFile(folder).createFileIter());
    std::vector<std::string> found;
    while (entries->hasNext()) {
        entries->next();
        if (entries->current().size() < suffix.size()) found.push_back(entries->current());
    }
    return found;
}

} // namespace hdnt::loading
