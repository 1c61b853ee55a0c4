#include "author/exchange/mapScopes.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace hdnt::author {

MapScopes::MapScopes(const MappingView& view, VerilogNames& names)
    : view_(view), conditionsIn_(view.scopes().size()), ways_(view.scopes().size()) {
    constexpr std::size_t deepest = 100;
    if (std::ranges::any_of(view.scopes(), [](const auto& scope) { return scope.depth > deepest; }))
        throw HEXDataException("more than " + std::to_string(deepest) + " branches in each other");
    std::map<const HDNTIfStmt*, std::size_t> places;
    for (const auto& [stmt, scope] : view.conditions()) {
        places[stmt] = conditions_.size();
        conditionsIn_[scope].push_back(conditions_.size());
        conditions_.push_back({scope, names.add("if_" + std::to_string(conditions_.size() + 1))});
    }
    for (std::size_t scope = 1; scope < ways_.size(); ++scope) { // outer ones come first
        const MappingView::Scope& branch = view.scopes()[scope];
        const std::size_t condition = places.at(branch.stmt);
        conditions_[condition].branches[branch.holds] = scope;
        ways_[scope] = ways_[branch.outer];
        ways_[scope][condition] = branch.holds;
    }
}

bool MapScopes::isThere(std::size_t scope, const Ways& ways) const {
    return std::ranges::all_of(ways_[scope], [&](const auto& needed) {
        const auto found = ways.find(needed.first);
        return found != ways.end() && found->second == needed.second;
    });
}

bool MapScopes::isCovered(std::size_t scope, const std::set<std::size_t>& scopes) const {
    while (scope != 0 && !isFilled(scope, scopes)) scope = view_.scopes()[scope].outer;
    return isFilled(scope, scopes);
}

bool MapScopes::isFilled(std::size_t scope, const std::set<std::size_t>& scopes) const {
    if (scopes.contains(scope)) return true;
    return std::ranges::any_of(conditionsIn_[scope], [&](std::size_t condition) {
        const auto isBranchFilled = [&](std::size_t branch) { return branch != none && isFilled(branch, scopes); };
        return std::ranges::all_of(conditions_[condition].branches, isBranchFilled);
    });
}

std::string MapScopes::guardOf(std::size_t scope) const {
    std::vector<std::string> parts;
    for (const auto& [condition, holds] : ways_[scope])
        parts.push_back((holds ? "" : "!") + conditions_[condition].name);
    return platform::joined(parts, " && ");
}

} // namespace hdnt::author
