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
        none,   ///< nothing is proposed: in comments, numbers and statements of files
        plain,  ///< a keyword or identifier, or nothing yet
        quoted, ///< a string with its quotes, as far as they are there
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
        signal = 18
    };
    std::string label;
    Kind kind;
    std::string detail;
    bool isQuoted = true;
    std::size_t rank = 0; ///< what is nearer comes first
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

/// What a text could mean with a string in place of a word of it.
class StringRole {
public:
    StringRole(const Libraries& libraries, const Stretch& word);
    StringRole(const StringRole&) = delete;

    /// The names that fit its role.
    void proposeNames(Proposals& to);
    /// The property that an "assign" statement gives a value to, when the string is that value and nothing more.
    Place assigned();

private:
    void proposeBlocks(Proposals& to) const;
    void proposeInstances(Proposals& to) const;
    void proposePins(const Place& block, Proposals& to) const;
    void proposeSignals(Proposals& to) const;
    void proposeConnected(Proposals& to) const;
    void proposeProperties(const Name& name, Proposals& to) const;

    struct Changed {
        Document document;
        std::size_t at; ///< of the string
    };
    static Changed withString(const Document& document, const Stretch& word);

    const Libraries& libraries_;
    Changed changed_;
    Text text_;
    NameReader reader_;
    std::uint32_t item_;
};

/// The values that it lists; of a bool both.
void proposeValues(const Place& property, Proposals& to);
void proposeFunctions(const Libraries& libraries, Proposals& to);

} // namespace hdnt::author::server
