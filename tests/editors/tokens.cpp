// What the scanner says of each character, for the tests that hold the editors' colours against it.
//   editor_tokens words      every keyword of the language as a text, among words that are none
//   editor_tokens FILE...    for each file its name, then a letter for each of its bytes; blank space stays
#include "hdnt/frontend/Keywords.internal.h"
#include "hdnt/frontend/SourceItems.h"
#include "hdnt/frontend/TokenSet.h"

#include <fstream>
#include <iostream>
#include <iterator>

namespace {

using hdnt::frontend::SourceItem;
using hdnt::frontend::SourceItems;

char letterOf(int kind) {
    switch (kind) {
    case SourceItem::LineComment:
    case SourceItem::BlockComment: return 'c';
    case SourceItem::FileStatement:
    case SourceItem::Directive: return 'p';
    case SourceItem::OpenString: return 'o';
    case T_StringConstant: return 's';
    case T_IntConstant:
    case T_DoubleConstant:
    case T_HexConstant:
    case T_BinaryConstant: return 'n';
    case T_Identifier: return 'f';
    default: return kind >= T_Library && !hdnt::frontend::operators.contains(kind) ? 'k' : '.';
    }
}

std::string lettersOf(const std::string& text) {
    SourceItems items;
    hdnt::frontend::SourceProblem problem;
    items.read(text, problem);
    std::string letters(text.size(), '.');
    for (std::size_t i = 0; i < items.size(); ++i)
        letters.replace(items[i].offset, items[i].length, items[i].length, letterOf(items[i].kind));
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == ' ' || text[i] == '\t' || text[i] == '\n') letters[i] = text[i];
    return letters;
}

void printWords() {
    for (const auto& [word, token] : hdnt::frontend::keywords) {
        const std::string_view end = token < 0 ? ";\n" : "\n";
        std::cout << word << end << word << "s x" << word << " _" << word << "1 7" << word << end;
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count == 2 && arguments[1] == std::string_view("words")) printWords();
    else
        for (int i = 1; i < count; ++i) {
            std::ifstream file(arguments[i], std::ios::binary);
            if (!file) return 1;
            const std::string text{std::istreambuf_iterator<char>(file), {}};
            std::cout << "== " << arguments[i] << '\n' << lettersOf(text) << '\n';
        }
    return std::cout.flush() ? 0 : 1;
}
