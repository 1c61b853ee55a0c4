#pragma once

#include "author/server/Session.internal.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author::server {

/// A text of a library: what is open counts before the file.
struct Text {
    std::string path; ///< empty for a document that is no file
    std::string uri;
    const Document* document = nullptr;
    std::size_t level = 0; ///< 0: the library itself, 1: its parent, and so on

    const SyntaxTree& tree() const { return document->tree(); }
    const frontend::SourceItems& items() const { return document->tree().items(); }
    const SyntaxNode& node(std::uint32_t number) const { return document->tree().nodes()[number]; }
    std::string_view textOf(std::uint32_t item) const { return items().textOf(item); }
};

/// A node of a text.
struct Place {
    const Text* text = nullptr;
    std::uint32_t node = 0;

    explicit operator bool() const { return text != nullptr; }
    const SyntaxNode& get() const { return text->node(node); }
    bool operator==(const Place&) const = default;
};

/// Calls back with the number of each node right inside of a node.
template <typename Visit>
void forEachChild(const SyntaxTree& tree, std::uint32_t node, Visit&& visit) {
    for (std::uint32_t child = node + 1; child < tree.nodes()[node].next; child = tree.nodes()[child].next)
        visit(child);
}

/// The texts of the library that a document belongs to, of its parents, the files that they include, and the map
/// libraries of their blocks, below those of the common library when it is one of these itself. For the time of a
/// request: borrows the documents of the session.
class Libraries {
public:
    /// Throws RequestError when the document is not open.
    Libraries(Session& session, const std::string& uri);
    /// Those of a file, which need not be open.
    static std::unique_ptr<Libraries> ofFile(Session& session, const std::string& path);
    Libraries(const Libraries&) = delete;

    /// Those of a library in the order in which they are loaded, its parent's behind them.
    const std::deque<Text>& texts() const { return texts_; }
    const Text& current() const { return *current_; }
    std::size_t levels() const { return levels_; }
    const std::vector<std::string>& searchDirectories() const { return searchDirectories_; }

    /// The name in an INCLUDE or INLINE statement: where it is in the text, and the path of that file, empty when there
    /// is none.
    struct Inclusion {
        std::size_t begin = 0;
        std::size_t end = 0;
        std::string path;
    };
    Inclusion inclusionOf(const Text& text, std::uint32_t item) const;
    /// Whether the file stands among the map libraries.
    static bool isMapLibrary(const std::string& path);
    /// Null: not one of the texts.
    const Text* textAt(const std::string& path) const;

private:
    explicit Libraries(Session& session);
    void addAll(const std::string& path);
    void add(const std::string& path, std::size_t level);
    void addDocument(const std::string& uri, const Document& document, std::size_t level);
    void addParents(const std::string& path);
    void addIncluded();
    void addMapLibraries();

    Session& session_;
    std::unordered_map<std::string, const std::string*> open_; ///< URIs by paths
    std::unordered_map<std::string, const Text*> byPath_;
    std::vector<std::string> searchDirectories_;
    std::deque<Text> texts_;
    const Text* current_ = nullptr;
    std::size_t levels_ = 1;
};

/// A text of each library of the workspace that has the one of a file as its parent; by the projects as they are. Only
/// what stands in the folders of the workspace, and those of open documents, is found; at most 100,000 files and
/// folders are looked at.
std::vector<std::string> textsOver(Session& session, const std::string& path);

} // namespace hdnt::author::server
