#pragma once

#include "author/project/Project.h"
#include "author/server/Document.internal.h"
#include "author/server/Workspace.internal.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/loading/load.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace hdnt::author::server {

struct Session;

/// Of the documents that are files, by path.
std::map<std::string, std::string> openTexts(const Session& session);

/// A library, and the texts that count for it.
struct LibraryTask {
    LibraryFolder library;
    std::string document;                     ///< path of the text that this is about
    std::map<std::string, std::string> texts; ///< that are open, by path
    Encoding encoding = Encoding::utf16;
};
/// Of the library that the text at the path belongs to.
LibraryTask taskOf(const Session& session, const std::string& document);

/// Makes the model of a library as `ntl lint` does: with its project, over its parents. For a process of its own, which
/// it changes for good.
class FolderLoader {
public:
    explicit FolderLoader(LibraryTask task) : task_(std::move(task)) {}

    const LibraryTask& task() const { return task_; }
    /// What is loaded: the folder, or a text that was never saved, which is in none yet; empty when it is gone.
    std::string path() const;
    /// To be called first: enters the project and loads the parents. What keeps the library from being loaded; empty
    /// when nothing does.
    std::vector<Diagnostic> prepare();
    /// The library, which the loader has to outlive.
    Loaded load(bool isChecked);

    const std::optional<Project>& project() const { return project_; }
    HDNTLibrary* parent() const { return parents_.empty() ? nullptr : parents_.back().get(); }
    /// That were read, also of parents.
    const std::vector<std::string>& files() const { return files_; }
    void note(const std::vector<std::string>& files) { files_.insert(files_.end(), files.begin(), files.end()); }

private:
    std::optional<Diagnostic> enterProject();
    std::vector<Diagnostic> loadParents();
    Loaded loadAt(const std::string& path, bool isChecked);

    LibraryTask task_;
    std::optional<Project> project_;
    std::vector<std::unique_ptr<HDNTLibrary>> parents_; ///< the root first
    std::vector<std::string> files_;
};

/// A message as a diagnostic; of a file, with the line when it says "file:line: what is wrong".
Diagnostic placed(std::string message, const std::string& file = {});

} // namespace hdnt::author::server
