#pragma once

#include "author/server/Declarations.internal.h"

#include <functional>
#include <vector>

namespace hdnt::author::server {

/// All places of a name, its declarations among them: text after text, and in the order of each. Nothing is kept for
/// that: the strings of the texts are compared, and what those that fit stand for is looked up.
class Mentions {
public:
    using Visit = std::function<void(const Name&)>;
    /// The mapping is the one around the name, if any.
    Mentions(const Libraries& libraries, const Name& name, const Place& mapping);

    /// `only`: the text to look in; null: all.
    void forEach(const Visit& visit, const Text* only = nullptr) const;

private:
    struct Span {
        const Text* text;
        std::uint32_t begin; ///< items
        std::uint32_t end;
    };
    std::vector<Span> spans(const Text* only) const;
    std::vector<Span> spansOfBlock(const Text& text) const;
    void addIncluded(const Span& span, std::vector<Span>& all, const Text* only) const;
    bool isVisible(std::size_t level) const;
    const Text* home(std::size_t level) const;
    bool mayBe(const Text& text, std::uint32_t item) const;

    const Libraries& libraries_;
    const Name& name_;
    Place mapping_;
};

} // namespace hdnt::author::server
