#pragma once

#include "hdnt/diagnostics/DiagnosticCode.h"
#include "hdnt/platform/Export.h"

#include <vector>

namespace hdnt::author {

/// What is said of a faulty text. The names of the codes never change and are never used again for something else; the
/// numbers may.
enum class SyntaxCode : unsigned char {
    missingToken,
    unexpectedToken,
    misspeltWord,
    wrongToken,
    wrongOrder,
    numberForm,
    trailingComma,
    unclosedBrace,
    strayBrace,
    nestedTooDeep,
    outsideLanguage,
    carriageReturn,
    byteOrderMark,
    typographicQuote,
    openString,
    openComment,
    openFileStatement,
    longWord,
};

/// In the order of the enumeration.
HDNT_API const std::vector<DiagnosticRule>& syntaxRules();

} // namespace hdnt::author
