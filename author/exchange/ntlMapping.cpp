// Mappings, as statementsOf() has them, as NTL.
#include "author/exchange/NtlWriter.internal.h"
#include "author/exchange/mappingJson.internal.h"
#include "author/syntax/SyntaxTree.h"
#include "hdnt/netlist/Words.h"

namespace hdnt::author {

namespace {

// Whether the text is one expression, wherever it is put: whole as to the language, and nothing that would end what is
// around it.
bool isExpression(const std::string& text) {
    constexpr std::string_view before = "library \"\" { block \"\" { } mapsto { if (";
    SyntaxTree tree;
    if (text.find('\n') != text.npos || !tree.read(std::string(before) + text + "\n) { } } }")) return false;
    int depth = 0;
    const frontend::SourceItems& items = tree.items();
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i].offset < before.size() || items[i].offset >= before.size() + text.size()) continue;
        const std::string_view token = items.textOf(i);
        if (token == "(") ++depth;
        if (token == ")") --depth;
        if (!items[i].isToken() || token == ";" || token == "{" || token == "}" || depth < 0) return false;
    }
    return depth == 0 && tree.messages().empty();
}

const std::string& expression(const JsonItem& item) {
    if (!isExpression(item.text())) item.refuse("\"" + item.text() + "\" is no expression of NTL");
    return item.text();
}

void requireNoInversion(const JsonItem& pin) {
    if (pin.text().starts_with('~')) pin.refuse("begins with \"~\", which would invert it");
}

std::string pinTexts(const JsonItem& pins) {
    std::string texts;
    pins.forEach([&](const JsonItem& pin) {
        if (!pin.isTrue("isInverted")) requireNoInversion(pin["pin"]);
        texts += texts.empty() ? "" : ", ";
        if (pin.has("instance")) texts += ntlName(pin["instance"]) + " ";
        texts += ntlName(pin["pin"]).insert(1, pin.isTrue("isInverted") ? "~" : "");
    });
    return texts;
}

std::string signalText(const JsonItem& signal) {
    const std::string pins = signal.has("pins") ? pinTexts(signal["pins"]) : "";
    return "signal " + ntlName(signal["name"]) + (pins.empty() ? "" : " : ") + pins;
}

std::string connectText(const JsonItem& connect) {
    const std::string pins = pinTexts(connect["pins"]);
    if (pins.empty()) connect["pins"].refuse("a pin is due");
    return "connect " + ntlName(connect["signal"]) + " : " + pins;
}

std::string assignText(const JsonItem& assign) {
    const bool isOfPin = assign["kind"].text() == "pinProperty";
    if (isOfPin) requireNoInversion(assign["pin"]);
    return std::string("assign ") + (isOfPin ? "pin" : "block") + " property " + ntlName(assign["instance"]) + " " +
           (isOfPin ? ntlName(assign["pin"]) + ", " : "") + ntlName(assign["property"]) + " " +
           expression(assign["value"]);
}

std::string callText(const JsonItem& call) {
    std::string arguments;
    call.forEach("arguments", [&](const JsonItem& argument) {
        arguments += (arguments.empty() ? "" : ", ") + expression(argument);
    });
    return ntlFunctionName(call["function"]) + "(" + arguments + ")";
}

// Whether an "else" behind the statement would belong to an "if" in it.
bool takesElse(const Json& statement) {
    if (!statement.is_object() || statement.value("kind", Json()) != "if") return false;
    const auto otherwise = statement.find("else");
    return otherwise == statement.end() || otherwise->is_null() || takesElse(*otherwise);
}

std::string statementText(const JsonItem& statement, int depth);

std::string bodyText(const JsonItem& statements, int depth) {
    std::string text = "{\n";
    statements.forEach([&](const JsonItem& statement) { text += statementText(statement, depth); });
    return text + "}\n";
}

std::string ifText(const JsonItem& choice, int depth) {
    std::string text;
    const std::size_t count = choice["branches"].json().size();
    choice["branches"].forEach([&](const JsonItem& branch) {
        text += (text.empty() ? "if (" : "else if (") + expression(branch["condition"]) + ")\n";
        const bool isLast = &branch.json() == &choice["branches"].json()[count - 1];
        const bool needsBraces = (!isLast || choice.has("else")) && takesElse(branch["then"].json());
        const std::string then = statementText(branch["then"], depth);
        text += needsBraces ? "{\n" + then + "}\n" : then;
    });
    if (text.empty()) choice["branches"].refuse("a branch is due");
    return choice.has("else") ? text + "else " + statementText(choice["else"], depth) : text;
}

std::string statementText(const JsonItem& statement, int depth) {
    if (depth == deepestStatement)
        statement.refuse("statements nested more than " + std::to_string(deepestStatement) + " deep");
    if (statement.json().is_array()) return bodyText(statement, depth + 1);
    const std::string& kind = statement["kind"].text();
    if (kind == "if") return ifText(statement, depth + 1);
    if (kind == "instance") return "inst " + ntlName(statement["name"]) + " " + ntlName(statement["type"]) + ";\n";
    if (kind == "signal") return signalText(statement) + ";\n";
    if (kind == "connect") return connectText(statement) + ";\n";
    if (kind == "blockProperty" || kind == "pinProperty") return assignText(statement) + ";\n";
    if (kind == "call") return callText(statement) + ";\n";
    statement["kind"].refuse("\"" + kind +
                             "\" is none of instance, signal, connect, blockProperty, pinProperty, call, if");
}

} // namespace

const std::string& ntlFunctionName(const JsonItem& item) {
    const std::string& name = item.text();
    const bool isWord = name.find_first_of(" \t()\"") == name.npos;
    if (!isWord || !isExpression(name + "()")) item.refuse("\"" + name + "\" is no name of a function");
    return name;
}

std::string ntlMapping(const JsonItem& netlist) {
    return std::string(netlist["section"].word(hdnt::words::sections)) + " " + bodyText(netlist["statements"], 0);
}

} // namespace hdnt::author
