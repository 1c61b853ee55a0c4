#include "author/syntax/Recovery.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <string>
#include <string_view>

// What a change of the text does for good that a repair did for the parser.
namespace hdnt::author {

namespace {

using Kind = Repair::Kind;
using Code = SyntaxCode;
using MaybeMend = std::optional<SyntaxMend>;

std::uint32_t endOf(const SourceItem& item) { return item.offset + item.length; }

// Empty: its text is not known, or, of operators, which of them is meant.
std::string spellingOf(int token) {
    if (frontend::operators.contains(token)) return {};
    if (token > 0 && token < T_Library) return {static_cast<char>(token)};
    return std::string(frontend::spellingOf(token));
}

class Mender {
public:
    Mender(const SourceItems& items, const Fault& fault, const Repair& repair)
        : items_(items), fault_(fault), repair_(repair) {}

    MaybeMend of(const SyntaxMessage& message) const {
        switch (message.code) {
        case Code::misspeltWord:
            if (repair_.kind == Kind::misspelt) return replaced(fault_.item, meant(fault_.item));
            return repair_.kind == Kind::misspeltBefore ? replaced(fault_.before, meant(fault_.before)) : MaybeMend();
        case Code::missingToken: return missing(message);
        case Code::unclosedBrace: return message.relatedText.empty() ? MaybeMend() : closed(message);
        case Code::trailingComma: return removed(fault_.before);
        case Code::unexpectedToken:
            if (repair_.kind == Kind::extra) return removed(fault_.item);
            return repair_.kind == Kind::extraBefore ? removed(fault_.before) : MaybeMend();
        case Code::wrongToken: return wrong();
        case Code::wrongOrder: return repair_.kind == Kind::swapped ? swapped() : MaybeMend();
        case Code::numberForm: return number();
        default: return {};
        }
    }

private:
    bool hasItem() const { return fault_.item < items_.size(); }
    MaybeMend replaced(std::size_t item, std::string text) const {
        if (text.empty()) return {};
        return SyntaxMend{items_[item].offset, items_[item].length, std::move(text)};
    }

    std::string meant(std::size_t item) const {
        if (repair_.token != T_BoolConstant) return spellingOf(repair_.token);
        const char first = HSTStringUtils::to_lower_copy(std::string(items_.textOf(item)))[0];
        return first == 't' ? "true" : "false";
    }

    // With the blanks before it, unless a line begins with it.
    MaybeMend removed(std::size_t item) const {
        std::uint32_t begin = items_[item].offset;
        const std::string_view text = items_.text();
        while (items_[item].newlines == 0 && begin > 0 && (text[begin - 1] == ' ' || text[begin - 1] == '\t')) --begin;
        return SyntaxMend{begin, endOf(items_[item]) - begin, ""};
    }

    // One of several words is for the author to choose.
    MaybeMend missing(const SyntaxMessage& message) const {
        const std::string word = spellingOf(repair_.token);
        std::size_t words = 0;
        fault_.expected.forEach([&](int token) { words += token >= T_Library ? 1 : 0; });
        const bool isWord = repair_.token >= T_Library;
        if (repair_.kind != Kind::missing || word.empty() || (isWord && words > 1)) return {};
        if (message.length > 0) return SyntaxMend{message.offset, 0, word + ' '};
        constexpr std::string_view touching = ";,):";
        const bool touches = touching.find(word.front()) != touching.npos;
        return SyntaxMend{message.offset, 0, touches ? word : ' ' + word};
    }

    // Below the line that the brace was opened in.
    MaybeMend closed(const SyntaxMessage& message) const {
        const std::string_view text = items_.text();
        const std::size_t line = text.substr(0, message.offset).rfind('\n') + 1;
        const std::size_t indent = std::min(text.find_first_not_of(" \t", line), text.size()) - line;
        return SyntaxMend{message.relatedOffset, 0, '\n' + std::string(text.substr(line, indent)) + '}'};
    }

    MaybeMend wrong() const {
        if (!hasItem()) return {};
        if (fault_.token == '=' && fault_.expected.contains(T_EqualTo)) return replaced(fault_.item, "==");
        if (repair_.kind != Kind::wrong) return {};
        if (repair_.token == T_StringConstant && isWord(items_.textOf(fault_.item)))
            return replaced(fault_.item, '"' + std::string(items_.textOf(fault_.item)) + '"');
        return repair_.token < T_Library ? replaced(fault_.item, spellingOf(repair_.token)) : MaybeMend();
    }

    // In reading order, and with what is between them as it is.
    MaybeMend swapped() const {
        const SourceItem& first = items_[repair_.edits.front().item];
        const SourceItem& second = items_[repair_.edits.back().item];
        const std::string_view between = items_.text().substr(endOf(first), second.offset - endOf(first));
        std::string text(items_.textOf(second));
        text.append(between).append(items_.textOf(first));
        return SyntaxMend{first.offset, endOf(second) - first.offset, std::move(text)};
    }

    MaybeMend number() const {
        if (!hasItem()) return {};
        if (fault_.token == T_IntConstant && fault_.expected.contains(T_DoubleConstant))
            return replaced(fault_.item, std::string(items_.textOf(fault_.item)) + ".0");
        return {};
    }

    const SourceItems& items_;
    const Fault& fault_;
    const Repair& repair_;
};

} // namespace

MaybeMend mendOf(const SourceItems& items, const Fault& fault, const Repair& repair, const SyntaxMessage& message) {
    if (fault.tooDeep || fault.endsTooEarly()) return {};
    return Mender(items, fault, repair).of(message);
}

} // namespace hdnt::author
