#pragma once

#include "author/lint/lint.h"

#include <map>
#include <set>
#include <span>
#include <tuple>
#include <unordered_map>

class HDNTBlock;
class HDNTBlockInst;
class HDNTLibrary;
class HDNTNetlist;
class HDNTNode;

namespace hdnt::author {

/// A finding of a rule, its wording filled with the arguments.
Diagnostic finding(const DiagnosticRule& rule, Place place, std::span<const std::string> arguments);
Diagnostic finding(LintCode code, Place place, std::span<const std::string> arguments);

/// What judges collect.
class Findings {
public:
    explicit Findings(const std::map<std::string, std::string>& texts) : sources_(texts) {}
    void add(LintCode code, const HDNTNode& node, const std::vector<std::string>& arguments);
    void add(LintCode code, const yyltype& location, const std::vector<std::string>& arguments);
    /// Something is said of the node.
    void note(const HDNTNode& node);
    /// Whether something is said of the place already.
    bool speakOf(const yyltype& location) const;
    /// Another place that the last finding speaks of.
    void relate(const HDNTNode& node, std::string message);

    std::vector<Diagnostic> list;

private:
    SourcePlaces sources_;
    std::set<std::tuple<int, int, int>> places_; ///< that something is said of
};

/// Blocks of instances, as HDNTBlockInst::getTypeBlock finds them, each sought once.
class BlockFinder {
public:
    explicit BlockFinder(HDNTLibrary* library) : library_(library) {}
    /// Null for one that is nowhere.
    HDNTBlock* blockOf(const HDNTBlockInst& inst);

private:
    HDNTLibrary* library_;
    std::unordered_map<std::string, HDNTBlock*> blocks_;
};

// The judges. Each adds what it finds.

/// Declarations of blocks: names, values, groups.
void judgeDeclarations(const HDNTLibrary& library, Findings& findings);
/// Names of one block that are easily taken for each other, and what is missing of a block for production.
void judgeNames(const HDNTBlock& block, Findings& findings);
void judgeGroups(const HDNTLibrary& library, Findings& findings);
/// What a mapping refers to, in all of its branches. The architecture is empty for a mapping that holds for every one.
void judgeReferences(HDNTBlock& block, const HDNTNetlist& netlist, const std::string& architecture, BlockFinder& finder,
                     Findings& findings);
/// Which blocks become which.
class MappingGraph {
public:
    void add(const HDNTBlock& from, const HDNTBlock& to, const yyltype& at);
    void reportCircles(Findings& findings) const;

private:
    struct ByName {
        bool operator()(const HDNTBlock* a, const HDNTBlock* b) const;
    };
    using Edges = std::map<const HDNTBlock*, yyltype, ByName>;
    std::map<const HDNTBlock*, Edges, ByName> edges_;
};

/// What comes out of a mapping for chosen settings, with `budget` expansions or few more. Where something is said
/// already, the problems of expansions are left out.
void judgeByTrying(HDNTBlock& block, const HDNTNetlist& netlist, const std::string& architecture, std::size_t budget,
                   Findings& findings, MappingGraph& graph);

} // namespace hdnt::author
