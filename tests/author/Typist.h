#pragma once

#include "tests/support/Mutant.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <string>
#include <utility>

namespace support {

using Json = nlohmann::json;

/// A position, counted from the beginning of the text on.
inline Json positionIn(const std::string& text, std::size_t offset, bool isUtf8) {
    std::size_t line = 0;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < offset; ++at) {
        if (text[at] != '\n' && (text[at] != '\r' || (at + 1 < text.size() && text[at + 1] == '\n'))) continue;
        ++line;
        begin = at + 1;
    }
    std::size_t units = 0;
    for (std::size_t at = begin; at < offset; ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        units += isUtf8 ? 1 : (byte & 0xc0U) == 0x80U ? 0 : byte >= 0xf0 ? 2 : 1;
    }
    return {{"line", line}, {"character", units}};
}

/// Changes of a text at random places, as an editor would send them.
class Typist {
public:
    /// Numbers decide what is typed.
    Typist(std::function<std::size_t()> numbers, bool isUtf8) : random_(std::move(numbers)), isUtf8_(isUtf8) {}

    Json type() {
        Json changes = Json::array();
        for (std::size_t count = 1 + random_() % 3; count > 0; --count) changes.push_back(change());
        return changes;
    }
    const std::string& text() const { return text_; }

private:
    // Not within a character or a line end.
    std::size_t placeFrom(std::size_t offset) const {
        const auto isInside = [&] {
            const bool continues =
                offset < text_.size() && (static_cast<unsigned char>(text_[offset]) & 0xc0U) == 0x80U;
            return continues || (offset > 0 && text_[offset - 1] == '\r' && text_[offset] == '\n');
        };
        while (isInside()) ++offset;
        return offset;
    }

    Json change() {
        static const std::string pieces[] = {"",
                                             "a",
                                             ";",
                                             "\"",
                                             "}",
                                             "{",
                                             "\n",
                                             "\r\n",
                                             "\r",
                                             " ",
                                             "/*",
                                             "*/\n",
                                             "//",
                                             ",",
                                             "\xc3\xa4",
                                             "\xf0\x9f\x98\x80",
                                             "block \"B\" { }\n"};
        if (random_() % 50 == 0) return {{"text", text_ = support::everything}};
        constexpr std::size_t most = 40;
        const std::size_t begin = placeFrom(random_() % (text_.size() + 1));
        const std::size_t length = random_() % 2 == 0 ? 0 : random_() % most;
        const std::size_t end = placeFrom(std::min(begin + length, text_.size()));
        const std::string& piece = pieces[random_() % std::size(pieces)];
        const Json range = {{"start", positionIn(text_, begin, isUtf8_)}, {"end", positionIn(text_, end, isUtf8_)}};
        text_.replace(begin, end - begin, piece);
        return {{"range", range}, {"text", piece}};
    }

    std::function<std::size_t()> random_;
    bool isUtf8_;
    std::string text_ = support::everything;
};

} // namespace support
