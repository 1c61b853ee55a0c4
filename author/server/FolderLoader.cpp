#include "author/project/parents.h"
#include "author/server/FolderLoader.internal.h"
#include "author/server/Session.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace hdnt::author::server {

std::map<std::string, std::string> openTexts(const Session& session) {
    std::map<std::string, std::string> texts;
    for (const auto& [uri, open] : session.documents)
        if (const std::string path = pathOf(uri); !path.empty()) texts.emplace(path, open.text());
    return texts;
}

LibraryTask taskOf(const Session& session, const std::string& document) {
    return {libraryOf(document), document, openTexts(session), session.encoding};
}

std::string FolderLoader::path() const {
    if (!task_.library.files.empty()) return task_.library.path;
    const bool isOpen = task_.texts.contains(task_.document);
    return isOpen && !task_.library.path.empty() ? task_.document : std::string();
}

std::vector<Diagnostic> FolderLoader::prepare() {
    if (const std::optional<Diagnostic> fault = enterProject()) return {*fault};
    return loadParents();
}

std::optional<Diagnostic> FolderLoader::enterProject() {
    const std::string file = findProject(path());
    if (file.empty()) return {};
    note({file});
    try {
        project_ = readProject(file);
        author::enterProject(*project_);
        return {};
    } catch (const HEXDataException& error) {
        return placed(error.what(), file);
    }
}

std::vector<Diagnostic> FolderLoader::loadParents() {
    for (const std::string& path : project_ ? parentPaths(*project_) : std::vector<std::string>()) {
        Loaded loaded = loadAt(path, true);
        if (!loaded) {
            loaded.diagnostics.push_back(
                placed("not judged, since the parent library " + path + " has errors", task_.document));
            return std::move(loaded.diagnostics);
        }
        parents_.push_back(std::move(loaded.library));
    }
    return {};
}

Loaded FolderLoader::load(bool isChecked) { return loadAt(path(), isChecked); }

Loaded FolderLoader::loadAt(const std::string& path, bool isChecked) {
    LoadOptions options;
    options.parent = parent();
    options.texts = task_.texts;
    options.check = isChecked;
    Loaded loaded = hdnt::load(path, options);
    note(loaded.files);
    return loaded;
}

Diagnostic placed(std::string message, const std::string& file) {
    Diagnostic said;
    said.place.file = file;
    const std::string head = file + ":";
    const std::size_t behind = message.find(": ", head.size());
    if (!file.empty() && message.starts_with(head) && behind != message.npos) {
        said.place.line = std::max(std::atoi(message.c_str() + head.size()), 0);
        message.erase(0, behind + 2);
    }
    said.message = std::move(message);
    return said;
}

} // namespace hdnt::author::server
