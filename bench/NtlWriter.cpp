#include "bench/NtlWriter.h"

#include <algorithm>

namespace bench {

namespace {

constexpr size_t widestLine = 112;

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::string rangeText(const IndexRange& range) {
    return range ? "[" + std::to_string(range->first) + ":" + std::to_string(range->second) + "]" : std::string();
}

std::string typeText(const Property& property) {
    switch (property.type) {
    case ValueType::Int: return "int";
    case ValueType::Double: return "double";
    case ValueType::Bool: return "bool";
    case ValueType::String: return "string";
    case ValueType::Hex: return std::to_string(property.width) + "'h";
    case ValueType::Binary: return std::to_string(property.width) + "'b";
    }
    return {};
}

std::string valueText(const Property& property, const std::string& value) {
    if (property.type == ValueType::String) return quoted(value);
    return property.type == ValueType::Hex || property.type == ValueType::Binary ? typeText(property) + value : value;
}

std::vector<std::string> optionsOf(const Property& property) {
    std::vector<std::string> options;
    if (!property.values.empty()) {
        std::string values = "values { ";
        for (const std::string& value : property.values)
            values.append(&value == property.values.data() ? "" : ", ").append(valueText(property, value));
        options.push_back(values + " }");
    }
    if (property.minimum) options.push_back("min = " + valueText(property, *property.minimum));
    if (property.maximum) options.push_back("max = " + valueText(property, *property.maximum));
    options.push_back("default = " + valueText(property, property.defaultValue));
    if (property.precision >= 0) options.push_back("precision = " + std::to_string(property.precision));
    if (!property.units.empty()) options.push_back("units = " + quoted(property.units));
    if (property.simulation) options.push_back("simulation = true");
    if (property.muxControl) options.push_back("muxControl = true");
    if (property.test) options.push_back("test = true");
    if (property.constraintsOnly) options.push_back("constraintsOnly = true");
    if (!property.description.empty()) options.push_back("description = " + quoted(property.description));
    return options;
}

std::string referencesText(const std::vector<PinRef>& pins) {
    std::string text;
    for (const PinRef& pin : pins) {
        text += &pin == pins.data() ? " : " : ", ";
        if (!pin.instance.empty()) text += quoted(pin.instance) + " ";
        text += quoted((pin.inverted ? "~" : "") + pin.pin);
    }
    return text;
}

void indentBy(std::string& out, int indent) { out.append(static_cast<size_t>(indent), ' '); }

} // namespace

std::string NtlWriter::comment(const std::string& text) const {
    return lineComments_ ? "// " + text + "\n" : "/* " + text + " */\n";
}

void NtlWriter::begin(std::string& out, const std::vector<Function>& functions) {
    out += "/* A library that was made up. */\nlibrary \"generated\" {\n";
    for (const Function& function : functions) {
        out.append("  function ").append(function.type).append(" ").append(function.name).append("(");
        for (size_t i = 0; i < function.arguments.size(); ++i) out.append(i ? ", " : "").append(function.arguments[i]);
        out += ");\n";
    }
}

void NtlWriter::write(std::string& out, const Block& block) {
    out += "\n";
    if (block.comment.size() == 1) out += "  " + comment(block.comment[0]);
    else if (!block.comment.empty()) {
        out += "  /*\n";
        for (const std::string& line : block.comment) out += "   * " + line + "\n";
        out += "   */\n";
    }
    out += "  block " + quoted(block.name) + " {\n    primgroup = \"" + block.group;
    if (!block.subgroup.empty()) out += ":" + block.subgroup;
    if (!block.legacyGroup.empty()) out += ", " + block.legacyGroup;
    out += "\";\n";
    if (*block.maturity) out.append("    maturityLevel = ").append(block.maturity).append(";\n");
    if (block.internal) out += "    internal = true;\n";
    for (const Pin& pin : block.pins) writePin(out, pin);
    for (const Property& property : block.properties) writeProperty(out, property, 4);
    out += "  }";
    if (block.mapping) {
        out.append(" ").append(block.mapping->section).append(" {\n");
        if (!block.mapping->comment.empty()) out += "    " + comment(block.mapping->comment);
        writeStatements(out, block.mapping->statements, 4);
        out += "  }";
    }
    out += "\n";
}

void NtlWriter::writePin(std::string& out, const Pin& pin) const {
    out += "    pin " + quoted(pin.name + rangeText(pin.range)) + " " + pin.direction;
    if (pin.test) out += " test";
    if (pin.abstract) out += " abstract";
    if (*pin.type) out.append(" ").append(pin.type);
    if (*pin.required) out.append(" ").append(pin.required);
    if (pin.properties.empty()) out += ";";
    else {
        out += " {\n";
        for (const Property& property : pin.properties) writeProperty(out, property, 6);
        out += "    }";
    }
    out += pin.comment.empty() ? "\n" : " " + comment(pin.comment);
}

void NtlWriter::writeProperty(std::string& out, const Property& property, int indent) const {
    indentBy(out, indent);
    out += "property " + typeText(property) + " " + quoted(property.name);
    const std::vector<std::string> options = optionsOf(property);
    if (property.type == ValueType::Bool && options.size() == 1) {
        out += " " + property.defaultValue + ";\n";
        return;
    }
    size_t width = static_cast<size_t>(indent) + property.name.size() + 24;
    for (const std::string& option : options) width += option.size() + 2;
    const bool lines = width > widestLine;
    out += " {";
    for (const std::string& option : options) {
        if (&option != options.data()) out += ",";
        if (lines) {
            out += "\n";
            indentBy(out, indent + 2);
        } else out += " ";
        out += option;
    }
    if (lines) {
        out += "\n";
        indentBy(out, indent);
    } else out += " ";
    out += "}\n";
}

void NtlWriter::writeStatements(std::string& out, const std::vector<Statement>& statements, int indent) const {
    for (const Statement& statement : statements) {
        indentBy(out, indent);
        writeStatement(out, statement, indent);
    }
}

void NtlWriter::writeStatement(std::string& out, const Statement& statement, int indent) const {
    switch (statement.kind) {
    case Statement::Kind::Instance: out += "inst " + quoted(statement.name) + " " + quoted(statement.text); break;
    case Statement::Kind::Signal:
        out += "signal " + quoted(statement.name + rangeText(statement.range)) + referencesText(statement.pins);
        break;
    case Statement::Kind::Connect: out += "connect " + quoted(statement.name) + referencesText(statement.pins); break;
    case Statement::Kind::AssignBlock:
        out +=
            "assign block property " + quoted(statement.instance) + " " + quoted(statement.name) + " " + statement.text;
        break;
    case Statement::Kind::AssignPin:
        out += "assign pin property " + quoted(statement.instance) + " " + quoted(statement.pin) + ", " +
               quoted(statement.name) + " " + statement.text;
        break;
    case Statement::Kind::Call: out += statement.text; break;
    case Statement::Kind::If:
        out += "if (" + statement.text + ") {\n";
        writeStatements(out, statement.thenPart, indent + 2);
        indentBy(out, indent);
        out += "}";
        if (!statement.elsePart.empty()) {
            out += " else ";
            if (statement.elsePart.size() == 1) return writeStatement(out, statement.elsePart[0], indent);
            out += "{\n";
            writeStatements(out, statement.elsePart, indent + 2);
            indentBy(out, indent);
            out += "}";
        }
        out += "\n";
        return;
    }
    out += ";\n";
}

} // namespace bench
