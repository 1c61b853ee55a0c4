#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace hdnt::frontend {

/// The texts of tokens. Every string of a library goes from the scanner to the parser in one, and few exist at a time,
/// so they are used again; whoever has one may as well delete it. Of the loading thread, like scanner and parser.
class TokenTexts {
public:
    static std::string* make(const char* begin, const char* end) {
        if (spareCount_ == 0) return new std::string(begin, end);
        std::string* const text = spare_[spareCount_ - 1];
        text->assign(begin, end);
        --spareCount_;
        return text;
    }

    static void giveBack(std::string* text) noexcept {
        constexpr std::size_t longest = 256;
        if (spareCount_ < spare_.size() && text->capacity() <= longest) spare_[spareCount_++] = text;
        else delete text;
    }

private:
    inline static constinit std::array<std::string*, 64> spare_{};
    inline static constinit std::size_t spareCount_ = 0;
};

struct GiveBack {
    void operator()(std::string* text) const noexcept { TokenTexts::giveBack(text); }
};
/// A token's text that is given back when it has been used.
using TokenText = std::unique_ptr<std::string, GiveBack>;

} // namespace hdnt::frontend
