#include "author/exchange/blocks.h"
#include "author/exchange/fileNames.internal.h"
#include "author/guide/Book.internal.h"
#include "author/judge/judge.h"
#include "author/lint/Baseline.h"
#include "author/lint/MappingView.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <set>

namespace hdnt::author::guide {

namespace {

std::vector<HDNTBlock*> sortedBlocks(const HDNTLibrary& library, bool withParents) {
    std::vector<HDNTBlock*> blocks = blocksOf(library, withParents);
    std::ranges::stable_sort(blocks, {},
                             [](const HDNTBlock* block) { return HSTStringUtils::to_upper_copy(block->getName()); });
    return blocks;
}

void addTypes(const HDNTNetlist& netlist, std::vector<std::string>& types) {
    const MappingView view(netlist);
    for (const auto& instance : view.instances()) {
        const std::string& type = instance.node->typeName();
        if (std::ranges::find(types, type) == types.end()) types.push_back(type);
    }
}

// Each knows the block it is about.
std::vector<Diagnostic> findingsOf(const HDNTLibrary& library, const GuideOptions& options) {
    LintOptions quick;
    quick.isThorough = false;
    std::vector<Diagnostic> findings =
        options.findings ? *options.findings : judgeLoaded(library, {}, {}, quick, ConfigScope::OwnCells);
    nameElements(findings);
    return findings;
}

} // namespace

Book::Book(const HDNTLibrary& library, const GuideOptions& options)
    : library_(library), options_(options), findings_(findingsOf(library, options)),
      title_(options.title.empty() ? library.getName() : options.title),
      blocks_(sortedBlocks(library, options.withParents)),
      architectures_(options.architectures.empty() ? architecturesIn(*library.getConfig()) : options.architectures) {
    FileNames names;
    for (const HDNTBlock* block : blocks_) pages_.emplace(block, "blocks/" + names.add(block->getName()) + ".html");
    for (HDNTBlock* block : blocks_) relate(*block);
    for (const HDNTBlock* block : blocks_)
        for (const std::string& type : relations_[block].mapsTo) {
            const auto used = relations_.find(find(type));
            if (used != relations_.end()) used->second.usedBy.push_back(block);
        }
}

void Book::relate(HDNTBlock& block) {
    Relations relations;
    relations.variants = variantsOf(block, relations);
    relations_[&block] = std::move(relations);
}

// A map library may hold for all architectures, which is known when it is read for one.
std::vector<Book::Variant> Book::variantsOf(HDNTBlock& block, Relations& relations) const {
    std::vector<Variant> variants;
    const std::vector<std::string> one = {""};
    const bool isForAll = block.hasOwnNetlist() || architectures_.empty();
    for (const std::string& architecture : isForAll ? one : architectures_) {
        try {
            const HDNTNetlist* const netlist = mappingFor(block, architecture);
            if (!netlist) continue;
            addTypes(*netlist, relations.mapsTo);
            const bool holdsForAll = block.getNetlistKind() == HDNTBlock::AnyArchitecture;
            variants.push_back({holdsForAll ? "" : architecture, ""});
            if (holdsForAll) break;
        } catch (const HEXAll& error) {
            variants.push_back({architecture, error.what()});
        }
    }
    return variants;
}

std::vector<std::string> Book::problems() const {
    std::vector<std::string> all;
    for (const HDNTBlock* block : blocks_)
        for (const Variant& variant : relationsOf(*block).variants)
            if (!variant.problem.empty())
                all.push_back(platform::printable(block->getName()) + ": mapping" +
                              (variant.architecture.empty() ? "" : " for " + variant.architecture) + ": " +
                              variant.problem);
    return all;
}

const std::string& Book::pageOf(const HDNTBlock* block) const {
    static const std::string none;
    const auto found = pages_.find(block);
    return found == pages_.end() ? none : found->second;
}

const HDNTBlock* Book::find(const std::string& name) const { return library_.getTypeBlockByName(name, true); }

Json Book::linkTo(const HDNTBlock* block, const std::string& name, const std::string& root) const {
    const std::string& page = pageOf(block);
    return {{"name", name}, {"href", page.empty() ? Json() : Json(root + page)}};
}

Json Book::linkTo(const HDNTBlock& block, const std::string& root) const {
    return linkTo(&block, block.getName(), root);
}

} // namespace hdnt::author::guide
