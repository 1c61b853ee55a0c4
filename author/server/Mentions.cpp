#include "author/server/Mentions.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>

namespace hdnt::author::server {

namespace {

using Kind = Name::Kind;

bool isOfBlock(Kind kind) { return kind == Kind::pin || kind == Kind::property; }
bool isOfMapping(Kind kind) { return kind == Kind::instance || kind == Kind::signal; }

bool holdsElements(const Text& text) {
    const NtlList content = text.tree().content();
    return content == NtlList::none || content == NtlList::elements;
}

} // namespace

Mentions::Mentions(const Libraries& libraries, const Name& name, const Place& mapping)
    : libraries_(libraries), name_(name), mapping_(mapping) {}

void Mentions::forEach(const Visit& visit, const Text* only) const {
    for (const Span& span : spans(only)) {
        NameReader reader(libraries_, *span.text);
        for (std::uint32_t item = span.begin; item < span.end; ++item) {
            if (!mayBe(*span.text, item)) continue;
            const std::optional<Name> name = reader.at(item);
            if (name && name->key == name_.key) visit(*name);
        }
    }
}

std::vector<Mentions::Span> Mentions::spans(const Text* only) const {
    const auto wants = [&](const Text& text) { return !only || only == &text; };
    std::vector<Span> all;
    if (isOfMapping(name_.key.kind)) {
        if (!mapping_) return all;
        const Span span{mapping_.text, mapping_.get().begin, mapping_.get().end};
        if (wants(*span.text)) all.push_back(span);
        addIncluded(span, all, only);
        return all;
    }
    for (const Text& text : libraries_.texts()) {
        if (!isVisible(text.level)) continue;
        if (!isOfBlock(name_.key.kind)) {
            if (wants(text)) all.push_back({&text, 0, static_cast<std::uint32_t>(text.items().size())});
            continue;
        }
        for (const Span& span : spansOfBlock(text)) {
            if (wants(text)) all.push_back(span);
            addIncluded(span, all, only);
        }
    }
    return all;
}

// What names a pin or a property of a block names the block too: it is in its declaration, in its mapping, or in a
// mapping with an instance of it.
std::vector<Mentions::Span> Mentions::spansOfBlock(const Text& text) const {
    std::vector<Span> found;
    NodeChain chain(text);
    for (std::uint32_t item = 0; item < text.items().size(); ++item) {
        if (text.items()[item].kind != T_StringConstant ||
            !HSTStringUtils::iequals(contentOf(text, item), name_.key.owner))
            continue;
        const std::vector<std::uint32_t>& nodes = chain.around(item);
        if (nodes.size() < 2) continue;
        const SyntaxNode& node = text.node(holdsElements(text) ? nodes[1] : 0);
        if (found.empty() || found.back().begin != node.begin) found.push_back({&text, node.begin, node.end});
    }
    return found;
}

void Mentions::addIncluded(const Span& span, std::vector<Span>& all, const Text* only) const {
    const auto& statements = span.text->document->fileStatements();
    for (auto item = std::ranges::lower_bound(statements, span.begin); item != statements.end() && *item < span.end;
         ++item) {
        const Text* const file = libraries_.textAt(libraries_.inclusionOf(*span.text, *item).path);
        const bool isNew = file && std::ranges::find(all, file, &Span::text) == all.end();
        if (isNew && !holdsElements(*file) && (!only || only == file))
            all.push_back({file, 0, static_cast<std::uint32_t>(file->items().size())});
    }
}

// Where the name is declared, as seen from a level.
const Text* Mentions::home(std::size_t level) const {
    switch (name_.key.kind) {
    case Kind::function: return findFunction(libraries_, name_.key.text, level).text;
    case Kind::block: return findBlock(libraries_, name_.key.text, level).text;
    case Kind::file: return nullptr;
    default: return findBlock(libraries_, name_.key.owner, level).text;
    }
}

// A library sees what it declares itself, and else what its parents do.
bool Mentions::isVisible(std::size_t level) const {
    const std::size_t own = name_.at.text->level;
    if (level == own) return true;
    const Text* const here = home(own);
    const Text* const there = home(level);
    return here == there || (here && there && here->level == there->level);
}

bool Mentions::mayBe(const Text& text, std::uint32_t item) const {
    const int kind = text.items()[item].kind;
    const Name::Key& key = name_.key;
    switch (key.kind) {
    case Kind::file: return kind == frontend::SourceItem::FileStatement;
    case Kind::function: return kind == T_Identifier && text.textOf(item) == key.text;
    default: break;
    }
    if (kind != T_StringConstant || text.items()[item].length < key.text.size() + 2) return false;
    std::string_view content = contentOf(text, item);
    if (key.kind == Kind::pin && content.starts_with('~')) content.remove_prefix(1);
    if (key.kind == Kind::pin || key.kind == Kind::signal) content = baseOf(content);
    return HSTStringUtils::iequals(content, key.text);
}

} // namespace hdnt::author::server
