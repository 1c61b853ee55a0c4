#pragma once

#include "bindings/tcl/Convert.h"

#include <functional>
#include <vector>

namespace hdnt::tcl {

/// A subcommand that is asked of a model object: of a handle's, or of one that was named on the way.
struct Call {
    Session& session;
    HDNTNode& node;
    const std::shared_ptr<SharedLibrary>& life; ///< of the node's library
    int count;
    Tcl_Obj* const* words;
    int at; ///< where the subcommand stands

    Tcl_Interp* interp() const { return session.interp(); }
    template <typename Class>
    Class& as() const {
        return static_cast<Class&>(node);
    }
    /// The arguments behind the subcommand.
    int arguments() const { return count - at - 1; }
    Tcl_Obj* argument(int index) const { return words[at + 1 + index]; }
    /// The same subcommand words, asked of another object, from an argument on.
    Call of(HDNTNode& other, const std::shared_ptr<SharedLibrary>& its, int argument) const {
        return {session, other, its, count, words, at + 1 + argument};
    }
    Tcl_Obj* wrap(HDNTNode* other) const { return session.wrap(other, life); }
};

struct Subcommand {
    const char* name;
    Tcl_Obj* (*run)(const Call& call);
    int least;
    int most; ///< -1: any number
    const char* usage;
    bool isField; ///< plain data that needs no argument: part of `get`
};

/// Runs the subcommand that stands at call.at.
Tcl_Obj* runSubcommand(const Call& call);
/// Throws after Tcl's own message about wrong arguments.
[[noreturn]] void wrongArguments(const Call& call, const char* usage);

// Each gives the subcommands of its types.
std::vector<Subcommand> librarySubcommands();
/// Of blocks and what they declare.
std::vector<Subcommand> blockSubcommands(HDNTNodeKind kind);
/// Of mappings and functions, and of all that is in one.
std::vector<Subcommand> netlistSubcommands(HDNTNodeKind kind);
std::vector<Subcommand> expressionSubcommands(HDNTNodeKind kind);
/// What libraries and blocks have in common: texts, differences, walks.
std::vector<Subcommand> textSubcommands();
Tcl_Obj* visit(const Call& call);
Tcl_Obj* expand(const Call& call);
/// The package's own commands.
void addCommands(Tcl_Interp* interp);
void addAuthoringCommands(Tcl_Interp* interp);
void beginSession(Tcl_Interp* interp);

/// The list of differences of two libraries or blocks.
Tcl_Obj* differences(const HandleInUse& before, const HandleInUse& after);
/// The handle behind an argument that must be of a kind. Throws DeadHandle, or Refused.
Handle& handleOf(Session& session, Tcl_Obj* word, HDNTNodeKind kind);

using scripts::Accessor;
using scripts::NodeList;
using scripts::NodePointer;

template <auto F>
Tcl_Obj* getter(const Call& call) {
    using Result = std::remove_cvref_t<typename Accessor<decltype(F)>::Result>;
    auto& node = call.as<typename Accessor<decltype(F)>::Node>();
    if constexpr (NodePointer<Result>) return call.wrap(std::invoke(F, node));
    else if constexpr (NodeList<Result>)
        return toTcl(listOf(std::invoke(F, node), [&](auto* item) { return Obj(call.wrap(item)); }));
    else return toTcl(std::invoke(F, node));
}

/// "?-names? ?pattern?": handles, or names without handles, of the elements whose names match.
Tcl_Obj* elements(const Call& call, const scripts::Listing& list);
/// "name ?subcommand ...?": an element, or what that answers; no handle is made for it then.
Tcl_Obj* element(const Call& call, const scripts::Listing& list, HDNTNodeKind kind);

template <auto Get>
void add(std::vector<Subcommand>& all, const scripts::Field<Get>& field) {
    using Result = std::remove_cvref_t<typename Accessor<decltype(Get)>::Result>;
    all.push_back({field.name, getter<Get>, 0, 0, nullptr, !NodePointer<Result> && !NodeList<Result>});
}
template <const scripts::Listing& List, HDNTNodeKind Kind>
void add(std::vector<Subcommand>& all, const scripts::ListField<List, Kind>& field) {
    all.push_back(
        {field.name, [](const Call& call) { return elements(call, List); }, 0, 2, "?-names? ?pattern?", false});
    all.push_back(
        {field.one, [](const Call& call) { return element(call, List, Kind); }, 1, -1, "name ?subcommand ...?", false});
}

/// The fields of one of the shared tables, and more.
template <typename Table>
std::vector<Subcommand> subcommands(const Table& table, std::initializer_list<Subcommand> more = {}) {
    std::vector<Subcommand> all;
    all.reserve(2 * std::tuple_size_v<Table> + more.size());
    std::apply([&](const auto&... each) { (add(all, each), ...); }, table);
    for (const Subcommand& one : more) all.push_back(one);
    return all;
}

} // namespace hdnt::tcl
