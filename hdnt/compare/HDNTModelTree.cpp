#include "hdnt/compare/HDNTModelTree.h"

#include "hdnt/compare/TreeBuilder.internal.h"
#include "hdnt/model/HDNTNode.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>

namespace hdnt::compare {

HDNTModelTree::Text TreeBuilder::keep(std::string_view text) {
    const HDNTModelTree::Text piece{tree_.texts_.size(), text.size()};
    tree_.texts_ += text;
    return piece;
}

void TreeBuilder::restart() {
    tree_.elements_.clear();
    tree_.facets_.clear();
    tree_.texts_.clear();
    files_.clear();
}

void TreeBuilder::open(HDNTElementKind kind, std::string_view name, const HDNTNode& node) {
    open_.push_back(tree_.elements_.size());
    HDNTModelTree::Element element{kind, keep(name), tree_.facets_.size(), 0, 0, {}, 0, 0};
    if (places_ == Places::Kept) place(element, node);
    tree_.elements_.push_back(element);
}

void TreeBuilder::place(HDNTModelTree::Element& element, const HDNTNode& node) {
    const auto location = node.copyOfLocation();
    if (!location) return;
    if (const char* const file = location->fileName) {
        const auto found = files_.find(file);
        element.file = found != files_.end() ? found->second : files_.emplace(file, keep(file)).first->second;
    }
    element.line = location->fileLine;
    element.column = location->first_column;
}

void TreeBuilder::facet(HDNTElementFacet facet, std::string_view text) {
    tree_.facets_.push_back({facet, keep(text)});
    ++tree_.elements_[open_.back()].numFacets;
}

void TreeBuilder::flag(HDNTElementFacet facet, bool on) {
    if (on) this->facet(facet, "true");
}

void TreeBuilder::close() {
    tree_.elements_[open_.back()].numDescendants = tree_.elements_.size() - open_.back() - 1;
    open_.pop_back();
}

template <char... special>
static void addEscaped(std::string& out, std::string_view text) {
    bool isPlain = true;
    for (const char c : text) isPlain &= ((c != special) && ...); // to the end: many are compared at once
    if (isPlain) {
        out += text;
        return;
    }
    for (const char c : text) {
        if (((c == special) || ...)) out += '\\';
        out += c;
    }
}

std::string pathPart(std::string_view name) {
    std::string part;
    addEscaped<'/', '#', '\\'>(part, name);
    return part;
}

void addQuoted(std::string& out, std::string_view text) {
    out += '"';
    addEscaped<'"', '\\'>(out, text);
    out += '"';
}

std::string quoted(std::string_view text) {
    std::string result;
    result.reserve(text.size() + 2);
    addQuoted(result, text);
    return result;
}

static std::string numberText(double value) {
    if (std::isnan(value)) {
        std::array<char, 64> digits;
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return "nan:" + std::string(digits.data(), std::to_chars(digits.begin(), digits.end(), bits, 16).ptr);
    }
    return platform::DoubleText(value, platform::DoubleForm::WithPoint).str();
}

std::string valueText(const Value& value) {
    if (const auto* const number = std::get_if<double>(&value)) return numberText(*number);
    const auto* const text = std::get_if<std::string>(&value);
    return text ? quoted(*text) : hdnt::textOf(value);
}

} // namespace hdnt::compare

const HDNTModelTree::Text* HDNTModelTree::find(size_t element, HDNTElementFacet facet) const {
    const auto begin = facets_.begin() + static_cast<std::ptrdiff_t>(elements_[element].firstFacet);
    const auto end = begin + static_cast<std::ptrdiff_t>(elements_[element].numFacets);
    const auto found = std::find_if(begin, end, [&](const Facet& item) { return item.facet == facet; });
    return found == end ? nullptr : &found->text;
}

