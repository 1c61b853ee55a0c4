#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/Losses.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace hdnt::frontend::build {

namespace {

using Kind = HDNTNotice::Kind;

// In the order of the enumerations; the words of the language.
constexpr std::array<std::string_view, 4> attributeWords = {"internal", "test", "maturityLevel", "primgroup"};
constexpr std::array<std::string_view, 9> optionWords = {
    "max", "default", "precision", "description", "units", "simulation", "test", "constraintsOnly", "muxControl"};

// Of the block, and of the property, that are being read: neither stands inside another.
constinit std::array<std::optional<yyltype>, attributeWords.size()> attributes;
constinit std::array<yyltype, optionWords.size()> repeats{};

// The words of notices have no other quotes for words of the language.
std::string quoted(std::string_view word) { return '"' + std::string(word) + '"'; }

bool agree(const HDNTFunctionDecl& a, const HDNTFunctionDecl& b) {
    if (a.getType() != b.getType() || a.getNumFormals() != b.getNumFormals()) return false;
    for (size_t i = 0; i < a.getNumFormals(); ++i)
        if (a.getFormal(i) != b.getFormal(i)) return false;
    return true;
}

} // namespace

void noteAttribute(Attribute attribute, const yyltype& place) {
    const size_t index = static_cast<size_t>(attribute);
    std::optional<yyltype>& earlier = attributes[index];
    if (earlier) {
        const char* const detail = attribute == Attribute::PrimGroup ? "subgroups that it does not name stay" : "";
        HDNTError::notify({Kind::RepeatedOption, place, quoted(attributeWords[index]), detail, &*earlier});
    } else {
        earlier = place;
    }
}

void forgetAttributes() noexcept { attributes.fill(std::nullopt); }

void noteRepeat(PropertyOptions& record, Option option, const yyltype& place) noexcept {
    record.repeated |= PropertyOptions::bitOf(option);
    repeats[static_cast<size_t>(option)] = place;
}

static void tellOfRepeats(const PropertyOptions& record) {
    for (size_t i = 0; i < optionWords.size(); ++i)
        if ((record.repeated & PropertyOptions::bitOf(static_cast<Option>(i))) != 0)
            HDNTError::notify({Kind::RepeatedOption, repeats[i], quoted(optionWords[i]), {}});
}

void tellOfOptions(const PropertyOptions& record, const yyltype& place) {
    if (record.repeated != 0) tellOfRepeats(record);
    if (!record.hasSaid(Option::max)) return;
    if (!record.ints.values.empty() || !record.doubles.values.empty() || !record.texts.empty())
        HDNTError::notify({Kind::IgnoredOption, place, quoted("max"), {}});
}

void tellOfFunctions(const std::vector<HDNTDecl*>& decls, const HDNTLibrary& library) {
    std::unordered_map<std::string_view, const HDNTFunctionDecl*> ofThisText;
    for (const HDNTDecl* decl : decls) {
        const auto* const function = nodeCast<HDNTFunctionDecl>(decl);
        if (!function) continue;
        const auto [first, isNew] = ofThisText.emplace(function->getName(), function);
        const HDNTFunctionDecl* earlier = nullptr;
        for (size_t i = 0; isNew && !earlier && i < library.getNumFunctionDecls(); ++i)
            if (library.getFunctionDecl(i)->getName() == function->getName()) earlier = library.getFunctionDecl(i);
        if (isNew && (!earlier || agree(*earlier, *function))) continue;
        HDNTError::notify({Kind::FunctionRedeclared,
                           *function->getLocation(),
                           function->getName(),
                           {},
                           isNew ? nullptr : first->second->getLocation()});
    }
}

void tellOfReplaced(const HDNTBlock& block, const HDNTNetlist& mapping, bool isOfThisText) {
    const HDNTNetlist* const earlier = block.getAttachedNetlist();
    const yyltype* const place = earlier && block.hasOwnNetlist() ? earlier->getLocation() : nullptr;
    if (!place) return;
    const std::string where = isOfThisText || !place->fileName
                                  ? std::string()
                                  : std::string("of ") + place->fileName + ':' + std::to_string(place->fileLine);
    HDNTError::notify(
        {Kind::MappingReplaced, *mapping.getLocation(), block.getName(), where, isOfThisText ? place : nullptr});
}

void tellOfRange(const std::string& name, const yyltype& place) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto end = name.end();
    for (auto at = std::find(name.begin(), end, '['); at != end;) {
        const auto first = std::find_if(at, end, isDigit);
        at = std::find_if_not(first, end, isDigit);
        int bit = 0;
        const std::string_view digits(first, at);
        if (std::from_chars(digits.data(), digits.data() + digits.size(), bit).ec == std::errc::result_out_of_range)
            HDNTError::notify({Kind::NumberOverflow, place, digits,
                               "it is read as " + std::to_string(std::numeric_limits<int>::max())});
    }
}

} // namespace hdnt::frontend::build
