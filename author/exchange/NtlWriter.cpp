#include "author/exchange/NtlWriter.internal.h"
#include "author/syntax/SyntaxTree.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/model/Words.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <climits>

namespace hdnt::author {

namespace {

using platform::joined;

bool isBits(const JsonItem& property) { return property["type"].text().starts_with("bit"); }
char radixOf(const JsonItem& property) { return property["type"].text() == "bithex" ? 'h' : 'b'; }

std::string typeText(const JsonItem& property) {
    const std::string_view word = property["type"].word(hdnt::words::propertyTypes);
    if (!isBits(property)) return std::string(word);
    const long width = property["bitWidth"].integer(0, HDNTLimits::get().bitWidth);
    return std::to_string(width) + "'" + radixOf(property);
}

// Digits alone have the width and radix of the property.
std::string bitsText(const JsonItem& property, const JsonItem& value) {
    const std::string& text = value.text();
    const std::string_view digits = radixOf(property) == 'h' ? "0123456789abcdefABCDEF" : "01";
    const std::size_t quote = text.find('\'');
    const std::size_t begin = quote == text.npos ? 0 : quote + 2;
    const bool isWhole = quote == text.npos ? !text.empty()
                                            : quote > 0 && text.find_first_not_of("0123456789") == quote &&
                                                  text.substr(quote + 1, 1)[0] == radixOf(property);
    if (!isWhole || text.find_first_not_of(digits, begin) != text.npos)
        value.refuse("\"" + text + "\" is no constant such as 8'" + radixOf(property) + "0");
    return (quote == text.npos ? typeText(property) : "") + text;
}

std::string doubleText(double value) {
    if (std::isinf(value)) return (value < 0 ? "-1" : "1") + std::string(309, '0') + ".0";
    return platform::DoubleText(value, platform::DoubleForm::FixedPoint).str();
}

std::string valueText(const JsonItem& property, const JsonItem& value) {
    const std::string& type = property["type"].text();
    if (isBits(property)) return bitsText(property, value);
    if (type == "string") return ntlName(value);
    if (type == "int") return std::to_string(value.integer(INT_MIN, INT_MAX));
    if (type == "double") return doubleText(value.number());
    if (!value.json().is_boolean()) value.refuse("true or false is due");
    return value.json().get<bool>() ? "true" : "false";
}

// A maximum cannot come first; of a truth value, only the default can.
std::vector<std::string> valueOptions(const JsonItem& property) {
    std::vector<std::string> options;
    const auto add = [&](const char* key, const char* word) {
        if (property.has(key)) options.push_back(word + (" = " + valueText(property, property[key])));
    };
    std::vector<std::string> values;
    property.forEach("values", [&](const JsonItem& value) { values.push_back(valueText(property, value)); });
    if (!values.empty()) options.push_back("values { " + joined(values, ", ") + " }");
    else if (!property.has("hasMinimum") || property.isTrue("hasMinimum")) add("minimum", "min");
    add("default", "default");
    const bool hasMaximum = values.empty() && (!property.has("hasMaximum") || property.isTrue("hasMaximum"));
    if (options.empty() && property["type"].text() == "bool") options.emplace_back("default = false");
    if (options.empty())
        options.push_back(property.isTrue("isSimulation") ? "simulation = true" : "simulation = false");
    if (hasMaximum) add("maximum", "max");
    return options;
}

void addFlags(const JsonItem& property, std::vector<std::string>& options) {
    const struct {
        const char* key;
        const char* word;
    } flags[] = {{"isTest", "test"},
                 {"isConstraintsOnly", "constraintsOnly"},
                 {"isSimulation", "simulation"},
                 {"isMuxControl", "muxControl"}};
    for (const auto& [key, word] : flags) {
        const std::string option = std::string(word) + " = true";
        if (property.isTrue(key) && options.front() != option) options.push_back(option);
    }
}

std::string groupText(const JsonItem& block, const char* group, const char* subgroup) {
    std::string text = block.has(group) ? block[group].text() : "";
    return block.has(subgroup) ? text + ":" + block[subgroup].text() : text;
}

// A block without a group of the earlier scheme has its group in that, too.
std::string groupsText(const JsonItem& block) {
    const std::string text = groupText(block, "group", "subgroup");
    const char* const legacy = block.has("legacyGroup") ? "legacyGroup" : "group";
    const bool differs = groupText(block, legacy, "") != groupText(block, "group", "");
    if (!differs && !block.has("legacySubgroup")) return text;
    return text + ", " + groupText(block, legacy, "legacySubgroup");
}

std::string quoted(const JsonItem& item, const std::string& text) {
    if (text.find_first_of("\"\n") != text.npos)
        item.refuse("holds a quote or a line break, which no text of NTL does");
    return '"' + text + '"';
}

std::string pinName(const JsonItem& bus) {
    if (!bus.has("range")) return ntlName(bus[bus.has("baseName") ? "baseName" : "name"]);
    std::vector<std::string> ends;
    bus.forEach("range", [&](const JsonItem& end) { ends.push_back(std::to_string(end.integer(0, INT_MAX))); });
    if (ends.size() != 2) bus["range"].refuse("the first and the last bit are due");
    return quoted(bus["baseName"], bus["baseName"].text() + "[" + ends[0] + ":" + ends[1] + "]");
}

std::string pinText(const JsonItem& bus) {
    std::string text = "pin " + pinName(bus) + " ";
    text += bus["direction"].word(hdnt::words::pinDirections);
    if (bus.isTrue("isTest")) text += " test";
    if (bus.isTrue("isAbstract")) text += " abstract";
    if (bus.has("type")) (text += ' ') += bus["type"].word(hdnt::words::pinTypes);
    if (bus.has("required")) (text += ' ') += bus["required"].word(hdnt::words::requiredValues);
    return text;
}

std::string functionType(const JsonItem& type) {
    const std::string_view word = type.word(hdnt::words::propertyTypes);
    return word == "bithex" ? "1'h" : word == "bitbinary" ? "1'b" : std::string(word);
}

std::string functionText(const JsonItem& function) {
    std::vector<std::string> formals;
    function.forEach("formals", [&](const JsonItem& formal) { formals.push_back(functionType(formal)); });
    return "function " + functionType(function["type"]) + " " + ntlFunctionName(function["name"]) + "(" +
           joined(formals, ", ") + ");\n";
}

// As comments on lines of their own.
std::string remarksText(const JsonItem& item) {
    std::string text;
    item.forEach("remarks", [&](const JsonItem& remark) { text += "// " + platform::printable(remark.text()) + "\n"; });
    return text;
}

std::string blockHead(const JsonItem& block) {
    std::string text = "\n" + remarksText(block) + "block " + ntlName(block["name"]) + " {\n";
    if (block.isTrue("isInternal")) text += "internal = true;\n";
    if (block.isTrue("isTest")) text += "test = true;\n";
    if (block.has("maturity")) {
        const std::string_view level = block["maturity"].word(hdnt::words::maturityLevels);
        if (level != hdnt::words::maturityLevels.wordOf(0)) text += "maturityLevel = " + std::string(level) + ";\n";
    }
    if (const std::string groups = groupsText(block); !groups.empty())
        text += "primgroup = " + quoted(block, groups) + ";\n";
    return text;
}

// Which options a type has, and in what order, is for the language to say.
std::string readable(const JsonItem& item, const std::string& declaration) {
    SyntaxTree tree;
    if (!tree.read("library \"\" { block \"\" {\n" + declaration + "} }\n")) item.refuse(tree.refusal().reason);
    if (!tree.messages().empty()) item.refuse(tree.messages().front().text);
    return declaration;
}

} // namespace

std::string ntlName(const JsonItem& item) { return quoted(item, item.text()); }

std::string ntlProperty(const JsonItem& property) {
    const std::string declared = "property " + typeText(property) + " " + ntlName(property["name"]);
    std::vector<std::string> options = valueOptions(property);
    constexpr long usualPrecision = 6;
    if (property.has("precision")) {
        const long precision = property["precision"].integer(0, HDNTLimits::get().precision);
        if (precision != usualPrecision) options.push_back("precision = " + std::to_string(precision));
    }
    addFlags(property, options);
    const auto add = [&](const char* key, const char* word) {
        if (property.has(key) && !property[key].text().empty())
            options.push_back(word + (" = " + ntlName(property[key])));
    };
    add("units", "units");
    add(property.json().contains("declaredDescription") ? "declaredDescription" : "description", "description");
    return remarksText(property) + readable(property, declared + " { " + joined(options, ", ") + " }\n");
}

template <typename Action>
void NtlWriter::attempt(Action&& action) {
    try {
        action();
    } catch (const JsonRefusal& refusal) {
        refusals_.emplace_back(refusal.what());
    }
}

void NtlWriter::addProperties(const JsonItem& owner) {
    owner.forEach("properties", [&](const JsonItem& property) { attempt([&] { text_ += ntlProperty(property); }); });
}

void NtlWriter::addPin(const JsonItem& bus) {
    text_ += pinText(bus);
    const std::size_t size = text_.size();
    attempt([&] { addProperties(bus); });
    if (text_.size() == size) text_ += ";\n";
    else text_.insert(size, " {\n") += "}\n";
}

void NtlWriter::addBlock(const JsonItem& block) {
    text_ += blockHead(block);
    attempt([&] { block.forEach("buses", [&](const JsonItem& bus) { attempt([&] { addPin(bus); }); }); });
    attempt([&] { addProperties(block); });
    text_ += "}";
    attempt([&] {
        const bool isOwn = !block.has("hasOwnNetlist") || block.isTrue("hasOwnNetlist");
        if (isOwn && block.has("netlist")) text_ += " " + ntlMapping(block["netlist"]);
    });
    text_ += "\n";
}

void NtlWriter::addLibrary(const JsonItem& library) {
    text_ = "library " + ntlName(library["library"]) + " {\n";
    library.forEach("functions", [&](const JsonItem& function) { attempt([&] { text_ += functionText(function); }); });
    library.forEach("blocks", [&](const JsonItem& block) { attempt([&] { addBlock(block); }); });
    text_ += "}\n";
}

} // namespace hdnt::author
