#pragma once

#include "author/exchange/BlockJson.h"
#include "hdnt/platform/WordTable.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace hdnt::author {

/// Why a part of a document is not taken over, with its place.
struct JsonRefusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A part of a JSON document that may hold anything, and where it stands. What is asked for and is not there, or is
/// something else, throws JsonRefusal.
class JsonItem {
public:
    /// The document is borrowed.
    explicit JsonItem(const Json& document) : json_(&document) {}

    const Json& json() const { return *json_; }
    /// With the place in front, a JSON pointer.
    [[noreturn]] void refuse(const std::string& why) const;

    /// Whether the object has something other than null there.
    bool has(const char* key) const;
    JsonItem operator[](const char* key) const;
    /// Each of a list, in order; of a key that is not there or null, none.
    template <typename Action>
    void forEach(const char* key, Action&& action) const {
        if (has(key)) (*this)[key].forEach(action);
    }
    template <typename Action>
    void forEach(Action&& action) const {
        const std::size_t size = list().size();
        for (std::size_t i = 0; i < size; ++i) action(at(i));
    }

    bool isTrue(const char* key) const; ///< false when it is not there
    const std::string& text() const;
    long integer(long least, long most) const;
    double number() const;
    /// A text that is among the words, as it stands there.
    template <typename Table>
    std::string_view word(const Table& table) const {
        std::string all;
        for (const auto& entry : table) {
            if (entry.word == text()) return entry.word;
            all += (all.empty() ? "" : ", ") + std::string(entry.word);
        }
        refuse("\"" + text() + "\" is none of " + all);
    }

private:
    JsonItem(const Json& json, std::string place) : json_(&json), place_(std::move(place)) {}
    const Json& list() const;
    JsonItem at(std::size_t index) const;

    const Json* json_;
    std::string place_;
};

} // namespace hdnt::author
