// What a name stands for, in short.
#include "author/server/FolderLoader.internal.h"
#include "author/server/NameRequest.internal.h"
#include "author/server/keywords.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"

#include <libconfig.h++>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace hdnt::author::server {

namespace {

using frontend::SourceItem;

/// Tokens in one line, as they are usually laid out.
std::string lineOf(const Text& text, std::uint32_t begin, std::uint32_t end) {
    std::string line;
    for (std::uint32_t item = begin; item < end; ++item) {
        const int kind = text.items()[item].kind;
        if (kind <= 0) continue;
        const bool closes = kind == ';' || kind == ',' || kind == ')';
        if (!line.empty() && !closes && kind != '(' && !line.ends_with('(')) line += ' ';
        line += text.textOf(item);
    }
    return line;
}

/// What a declaration says before its body, or with it.
std::string declarationLine(const Place& place, bool withBody) {
    const SyntaxNode& node = place.get();
    std::uint32_t end = node.begin;
    while (end < node.end && (withBody || place.text->items()[end].kind != '{')) ++end;
    std::string line = lineOf(*place.text, node.begin, end);
    if (line.ends_with(';')) line.pop_back();
    return line;
}

} // namespace

std::string commentAbove(const Place& place) {
    const frontend::SourceItems& items = place.text->items();
    std::uint32_t first = place.get().begin;
    for (std::uint32_t below = first; first > 0; below = --first) {
        const SourceItem& above = items[first - 1];
        if (!above.isComment() || !above.startsLine || items[below].newlines != 1) break;
    }
    std::string all;
    for (std::uint32_t item = first; item < place.get().begin; ++item) {
        std::string_view comment = items.textOf(item);
        const bool isBlock = comment.starts_with("/*");
        comment.remove_prefix(2);
        if (isBlock && comment.ends_with("*/")) comment.remove_suffix(2);
        for (std::size_t begin = 0; begin <= comment.size();) {
            const std::size_t end = std::min(comment.find('\n', begin), comment.size());
            std::string_view line = comment.substr(begin, end - begin);
            line.remove_prefix(std::min(line.find_first_not_of(" \t\r*"), line.size()));
            line.remove_suffix(line.size() - (line.find_last_not_of(" \t\r") + 1));
            if (!line.empty()) all.append(all.empty() ? "" : "\n").append(line);
            begin = end + 1;
        }
    }
    return all;
}

namespace {

// What a configuration file says, as it is now; empty when it says nothing, or is faulty, which loading tells.
std::string configuredText(const char* file, std::initializer_list<std::string_view> names) {
    try {
        ConfigBase config;
        config.readFile(file);
        const libconfig::Setting* const text = config.find(names);
        return text && text->getType() == libconfig::Setting::TypeString ? text->c_str() : "";
    } catch (const HEXDataException&) {
        return {};
    }
}

/// Markdown of a declaration: it itself, what a block declares, and the comment above.
class Sheet {
public:
    explicit Sheet(const Libraries& libraries) : libraries_(libraries) {}

    std::string of(const Place& place) const {
        const NtlPart part = place.get().part;
        const bool isBlock = part == NtlPart::block;
        std::string code = declarationLine(place, part == NtlPart::property);
        if (isBlock) code += entitiesOf(place);
        return asCode(code) + paragraph(commentAbove(place)) + (isBlock ? "" : ownerOf(place));
    }
    static std::string asCode(const std::string& code) { return "```ntl\n" + code + "\n```\n"; }
    /// Text that means nothing to Markdown.
    static std::string paragraph(std::string_view text) {
        if (text.empty()) return {};
        std::string plain = "\n";
        for (const char c : text) {
            if (std::string_view("\\`*_{}[]<>()#+-!|&").find(c) != std::string_view::npos) plain += '\\';
            plain += c;
            if (c == '\n') plain.insert(plain.size() - 1, "  ");
        }
        return plain + '\n';
    }

private:
    std::string entitiesOf(const Place& block) const {
        std::string flags, pins, properties, mapping;
        forEachEntity(libraries_, block, [&](const Place& place) {
            switch (place.get().part) {
            case NtlPart::flag: flags += line(place, true); break;
            case NtlPart::pin: pins += line(place, false); break;
            case NtlPart::property: properties += line(place, true); break;
            case NtlPart::section: mapping += '\n' + declarationLine(place, false); break;
            default: break;
            }
        });
        return flags + pins + properties + mapping;
    }
    static std::string line(const Place& place, bool withBody) { return "\n  " + declarationLine(place, withBody); }

