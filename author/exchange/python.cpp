#include "author/exchange/BlockWords.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/Text.h"

namespace hdnt::author {

namespace {

using words::cell;

// Bytes that are no UTF-8 become the characters that the library's package has for them.
std::string literal(const std::string& text) {
    if (platform::printable(text) != text) return "b" + verilogString(text) + R"(.decode("utf-8", "surrogateescape"))";
    std::string result = "\"";
    for (const char c : text) result.append(c == '"' || c == '\\' ? "\\" : "") += c;
    return result + "\"";
}

std::string enumText(const std::string& type, const CodeEnum& names, const std::string& indent) {
    std::string text = indent + "class " + type + "(enum.Enum):\n";
    if (names.texts.empty()) return text + indent + "    pass\n";
    for (std::size_t i = 0; i < names.texts.size(); ++i)
        text += indent + "    " + names.identifiers[i] + " = " + literal(names.texts[i]) + "\n";
    return text;
}

std::string constantOf(const CodeProperty& property) {
    const Json& value = (*property.facts)["default"];
    if (!property.values.texts.empty()) return "Value." + property.defaultIdentifier();
    if (value.is_boolean()) return value.get<bool>() ? "True" : "False";
    return value.is_string() ? literal(cell(value)) : cell(value);
}

std::string propertyText(const std::string& identifier, const CodeProperty& property) {
    std::string text;
    if (!property.values.texts.empty()) text += enumText("Value", property.values, "        ");
    if (property.hasDefault()) text += "        default = " + constantOf(property) + "\n";
    return text.empty() ? "" : "\n    class " + identifier + ":\n" + text;
}

void addNames(const ExportedBlock& exported, std::string& text, ExportNotes& notes) {
    const Json& block = exported.json;
    if (!notes.take(block, cell(block["name"]), "block")) return;
    const CodeBlock code(block, notes);
    text += "\n\nclass " + code.identifier + ":\n" + enumText("Pin", code.pins, "    ") + "\n" +
            enumText("Property", code.propertyNames, "    ");
    for (std::size_t i = 0; i < code.properties.size(); ++i)
        text += propertyText(code.propertyNames.identifiers[i], code.properties[i]);
}

std::string head(const ExportNotes& notes) {
    return notes.renamedText("# ") + "import enum\n" +
           (notes.block.empty() ? "\n\n" + enumText("Block", notes.blocks, "") : "");
}

} // namespace

constinit const ExportTable pythonTable = {"python", head, addNames};

} // namespace hdnt::author
