#pragma once

#include "author/lint/lint.h"

#include <span>

// The tables of rules, one a subject; together they are in the order of LintCode.
namespace hdnt::author {

struct LintRow {
    LintCode code;
    DiagnosticRule rule;
};

std::span<const LintRow> declarationRows();
std::span<const LintRow> referenceRows();
std::span<const LintRow> trialRows();
std::span<const LintRow> configurationRows();
std::span<const LintRow> waiverRows();

/// Whether the codes of a table are those from its first one on, without a gap, up to `last`.
constexpr bool areInOrder(std::span<const LintRow> rows, LintCode last) {
    int code = static_cast<int>(rows.front().code);
    for (const LintRow& row : rows)
        if (static_cast<int>(row.code) != code++) return false;
    return code == static_cast<int>(last) + 1;
}

} // namespace hdnt::author
