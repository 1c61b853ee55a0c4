#pragma once

#include "author/server/Libraries.internal.h"
#include "author/server/Stretch.internal.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author::server {

/// A name in a text, and what it is of. Two with equal keys stand for the same.
struct Name {
    enum class Kind { block, pin, property, instance, signal, function, file };
    struct Key {
        Kind kind = Kind::block;
        std::string owner; ///< of pins and properties: the block; of instances and signals: the block with the mapping
        std::string pin;   ///< of a pin's property
        std::string text;  ///< as it is looked up: blocks, properties and uses of pins in upper case; without a range

        bool operator==(const Key&) const = default;
    };
    Key key;
    Place at;               ///< the innermost node around it
    std::uint32_t item = 0; ///< what it is in
    Stretch stretch;        ///< of the text: all between the quotes but the "~" of an inverted pin
    bool declares = false;

    std::string_view written() const {
        return at.text->items().text().substr(stretch.begin, stretch.end - stretch.begin);
    }
};

/// A name without "[7:0]" or "[3]".
std::string_view baseOf(std::string_view name);

/// What stands between the quotes of a string, also of one without its second quote.
Stretch insideOf(const frontend::SourceItems& items, std::uint32_t item);
std::string_view contentOf(const Text& text, std::uint32_t item);

/// The strings and identifiers that are items of the node itself, up to where its body begins.
std::vector<std::uint32_t> wordsOf(const Place& place, int kind = T_StringConstant);
/// What stands at that place among the strings of the node; empty when it is not there.
std::string_view stringOf(const Place& place, std::size_t which);

/// From the whole text to the innermost node that an item is in. Items that come in order cost one pass together.
class NodeChain {
public:
    explicit NodeChain(const Text& text) : text_(text) {}
    const std::vector<std::uint32_t>& around(std::uint32_t item);

private:
    const Text& text_;
    std::uint32_t outermost_ = 1; ///< no element before it has the last item
    std::vector<std::uint32_t> chain_;
};

/// The names of a text.
class NameReader {
public:
    NameReader(const Libraries& libraries, const Text& text) : libraries_(libraries), text_(text), chain_(text) {}

    /// None: the item is no name.
    std::optional<Name> at(std::uint32_t item);
    /// At an offset, or right behind it.
    std::optional<Name> atOffset(std::size_t offset);

    // Of the item asked for last; of none, nothing:
    /// The node of that part around it; empty when it is in none.
    Place around(std::initializer_list<NtlPart> parts) const;
    /// The block that it is in, by its name in upper case; also for what a block includes. Empty: in none.
    std::string block() const;
    /// The mapping that it is in; a text of statements is one.
    Place mapping() const;

private:
    using Kind = Name::Kind;
    std::optional<Name> named(Kind kind, std::string owner = {}, std::string pin = {});
    std::optional<Name> string(const Place& place);
    std::optional<Name> pinOf(const Place& reference);
    std::optional<Name> property(const Place& place);
    std::optional<Name> argument();
    std::size_t position(const Place& place) const;
    std::string pinKeyOf(const Place& reference) const;
    std::string targetOf(std::string_view instance, std::string_view pin) const;
    std::string targetOfPin(const Place& reference) const;
    Place innermost() const { return {&text_, nodes_->back()}; }

    const Libraries& libraries_;
    const Text& text_;
    NodeChain chain_;
    const std::vector<std::uint32_t>* nodes_ = nullptr;
    std::uint32_t item_ = 0;
};

/// The item at an offset; between two that touch, a string or an identifier, else the second. The number of items when
/// there is none.
std::uint32_t itemAt(const frontend::SourceItems& items, std::size_t offset);

} // namespace hdnt::author::server
