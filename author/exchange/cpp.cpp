#include "author/exchange/BlockWords.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "hdnt/model/HDNTLibrary.h"

namespace hdnt::author {

namespace {

using words::cell;

// Which headers are included together makes no difference, and no library's name meets those of C.
constexpr const char* shared = R"(#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#ifndef HDNT_NAMES
#define HDNT_NAMES
namespace hdnt_names {

/// What the library calls it.
template <typename Enum>
constexpr std::string_view textOf(Enum value) {
    return namesOf(value)[static_cast<std::size_t>(value)];
}

/// What the library calls so; case counts.
template <typename Enum>
constexpr std::optional<Enum> enumOf(std::string_view text) {
    const auto& names = namesOf(Enum{});
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i] == text) return static_cast<Enum>(i);
    return std::nullopt;
}

} // namespace hdnt_names
#endif
)";

std::string namespaceOf(const ExportNotes& notes) {
    return "hdnt_names::" + identifiersOf({notes.library.getName()}).front();
}

// The enumeration, and the names that textOf() and enumOf() read.
std::string enumText(const std::string& type, const std::string& table, const CodeEnum& names) {
    std::string enumerators, texts;
    for (const std::string& identifier : names.identifiers) enumerators += "    " + identifier + ",\n";
    for (const std::string& text : names.texts) texts += "    " + verilogString(text) + ",\n";
    return "enum class " + type + " {\n" + enumerators + "};\ninline constexpr std::array<std::string_view, " +
           std::to_string(names.texts.size()) + "> " + table + " = {\n" + texts + "};\nconstexpr const auto& namesOf(" +
           type + ") { return " + table + "; }\n";
}

std::string constantOf(const CodeProperty& property) {
    const Json& value = (*property.facts)["default"];
    if (!property.values.texts.empty()) return "Value defaultValue = Value::" + property.defaultIdentifier();
    if (value.is_string()) return "std::string_view defaultValue = " + verilogString(cell(value));
    return cell((*property.facts)["type"]) + " defaultValue = " + cell(value);
}

std::string propertyText(const std::string& identifier, const CodeProperty& property) {
    std::string text;
    if (!property.values.texts.empty()) text += enumText("Value", "valueNames", property.values);
    if (property.hasDefault()) text += "inline constexpr " + constantOf(property) + ";\n";
    return text.empty() ? "" : "\nnamespace " + identifier + " {\n" + text + "}\n";
}

void addNames(const ExportedBlock& exported, std::string& text, ExportNotes& notes) {
    const Json& block = exported.json;
    if (!notes.take(block, cell(block["name"]), "block")) return;
    const CodeBlock code(block, notes);
    text += "\nnamespace " + namespaceOf(notes) + "::" + code.identifier + " {\n" +
            enumText("Pin", "pinNames", code.pins) + "\n" + enumText("Property", "propertyNames", code.propertyNames);
    for (std::size_t i = 0; i < code.properties.size(); ++i)
        text += propertyText(code.propertyNames.identifiers[i], code.properties[i]);
    text += "}\n";
}

std::string head(const ExportNotes& notes) {
    std::string text = notes.renamedText("// ") + shared;
    if (!notes.block.empty()) return text;
    return text + "\nnamespace " + namespaceOf(notes) + " {\n" + enumText("Block", "blockNames", notes.blocks) + "}\n";
}

} // namespace

constinit const ExportTable cppTable = {"c++", head, addNames};

} // namespace hdnt::author
