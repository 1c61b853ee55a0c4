#pragma once

#include "author/exchange/hdlNames.internal.h"
#include "author/lint/MappingView.internal.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace hdnt::author {

/// The branches of a mapping, for generate blocks. Conditions go by their place in the list of the mapping.
class MapScopes {
public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    struct Condition {
        std::size_t outer;                      ///< the scope around the statement
        std::string name;                       ///< of the constant that says how it goes
        std::size_t branches[2] = {none, none}; ///< scopes for a condition that fails and one that holds
    };
    /// Which way conditions go.
    using Ways = std::map<std::size_t, bool>;

    /// Throws HEXDataException for branches that are nested too deep for readers.
    MapScopes(const MappingView& view, VerilogNames& names);

    const std::vector<Condition>& conditions() const { return conditions_; }
    /// Those that stand in a scope, but in no branch of it.
    const std::vector<std::size_t>& conditionsIn(std::size_t scope) const { return conditionsIn_[scope]; }
    /// How the conditions around a scope go when it is there.
    const Ways& waysTo(std::size_t scope) const { return ways_[scope]; }
    /// Whether the scope is there for certain.
    bool isThere(std::size_t scope, const Ways& ways) const;
    /// Whether one of the scopes is there whenever `scope` is, whichever way conditions go.
    bool isCovered(std::size_t scope, const std::set<std::size_t>& scopes) const;
    /// A condition under which the scope is there: "if_1 && !if_2"; empty for the mapping itself.
    std::string guardOf(std::size_t scope) const;

private:
    /// The same, of scopes in it alone.
    bool isFilled(std::size_t scope, const std::set<std::size_t>& scopes) const;

    const MappingView& view_;
    std::vector<Condition> conditions_;
    // Of each scope.
    std::vector<std::vector<std::size_t>> conditionsIn_;
    std::vector<Ways> ways_;
};

} // namespace hdnt::author
