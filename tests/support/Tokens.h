#pragma once

#include "hdnt/frontend/Scanner.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace support {

using Tokens = std::vector<std::pair<int, std::string>>;

/// Numbers and texts of a text's tokens, as any host gets them.
inline Tokens tokensOf(const std::string& text) {
    Tokens tokens;
    YY_BUFFER_STATE const buffer = yy_scan_bytes(text.data(), static_cast<int>(text.size()));
    NtlInitScanner();
    while (const int token = HDNTParserlex()) {
        if (token == T_StringConstant || token == T_HexConstant || token == T_BinaryConstant)
            delete HDNTParserlval.text;
        tokens.emplace_back(token, std::string(yyget_text(), static_cast<std::size_t>(yyget_leng())));
    }
    yy_delete_buffer(buffer);
    return tokens;
}

/// The text without blanks, tabs and newlines.
inline std::string inkOf(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\t' || c == '\n'; }),
               text.end());
    return text;
}

} // namespace support
