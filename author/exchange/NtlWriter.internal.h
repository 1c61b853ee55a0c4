#pragma once

#include "author/exchange/JsonItem.internal.h"

#include <string>
#include <vector>

namespace hdnt::author {

/// NTL of what JSON says of a library, with the keys of jsonOf(HDNTBlock&) and of the form "json".
/// Blocks and properties may have `remarks`, lines of a comment above them. Not laid out.
class NtlWriter {
public:
    /// Throws JsonRefusal when there is nothing to go on with. What is wrong inside is left out and goes to refusals().
    void addLibrary(const JsonItem& library);

    const std::string& text() const { return text_; }
    const std::vector<std::string>& refusals() const { return refusals_; }

private:
    /// What it throws becomes a refusal.
    template <typename Action>
    void attempt(Action&& action);
    void addBlock(const JsonItem& block);
    void addPin(const JsonItem& bus);
    void addProperties(const JsonItem& owner);

    std::string text_;
    std::vector<std::string> refusals_;
};

// Each throws JsonRefusal.

/// In quotes.
std::string ntlName(const JsonItem& item);
/// A whole declaration.
std::string ntlProperty(const JsonItem& property);
/// The section with its braces.
std::string ntlMapping(const JsonItem& netlist);
/// The name of a function as it is, when it can be one.
const std::string& ntlFunctionName(const JsonItem& item);

} // namespace hdnt::author
