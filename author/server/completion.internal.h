#pragma once

#include "author/server/NameRequest.internal.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hdnt::author::server {

/// What is being typed at an offset, and is replaced by what is accepted.
struct Word {
    enum class Kind {
        none,   ///< nothing is proposed: in comments and numbers
        plain,  ///< a keyword or identifier, or nothing yet
        quoted, ///< a string with its quotes, as far as they are there
        file,   ///< the name in an INCLUDE or INLINE statement
    };
    Kind kind = Kind::plain;
    Stretch stretch;
};
Word wordAt(const frontend::SourceItems& items, std::size_t offset);

struct Proposal {
    /// The numbers of the protocol.
    enum class Kind {
        function = 3,
        pin = 5,
        instance = 6,
        block = 7,
        property = 10,
        value = 12,
        keyword = 14,
        snippet = 15,
        file = 17,
        signal = 18
    };
    std::string label;
    Kind kind;
    std::string detail;
    bool isQuoted = true;
    std::size_t rank = 0;  ///< what is nearer comes first
    std::string body = {}; ///< of a snippet: what is put in, with places to fill in
};

/// Without those that were there before, from nearer.
class Proposals {
public:
    void add(Proposal proposal);
    /// By rank and label.
    std::vector<Proposal> sorted() &&;

private:
    std::vector<Proposal> all_;
    std::set<std::pair<Proposal::Kind, std::string>> known_;
};

/// A property that has a value at a place.
struct PropertyValue {
    Place property;      ///< none: no value of one stands there, or something beside it
    bool isText = false; ///< it is written in quotes, whatever its type
};

/// What a text could mean with a constant in place of a word of it.
class ConstantRole {
public:
    ConstantRole(const Libraries& libraries, const Stretch& word, std::string_view constant);
    ConstantRole(const ConstantRole&) = delete;

    /// The names that fit its role.
    void proposeNames(Proposals& to);
    /// What an "assign" statement gives a property, a declaration has as default, or is compared with a property, when
    /// the constant is that and nothing more.
    PropertyValue value();
    /// What "primgroup" says elsewhere, when the constant is of one.
    void proposeGroups(Proposals& to);

private:
    void proposeBlocks(Proposals& to) const;
    void proposeInstances(Proposals& to) const;
    void proposePins(const Place& block, Proposals& to) const;
    void proposeSignals(Proposals& to) const;
    void proposeConnected(Proposals& to) const;
    void proposeProperties(const Name& name, Proposals& to) const;
    PropertyValue compared();
    Place propertyAt(std::uint32_t item);

    struct Changed {
        Document document;
        std::size_t at; ///< of the constant
    };
    static Changed with(std::string_view constant, const Document& document, const Stretch& word);

    const Libraries& libraries_;
    Changed changed_;
    Text text_;
    NameReader reader_;
    std::uint32_t item_;
};

void proposeFunctions(const Libraries& libraries, Proposals& to);

// completionValues.cpp
/// Of a property, as it is written.
std::string typeOf(const Place& property);
/// The values that it lists; of a bool both.
void proposeValues(const PropertyValue& value, Proposals& to);
/// Below the directories where files are sought; by what is typed of the name.
void proposeFiles(const Libraries& libraries, std::string_view typed, Proposals& to);

} // namespace hdnt::author::server
