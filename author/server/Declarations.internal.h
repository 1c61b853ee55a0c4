#pragma once

#include "author/server/Names.internal.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace hdnt::author::server {

using Visit = std::function<void(const Place&)>;

/// Functions, blocks and mappings of a text.
void forEachElement(const Text& text, const Visit& visit);
/// What is declared of a block, also in files that it includes: pins, properties, flags.
void forEachEntity(const Libraries& libraries, const Place& block, const Visit& visit);
/// The properties of a pin.
void forEachProperty(const Libraries& libraries, const Place& pin, const Visit& visit);
/// Statements of that part in a mapping, also in braces and branches.
void forEachStatement(const Place& mapping, NtlPart part, const Visit& visit);

/// The declaration that a block's name stands for, as seen from a level: the first one in the nearest library. The name
/// is in upper case.
Place findBlock(const Libraries& libraries, std::string_view name, std::size_t level = 0);
Place findFunction(const Libraries& libraries, std::string_view name, std::size_t level = 0);
/// The same for requests that look up many: the blocks are read once. By the key of the name.
class BlockTable {
public:
    explicit BlockTable(const Libraries& libraries) : libraries_(libraries), levels_(libraries.levels()) {}
    Place find(const std::string& key, std::size_t level);

private:
    using Blocks = std::unordered_map<std::string, Place>;
    const Blocks& blocksOf(std::size_t level);

    const Libraries& libraries_;
    std::vector<std::optional<Blocks>> levels_;
};
/// By the key of a pin's name.
Place findPin(const Libraries& libraries, const Place& block, std::string_view key);
/// The name is in upper case; the owner is a block or a pin.
Place findProperty(const Libraries& libraries, const Place& owner, std::string_view name);
/// More than one in branches.
std::vector<Place> instancesOf(const Place& mapping, std::string_view name);

/// Where the name is declared; empty when it is nowhere.
std::vector<Place> declarationsOf(const Libraries& libraries, const Name& name, const Place& mapping);

/// The least and the greatest index in "A[7:0]" or "A[3]"; none without an index.
std::optional<std::pair<int, int>> indicesOf(std::string_view name);
/// Whether a name stands for a bit, or for some of the bits, of another one; a name without an index is all of them.
bool coversBit(std::string_view declared, std::string_view used);

/// The item with the name of what the node declares; the end of the node when there is none.
std::uint32_t nameItemOf(const Place& declaration);
/// The item that says the type of a property or of a function's result; the end of the node when none does.
std::uint32_t typeItemOf(const Place& declaration);
/// The name as it is written, and the key of it.
std::string_view nameOf(const Place& declaration);
std::string keyOfBlock(std::string_view written);

} // namespace hdnt::author::server