namespace {

// Each number is a word of its own: between the members of a structure there would be what was in memory before.
using Word = std::uint64_t;
constexpr size_t wordsOfHead = 3;
constexpr size_t wordsOfElement = 10;
constexpr size_t wordsOfFacet = 3;

void put(std::string& bytes, std::initializer_list<Word> words) {
    bytes.append(reinterpret_cast<const char*>(words.begin()), words.size() * sizeof(Word));
}

[[noreturn]] void refuse() { throw HEXDataException("Not a model tree"); }

/// Takes from bytes of which there are enough; refuses numbers that do not fit.
class Words {
public:
    explicit Words(const char* bytes) : bytes_(bytes) {}
    Word next(Word greatest) {
        Word word = 0;
        std::memcpy(&word, bytes_, sizeof word);
        bytes_ += sizeof word;
        if (word > greatest) refuse();
        return word;
    }
    template <typename Enum>
    Enum kind(Enum last) {
        return static_cast<Enum>(next(static_cast<Word>(last)));
    }
    int number() { return static_cast<int>(next(std::numeric_limits<std::uint32_t>::max())); }
    HDNTModelTree::Text text(Word size) {
        const Word begin = next(size);
        return {begin, next(size - begin)};
    }

private:
    const char* bytes_;
};

// Whether all is below the first element, and nothing below two that are not below each other: such a thing would be
// walked once for each way that leads to it.
bool isTree(const std::vector<HDNTModelTree::Element>& elements) {
    std::vector<size_t> ends = {elements.size()}; // of the elements that are open, the outermost first
    for (size_t i = 0; i < elements.size(); ++i) {
        while (ends.back() == i) ends.pop_back();
        const size_t below = elements[i].numDescendants;
        const size_t room = ends.back() - i - 1;
        if (below > room || (i == 0 && below < room)) return false;
        ends.push_back(i + 1 + below);
    }
    return true;
}

} // namespace

std::string HDNTModelTree::toBytes() const {
    std::string bytes;
    put(bytes, {elements_.size(), facets_.size(), texts_.size()});
    const auto word = [](int number) { return Word{static_cast<std::uint32_t>(number)}; };
    for (const Element& one : elements_)
        put(bytes, {static_cast<Word>(one.kind), one.name.begin, one.name.length, one.firstFacet, one.numFacets,
                    one.numDescendants, one.file.begin, one.file.length, word(one.line), word(one.column)});
    for (const Facet& one : facets_) put(bytes, {static_cast<Word>(one.facet), one.text.begin, one.text.length});
    return bytes += texts_;
}

HDNTModelTree HDNTModelTree::fromBytes(std::string_view bytes) {
    const size_t size = bytes.size() / sizeof(Word);
    if (size < wordsOfHead) refuse();
    Words words(bytes.data());
    const size_t elements = words.next(size / wordsOfElement);
    const size_t facets = words.next(size / wordsOfFacet);
    const size_t texts = words.next(bytes.size());
    const size_t numbers = (wordsOfHead + elements * wordsOfElement + facets * wordsOfFacet) * sizeof(Word);
    if (elements == 0 || numbers + texts != bytes.size()) refuse();
    HDNTModelTree tree;
    tree.texts_ = bytes.substr(numbers);
    tree.elements_.reserve(elements);
    for (size_t i = 0; i < elements; ++i) {
        Element& one = tree.elements_.emplace_back();
        one.kind = words.kind(HDNTElementKind::expression);
        one.name = words.text(texts);
        one.firstFacet = words.next(facets);
        one.numFacets = words.next(facets - one.firstFacet);
        one.numDescendants = words.next(elements - i - 1);
        one.file = words.text(texts);
        one.line = words.number();
        one.column = words.number();
    }
    tree.facets_.reserve(facets);
    for (size_t i = 0; i < facets; ++i) {
        Facet& one = tree.facets_.emplace_back();
        one.facet = words.kind(HDNTElementFacet::disabled);
        one.text = words.text(texts);
    }
    if (!isTree(tree.elements_)) refuse();
    return tree;
}
