#include "author/lint/Statements.internal.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/InputFile.h"

#include <algorithm>
#include <filesystem>

namespace hdnt::author {

bool isStatement(NtlPart part) {
    switch (part) {
    case NtlPart::function:
    case NtlPart::block:
    case NtlPart::mapping:
    case NtlPart::section:
    case NtlPart::pin:
    case NtlPart::property:
    case NtlPart::flag:
    case NtlPart::inst:
    case NtlPart::connect:
    case NtlPart::signal:
    case NtlPart::assignBlockProperty:
    case NtlPart::assignPinProperty:
    case NtlPart::ifStatement:
    case NtlPart::call: return true;
    default: return false;
    }
}

// Nodes are in the order of their beginnings, the larger ones first.
const SyntaxNode* statementFrom(const SyntaxTree& tree, std::size_t item) {
    const auto& nodes = tree.nodes();
    for (auto node = std::ranges::lower_bound(nodes, item, {}, &SyntaxNode::begin);
         node != nodes.end() && node->begin == item; ++node)
        if (node->end > item && isStatement(node->part)) return &*node;
    return nullptr;
}

const SyntaxNode* statementAround(const SyntaxTree& tree, std::size_t item) {
    const auto& nodes = tree.nodes();
    for (auto node = std::ranges::upper_bound(nodes, item, {}, &SyntaxNode::begin); node != nodes.begin();) {
        --node;
        if (node->end > item && isStatement(node->part)) return &*node;
    }
    return nullptr;
}

std::string textOfFile(const std::string& file, const std::map<std::string, std::string>& texts) {
    const auto given = texts.find(file);
    if (given != texts.end()) return given->second;
    std::error_code error;
    std::string text;
    std::string reason;
    const HDNTLimits& limits = HDNTLimits::get();
    if (std::filesystem::is_regular_file(file, error) &&
        !platform::readInput(file, {limits.inputBytes, limits.expansionRatio, limits.expansionFloor}, text, reason))
        throw HEXDataException(file + ": cannot be read: " + reason);
    return text;
}

} // namespace hdnt::author
