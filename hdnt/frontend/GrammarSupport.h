#pragma once

// What the generated parser is compiled with; included by the grammar alone.

#include "hdnt/frontend/GrammarBuilder.h"
#include "hdnt/frontend/HDNTError.h"
#include "hdnt/frontend/ParseSession.h"
#include "hdnt/frontend/PropertyOptions.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <cstdlib>

namespace build = hdnt::frontend::build;
using Section = HDNTNetlist::Section;

// A builder call that throws ends the parse. The builder owns what it was given, and bison frees the rest of its stack
// but not the symbols of the rule, so the two together leave nothing behind.
#define BUILD(...)                                                                                                     \
    if (!hdnt::frontend::ParseSession::instance().guard([&] { __VA_ARGS__; })) YYABORT
// The same for a call that leaves a text of the rule untouched.
#define BUILD_TEXT(text, ...)                                                                                          \
    if (!hdnt::frontend::ParseSession::instance().guard([&] { __VA_ARGS__; })) {                                       \
        delete text;                                                                                                   \
        YYABORT;                                                                                                       \
    }

// Nothing inside calls the exported HDNTParserlex. A scanner that throws ends the parse as a token that is an error.
inline int lexGuarded() noexcept {
    constexpr int errorAlreadyReported = 256;
    int token = errorAlreadyReported;
    hdnt::frontend::ParseSession::instance().guard([&] { token = hdnt::frontend::Scanner::instance().next(); });
    return token;
}
#define HDNTParserlex lexGuarded

// A rule's place begins at its first token. It ends at its last one when both stand on one line of one file.
#define YYLLOC_DEFAULT(current, rhs, count)                                                                            \
    do {                                                                                                               \
        (current) = YYRHSLOC(rhs, (count) ? 1 : 0);                                                                    \
        const yyltype& last = YYRHSLOC(rhs, count);                                                                    \
        if (last.first_line == (current).first_line && last.fileName == (current).fileName)                            \
            (current).last_column = last.last_column;                                                                  \
    } while (false)

#define YYINITDEPTH 200
#define YYMAXDEPTH 4000

template <typename StateNumber>
void growStacks(const char* message, StateNumber** states, long, NtlTokenValue** values, long, yyltype** locations,
                long, long* capacity) noexcept {
    hdnt::frontend::ParseSession::instance().growStacks(message, states, values, locations, capacity);
}
#define yyoverflow growStacks