    std::string ownerOf(const Place& place) const {
        NameReader reader(libraries_, *place.text);
        reader.at(nameItemOf(place));
        const Place block = reader.around({NtlPart::block});
        if (!block) return {};
        std::string more;
        if (place.get().part == NtlPart::property)
            more = configuredText("tessel.desc.cfg", {nameOf(block), nameOf(place)});
        if (place.get().part == NtlPart::pin) more = factsOfPin(nameOf(block), nameOf(place));
        return paragraph(more) + paragraph("Block " + std::string(nameOf(block)));
    }
    static std::string factsOfPin(std::string_view block, std::string_view pin) {
        std::string facts;
        if (const auto range = indicesOf(pin))
            facts = std::to_string(std::int64_t{range->second} - range->first + 1) + " bits";
        const std::string function =
            configuredText("HDNTApplicationData.cfg", {"CELLS", block, "pinFunctions", baseOf(pin)});
        if (!function.empty()) facts += (facts.empty() ? "function: " : ", function: ") + function;
        return facts;
    }

    const Libraries& libraries_;
};

Json markdown(const std::string& text) { return {{"kind", "markdown"}, {"value", text}}; }

/// The statements that join pins to a signal behind its declaration.
std::string connectionsOf(const NameRequest& asked) {
    std::string code;
    if (!asked.mapping) return code;
    forEachStatement(asked.mapping, NtlPart::connect, [&](const Place& place) {
        if (baseOf(stringOf(place, 0)) != asked.name->key.text) return;
        code += (code.empty() ? "" : "\n") + declarationLine(place, true);
    });
    return code.empty() ? code : Sheet::asCode(code);
}

std::string markdownOf(const NameRequest& asked) {
    const Sheet sheet(asked.libraries);
    std::string text;
    for (const Place& place : declarationsOf(asked.libraries, *asked.name, asked.mapping)) {
        text += sheet.of(place);
        if (place.get().part != NtlPart::inst) continue;
        const Place block = findBlock(asked.libraries, keyOfBlock(stringOf(place, 1)), asked.text().level);
        if (block) text += sheet.of(block);
    }
    if (asked.name->key.kind == Name::Kind::signal) text += connectionsOf(asked);
    if (asked.name->key.kind == Name::Kind::file) text = Sheet::paragraph(asked.name->key.text);
    return text;
}

/// What a word of the language says; null when none is there.
Json meaningAt(const NameRequest& asked, Encoding encoding) {
    const frontend::SourceItems& items = asked.text().items();
    const std::uint32_t item = itemAt(items, asked.offset);
    if (item >= items.size()) return nullptr;
    const std::string_view whole = items.textOf(item);
    const std::string_view word = whole.substr(0, whole.find_first_of(" \t\n;")); // of INCLUDE and INLINE
    const std::size_t begin = items[item].offset;
    const std::string_view meaning = meaningOf(word);
    if (meaning.empty() || asked.offset > begin + word.size()) return nullptr;
    return {{"contents", markdown(Sheet::asCode(std::string(word)) + '\n' + std::string(meaning) + '\n')},
            {"range", Locations(encoding).rangeIn(asked.text(), {begin, begin + word.size()})}};
}

} // namespace

std::string lineOfDeclaration(const Place& place) { return declarationLine(place, false); }

std::string sheetOf(const Libraries& libraries, const Place& place) { return Sheet(libraries).of(place); }

static Json hoverOf(const std::string& text, const Json& range) {
    return text.empty() ? Json() : Json{{"contents", markdown(text)}, {"range", range}};
}

Json hover(Session& session, const Json& params) {
    const NameRequest asked(session, params);
    if (Json meaning = meaningAt(asked, session.encoding); !meaning.is_null()) return meaning;
    const auto rangeOf = [&](const Stretch& stretch) {
        return Locations(session.encoding).rangeIn(asked.text(), stretch);
    };
    const std::string text = asked.name ? markdownOf(asked) : std::string();
    const std::optional<Expression> expression = expressionAt(asked);
    if (!expression) return asked.name ? hoverOf(text, rangeOf(asked.name->stretch)) : Json();
    const Json range = rangeOf(asked.name ? asked.name->stretch : expression->stretch);
    const auto work = [&session, expression = *expression, text, range] {
        const std::string value = valueOf(expression, openTexts(session));
        return Json{{"result", hoverOf(text + Sheet::paragraph(value), range)}};
    };
    session.answerLater(work, {}, hoverOf(text, range));
    return nullptr;
}

} // namespace hdnt::author::server
