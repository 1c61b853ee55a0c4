#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/loading/ParseInput.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HSTUniqString.h"
#include "hdnt/platform/HUTFile.h"

#include <memory>

namespace hdnt::loading {

static const std::string suffix = ".btl";

std::vector<std::string> entriesOf(const std::string& folder) {
    const std::unique_ptr<HUTFileIter> entries(HUTFile(folder).createFileIter());
    std::vector<std::string> paths;
    while (entries->hasNext()) {
        entries->next();
        paths.push_back(entries->current());
    }
    return paths;
}

bool parseFolder(HDNTLibrary& library, const std::vector<std::string>& entries) {
    struct Folder {
        explicit Folder(std::size_t files) { frontend::Scanner::instance().beginFolder(files); }
        ~Folder() { frontend::Scanner::instance().endFolder(); }
    };
    const Folder folder(entries.size());
    // The names of files stay for good. Among those of a library, they would keep its memory when it goes.
    for (const std::string& entry : entries)
        if (entry.ends_with(suffix)) HSTUniqString::internCString(entry);
    bool parsed = true;
    for (const std::string& entry : entries)
        if (entry.substr(entry.size() - suffix.size()) == suffix) parsed &= library.parseFile(entry) == 0;
    return parsed;
}

bool parseInput(HDNTLibrary& library, const std::string& path) {
    return HUTFile(path).isDir() ? parseFolder(library, entriesOf(path)) : library.parseFile(path) == 0;
}

bool isShort(const std::string& entry) { return entry.size() < suffix.size(); }

} // namespace hdnt::loading
