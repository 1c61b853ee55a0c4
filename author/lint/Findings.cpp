#include "author/lint/Findings.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/platform/HEX.h"

namespace hdnt::author {

static std::string filledIn(std::string_view wording, std::span<const std::string> arguments) {
    std::string text;
    std::size_t next = 0;
    for (const char c : wording) {
        if (c == '%' && next < arguments.size()) text += arguments[next++];
        else text += c;
    }
    return text;
}

Diagnostic finding(const DiagnosticRule& rule, Place place, std::span<const std::string> arguments) {
    return {rule.severity, std::string(rule.name), std::move(place), filledIn(rule.wording, arguments), {}, {}};
}

Diagnostic finding(LintCode code, Place place, std::span<const std::string> arguments) {
    return finding(lintRules()[static_cast<std::size_t>(code)], std::move(place), arguments);
}

void Findings::add(LintCode code, const HDNTNode& node, const std::vector<std::string>& arguments) {
    const auto location = node.copyOfLocation();
    if (location) add(code, *location, arguments);
    else list.push_back(finding(code, {}, arguments));
}

void Findings::add(LintCode code, const yyltype& location, const std::vector<std::string>& arguments) {
    places_.insert({location.first_line, location.first_column, location.storeOffset});
    list.push_back(finding(code, sources_.placeOf(location), arguments));
}

void Findings::note(const HDNTNode& node) {
    if (const auto at = node.copyOfLocation()) places_.insert({at->first_line, at->first_column, at->storeOffset});
}

bool Findings::speakOf(const yyltype& location) const {
    return places_.contains({location.first_line, location.first_column, location.storeOffset});
}

void Findings::relate(const HDNTNode& node, std::string message) {
    if (const auto location = node.copyOfLocation())
        list.back().related.push_back({sources_.placeOf(*location), std::move(message)});
}

// The common library may be missing or broken; then its blocks are unknown.
HDNTBlock* BlockFinder::blockOf(const HDNTBlockInst& inst) {
    if (const auto found = blocks_.find(inst.typeName()); found != blocks_.end()) return found->second;
    HDNTBlock* block = nullptr;
    try {
        block = inst.getTypeBlock(library_);
    } catch (const HEXAll&) {
    }
    return blocks_[inst.typeName()] = block;
}

} // namespace hdnt::author
