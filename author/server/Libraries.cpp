#include "author/project/Project.h"
#include "author/server/Declarations.internal.h"
#include "author/server/Workspace.internal.h"
#include "hdnt/frontend/SearchPath.h"
#include "hdnt/platform/DataDirectory.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace hdnt::author::server {

namespace {

// A project that cannot be read says nothing; "check" says why.
Project projectOf(const std::string& path) {
    try {
        const std::string project = findProject(path);
        return project.empty() ? Project() : readProject(project);
    } catch (const HEXDataException&) {
        return {};
    }
}

std::string normal(const std::string& path) { return std::filesystem::path(path).lexically_normal().string(); }

} // namespace

Libraries::Libraries(Session& session) : session_(session) {
    for (const auto& [uri, unused] : session.documents) open_.emplace(pathOf(uri), &uri);
}

std::unique_ptr<Libraries> Libraries::ofFile(Session& session, const std::string& path) {
    std::unique_ptr<Libraries> libraries(new Libraries(session));
    libraries->addAll(path);
    return libraries;
}

Libraries::Libraries(Session& session, const std::string& uri) : Libraries(session) {
    const auto document = session.documents.find(uri);
    if (document == session.documents.end()) throw RequestError(ErrorCode::invalidParams, uri + " is not open");
    const std::string path = pathOf(uri);
    if (path.empty()) {
        addDocument(uri, document->second, 0);
        current_ = &texts_.front();
        return;
    }
    open_[path] = &document->first;
    addAll(path);
}

void Libraries::addAll(const std::string& path) {
    const Project project = projectOf(path);
    searchDirectories_ = project.searchDirectories;
    for (const std::string& file : libraryOf(path).files) add(file, 0);
    addIncluded();
    if (!byPath_.contains(path)) add(path, 0);
    current_ = byPath_[path];
    for (auto parent = project.parents.rbegin(); parent != project.parents.rend(); ++parent) addParents(*parent);
    if (project.parents.empty() && isMapLibrary(path)) addParents("common");
    addIncluded();
    addMapLibraries();
}

bool Libraries::isMapLibrary(const std::string& path) {
    const std::string folder = platform::findData("maplib");
    return !folder.empty() && normal(folder) == std::filesystem::path(path).parent_path();
}

// Mappings in files that are named like their block, for any library that declares it.
void Libraries::addMapLibraries() {
    const std::string folder = platform::findData("maplib");
    if (folder.empty()) return;
    BlockTable blocks(*this);
    for (const std::string& file : textsAt(normal(folder))) {
        const std::string name = std::filesystem::path(file).stem().string();
        const Place declared = blocks.find(keyOfBlock(name), 0);
        if (declared && nameOf(declared) == name) add(file, declared.text->level);
    }
}

void Libraries::addParents(const std::string& path) {
    for (const std::string& file : path == "common" ? session_.files.common() : textsAt(normal(path)))
        add(file, levels_);
    ++levels_;
}

void Libraries::add(const std::string& path, std::size_t level) {
    if (path.empty() || byPath_.contains(path)) return;
    if (const auto open = open_.find(path); open != open_.end()) {
        addDocument(*open->second, session_.documents.at(*open->second), level);
    } else if (const Document* document = session_.files.at(path)) {
        texts_.push_back({path, uriOf(path), document, level});
    } else {
        return;
    }
    byPath_[path] = &texts_.back();
}

void Libraries::addDocument(const std::string& uri, const Document& document, std::size_t level) {
    texts_.push_back({pathOf(uri), uri, &document, level});
}

void Libraries::addIncluded() {
    for (std::size_t text = 0; text < texts_.size(); ++text)
        for (const std::uint32_t item : texts_[text].document->fileStatements())
            add(inclusionOf(texts_[text], item).path, texts_[text].level);
}

const Text* Libraries::textAt(const std::string& path) const {
    const auto found = byPath_.find(path);
    return found == byPath_.end() ? nullptr : found->second;
}

// As the scanner takes the name: from the first line that has a ";", up to that or a blank.
Libraries::Inclusion Libraries::inclusionOf(const Text& text, std::uint32_t item) const {
    const std::string_view whole = text.textOf(item);
    const std::size_t ends = whole.find(';');
    if (ends == whole.npos) return {};
    const std::size_t keyword = whole.find_first_of(" \t\n;");
    const std::size_t line = whole.rfind('\n', ends);
    const std::size_t from = std::max(keyword, line == whole.npos ? 0 : line + 1);
    const std::size_t begin = std::min(whole.find_first_not_of(" \t", from), ends);
    const std::size_t end = whole.find_first_of(" \t;", begin);
    const std::string name(whole.substr(begin, end - begin));
    Inclusion found{text.items()[item].offset + begin, text.items()[item].offset + end, {}};
    std::error_code error;
    if (!name.starts_with('/'))
        for (const std::string& directory : searchDirectories_) {
            found.path = normal(std::string(directory).append("/") += name);
            if (std::filesystem::exists(found.path, error)) return found;
        }
    found.path = normal(NtlFindFile(name));
    return found;
}

static void addFolders(const std::string& root, std::size_t& left, std::set<std::string>& folders) {
    namespace fs = std::filesystem;
    std::error_code error;
    constexpr auto options = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator entry(root, options, error), end; !error && entry != end && left > 0;
         entry.increment(error), --left) {
        std::error_code broken;
        if (entry->path().filename().string().starts_with('.')) entry.disable_recursion_pending();
        else if (entry->path().extension() == ".btl" && entry->is_regular_file(broken))
            folders.insert(entry->path().parent_path().string());
    }
}

std::vector<std::string> textsOver(Session& session, const std::string& path) {
    if (path.empty()) return {};
    std::size_t left = 100000;
    std::set<std::string> folders;
    for (const std::string& root : session.folders) addFolders(root, left, folders);
    for (const auto& [uri, unused] : session.documents) folders.insert(libraryOf(pathOf(uri)).path);
    const std::string own = libraryOf(path).path;
    const auto isIt = [&](const std::string& parent) {
        if (parent == "common") return std::ranges::count(session.files.common(), path) > 0;
        const std::string at = normal(parent);
        return at == own || at == own + '/' || at == path;
    };
    std::vector<std::string> found;
    for (const std::string& folder : folders) {
        const std::vector<std::string> texts =
            folder.empty() || folder == own ? std::vector<std::string>() : textsAt(folder);
        if (!texts.empty() && std::ranges::any_of(projectOf(texts.front()).parents, isIt))
            found.push_back(texts.front());
    }
    return found;
}

} // namespace hdnt::author::server
