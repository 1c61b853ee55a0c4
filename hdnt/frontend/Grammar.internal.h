#pragma once

// What the generated parser is compiled with; included by the grammar alone.

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/ModelBuilder.internal.h"
#include "hdnt/frontend/ParserState.internal.h"
#include "hdnt/frontend/ParserValue.internal.h"
#include "hdnt/frontend/PropertyOptions.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/frontend/TokenText.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <cstdlib>
#include <cstring>

namespace build = hdnt::frontend::build;
using hdnt::frontend::Option;
using Section = HDNTNetlist::Section;

// A builder call that throws ends the parse. The builder owns what it was given, and bison frees the rest of its stack
// but not the symbols of the rule, so the two together leave nothing behind.
#define BUILD(...)                                                                                                     \
    if (!hdnt::frontend::ParserState::instance().guard([&] { __VA_ARGS__; })) YYABORT
// The same for a call that leaves a text of the rule untouched.
#define BUILD_TEXT(text, ...)                                                                                          \
    if (!hdnt::frontend::ParserState::instance().guard([&] { __VA_ARGS__; })) {                                        \
        delete text;                                                                                                   \
        YYABORT;                                                                                                       \
    }

extern hdnt::frontend::ParserValue parserValue;

// The token's value as a symbol's. An identifier becomes a text.
inline hdnt::frontend::ParserValue symbolOf(int token) {
    hdnt::frontend::ParserValue value{};
    const NtlTokenValue& scanned = HDNTParserlval;
    switch (token) {
    case T_IntConstant: value.intValue = scanned.intValue; break;
    case T_BoolConstant: value.boolValue = scanned.boolValue; break;
    case T_DoubleConstant: value.doubleValue = scanned.doubleValue; break;
    case T_StringConstant:
    case T_HexConstant:
    case T_BinaryConstant: value.text = scanned.text; break;
    case T_Identifier:
        value.text =
            hdnt::frontend::TokenTexts::make(scanned.identifier, scanned.identifier + std::strlen(scanned.identifier));
        break;
    default: break;
    }
    return value;
}

// Nothing inside calls the exported HDNTParserlex. A scanner that throws ends the parse as a token that is an error.
inline int lexGuarded() noexcept {
    constexpr int errorAlreadyReported = 256;
    int token = errorAlreadyReported;
    hdnt::frontend::ParserState::instance().guard([&] {
        const int scanned = hdnt::frontend::Scanner::instance().next();
        parserValue = symbolOf(scanned);
        token = scanned;
    });
    return token;
}
#define HDNTParserlex lexGuarded
// HDNTParserlval has the token as it came, for whoever scans; the parser's look-ahead symbol is another variable.
#define HDNTParserlval parserValue

// A rule's place begins at its first token. It ends at its last one when both stand on one line of one file.
inline yyltype placeOf(const yyltype& first, const yyltype& last) {
    yyltype place = first;
    if (last.first_line == first.first_line && last.fileName == first.fileName) place.last_column = last.last_column;
    return place;
}
#define YYLLOC_DEFAULT(current, rhs, count) ((current) = placeOf(YYRHSLOC(rhs, (count) ? 1 : 0), YYRHSLOC(rhs, count)))

#define YYINITDEPTH 200
#define YYMAXDEPTH 4000

template <typename StateNumber>
void growStacks(const char* message, StateNumber** states, long, hdnt::frontend::ParserValue** values, long,
                yyltype** locations, long, long* capacity) noexcept {
    hdnt::frontend::ParserState::instance().growStacks(message, states, values, locations, capacity);
}
#define yyoverflow growStacks
