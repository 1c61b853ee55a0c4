#pragma once

#include "author/exchange/BlockJson.h"
#include "author/guide/guide.h"

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

namespace hdnt::author::guide {

/// What all pages know: the blocks that have one, and how they are made of each other.
class Book {
public:
    Book(const HDNTLibrary& library, const GuideOptions& options);

    /// How a block is mapped for one or for all architectures.
    struct Variant {
        std::string architecture; ///< empty: all
        std::string problem;      ///< of its map library, which is broken then
    };
    struct Relations {
        std::vector<Variant> variants;
        std::vector<std::string> mapsTo;      ///< types of its instances, in the order of the mapping, each once
        std::vector<const HDNTBlock*> usedBy; ///< those with a page, in the order of the pages
    };

    const HDNTLibrary& library() const { return library_; }
    const GuideOptions& options() const { return options_; }
    const std::vector<Diagnostic>& findings() const { return findings_; }
    const std::string& title() const { return title_; }
    /// By name, case aside.
    const std::vector<HDNTBlock*>& blocks() const { return blocks_; }
    const std::vector<std::string>& architectures() const { return architectures_; }
    /// Of all blocks, with their names and architectures.
    std::vector<std::string> problems() const;
    const Relations& relationsOf(const HDNTBlock& block) const { return relations_.at(&block); }
    /// "blocks/NAME.html", below the guide's folder; empty when the block has no page here.
    const std::string& pageOf(const HDNTBlock* block) const;

    /// Null when the library and its parents have none of that name, case aside.
    const HDNTBlock* find(const std::string& name) const;
    /// {name, href}; without a page, href is null. The root is where the guide's folder is, seen from the page.
    Json linkTo(const HDNTBlock* block, const std::string& name, const std::string& root) const;
    Json linkTo(const HDNTBlock& block, const std::string& root) const;

private:
    void relate(HDNTBlock& block);
    std::vector<Variant> variantsOf(HDNTBlock& block, Relations& relations) const;

    const HDNTLibrary& library_;
    const GuideOptions& options_;
    std::vector<Diagnostic> findings_;
    std::string title_;
    std::vector<HDNTBlock*> blocks_;
    std::vector<std::string> architectures_;
    std::unordered_map<const HDNTBlock*, std::string> pages_;
    std::map<const HDNTBlock*, Relations> relations_;
};

} // namespace hdnt::author::guide
