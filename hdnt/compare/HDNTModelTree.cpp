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

struct Head {
    size_t elements;
    size_t facets;
    size_t texts;
};

template <typename T>
std::string_view bytesOf(const std::vector<T>& items) {
    return {reinterpret_cast<const char*>(items.data()), items.size() * sizeof(T)};
}

template <typename T>
void take(std::string_view& bytes, T* items, size_t count) {
    if (bytes.size() / sizeof(T) < count) throw HEXDataException("Not a model tree");
    if (count > 0) std::memcpy(items, bytes.data(), count * sizeof(T));
    bytes.remove_prefix(count * sizeof(T));
}

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
    const Head head{elements_.size(), facets_.size(), texts_.size()};
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    bytes += bytesOf(elements_);
    bytes += bytesOf(facets_);
    return bytes += texts_;
}

HDNTModelTree HDNTModelTree::fromBytes(std::string_view bytes) {
    Head head{};
    take(bytes, &head, 1);
    if (head.elements == 0 || head.elements > bytes.size() / sizeof(Element) ||
        head.facets > bytes.size() / sizeof(Facet) || head.texts > bytes.size())
        throw HEXDataException("Not a model tree");
    HDNTModelTree tree;
    tree.elements_.resize(head.elements);
    tree.facets_.resize(head.facets);
    tree.texts_.resize(head.texts);
    take(bytes, tree.elements_.data(), head.elements);
    take(bytes, tree.facets_.data(), head.facets);
    take(bytes, tree.texts_.data(), head.texts);
    const auto fits = [](size_t begin, size_t length, size_t size) { return begin <= size && length <= size - begin; };
    const auto isText = [&](const Text& text) { return fits(text.begin, text.length, head.texts); };
    bool good = bytes.empty() && isTree(tree.elements_);
    for (const Facet& facet : tree.facets_)
        good = good && facet.facet <= HDNTElementFacet::disabled && isText(facet.text);
    for (const Element& element : tree.elements_)
        good = good && element.kind <= HDNTElementKind::expression && isText(element.name) && isText(element.file) &&
               fits(element.firstFacet, element.numFacets, head.facets);
    if (!good) throw HEXDataException("Not a model tree");
    return tree;
}
