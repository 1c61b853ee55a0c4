#include "author/project/Project.h"
#include "author/server/Libraries.internal.h"
#include "author/server/Workspace.internal.h"
#include "hdnt/frontend/SearchPath.h"
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

Libraries::Libraries(Session& session, const std::string& uri) : session_(session) {
    const auto document = session.documents.find(uri);
    if (document == session.documents.end()) throw RequestError(ErrorCode::invalidParams, uri + " is not open");
    for (const auto& [each, unused] : session.documents) open_.emplace(pathOf(each), &each);
    const std::string path = pathOf(uri);
    if (path.empty()) {
        addDocument(uri, document->second, 0);
        current_ = &texts_.front();
        return;
    }
    open_[path] = &document->first;
    const Project project = projectOf(path);
    searchDirectories_ = project.searchDirectories;
    for (const std::string& file : libraryOf(path).files) add(file, 0);
    addIncluded();
    if (!byPath_.contains(path)) add(path, 0);
    current_ = byPath_[path];
    for (auto parent = project.parents.rbegin(); parent != project.parents.rend(); ++parent) addParents(*parent);
    addIncluded();
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
        for (const std::string& directory : searchDirectories_)
            if (std::filesystem::exists(found.path = normal(directory + '/' + name), error)) return found;
    found.path = normal(NtlFindFile(name));
    return found;
}

} // namespace hdnt::author::server
