#include "bench/TreeWriter.h"

#include "bench/NtlWriter.h"

namespace bench {

namespace {

const char* typeName(ValueType type) {
    switch (type) {
    case ValueType::Int: return "int";
    case ValueType::Double: return "double";
    case ValueType::Bool: return "bool";
    case ValueType::String: return "string";
    case ValueType::Hex: return "hex";
    case ValueType::Binary: return "binary";
    }
    return "";
}

} // namespace

void TreeWriter::open(Shape shape) {
    element();
    *out_ += shape == Shape::Group ? '{' : shape == Shape::Array || json_ ? '[' : '(';
    levels_.push_back({shape});
}

void TreeWriter::close() {
    const Shape shape = levels_.back().shape;
    levels_.pop_back();
    *out_ += shape == Shape::Group ? '}' : shape == Shape::Array || json_ ? ']' : ')';
    if (!json_ && !levels_.empty() && levels_.back().shape == Shape::Group) *out_ += ';';
}

/// Called in front of each value; groups separate by their keys instead.
void TreeWriter::element() {
    if (levels_.empty() || levels_.back().shape == Shape::Group) return;
    if (!levels_.back().first) *out_ += ',';
    levels_.back().first = false;
}

void TreeWriter::key(const char* name) {
    if (json_) {
        if (!levels_.back().first) *out_ += ',';
        levels_.back().first = false;
        out_->append("\"").append(name).append("\":");
    } else out_->append(name).append("=");
}

void TreeWriter::plain(const std::string& text) {
    element();
    *out_ += text;
    if (!json_ && levels_.back().shape == Shape::Group) *out_ += ';';
}

void TreeWriter::string(const std::string& text) {
    std::string escaped = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') escaped += '\\';
        escaped += c;
    }
    plain(escaped + "\"");
}

void TreeWriter::field(const char* name, const std::string& text) {
    if (text.empty()) return;
    key(name);
    string(text);
}

void TreeWriter::flag(const char* name, bool value) {
    if (!value) return;
    key(name);
    plain("true");
}

void TreeWriter::range(const IndexRange& range) {
    if (!range) return;
    key("range");
    open(Shape::Array);
    plain(std::to_string(range->first));
    plain(std::to_string(range->second));
    close();
}

void TreeWriter::begin(std::string& out, const std::vector<Function>& functions) {
    out_ = &out;
    levels_.clear();
    if (json_) open(Shape::Group);
    else levels_.push_back({Shape::Group}); // libconfig's root has no braces
    field("library", "generated");
    key("functions");
    open(Shape::List);
    for (const Function& function : functions) {
        open(Shape::Group);
        field("name", function.name);
        field("type", function.type);
        key("arguments");
        open(Shape::Array);
        for (const char* const argument : function.arguments) string(argument);
        close();
        close();
    }
    close();
    key("blocks");
    open(Shape::List);
}

void TreeWriter::write(std::string& out, const Block& block) {
    out_ = &out;
    element();
    levels_.back().first = true; // the comma is written, before the line end
    out += '\n';
    open(Shape::Group);
    field("name", block.name);
    field("group", block.group);
    field("subgroup", block.subgroup);
    field("legacyGroup", block.legacyGroup);
    field("maturity", block.maturity);
    flag("internal", block.internal);
    pins(block.pins);
    properties(block.properties);
    if (block.mapping) {
        key("mapping");
        open(Shape::Group);
        field("section", block.mapping->section);
        statements("statements", block.mapping->statements);
        close();
    }
    close();
}

void TreeWriter::end(std::string& out) {
    out_ = &out;
    out += '\n';
    close();
    if (json_) close();
    out += '\n';
}

void TreeWriter::pins(const std::vector<Pin>& pins) {
    key("pins");
    open(Shape::List);
    for (const Pin& pin : pins) {
        open(Shape::Group);
        field("name", pin.name);
        range(pin.range);
        field("direction", pin.direction);
        flag("test", pin.test);
        flag("abstract", pin.abstract);
        field("type", pin.type);
        field("required", pin.required);
        properties(pin.properties);
        close();
    }
    close();
}

void TreeWriter::properties(const std::vector<Property>& properties) {
    if (properties.empty()) return;
    key("properties");
    open(Shape::List);
    for (const Property& item : properties) property(item);
    close();
}

void TreeWriter::value(const Property& property, const std::string& text) {
    if (property.type == ValueType::Int || property.type == ValueType::Double || property.type == ValueType::Bool)
        plain(text);
    else string(text);
}

void TreeWriter::property(const Property& property) {
    open(Shape::Group);
    field("name", property.name);
    field("type", typeName(property.type));
    if (property.width > 0) {
        key("width");
        plain(std::to_string(property.width));
    }
    if (!property.values.empty()) {
        key("values");
        open(Shape::Array);
        for (const std::string& text : property.values) value(property, text);
        close();
    }
    for (const auto& [name, text] : {std::pair{"min", &property.minimum}, {"max", &property.maximum}}) {
        if (!*text) continue;
        key(name);
        value(property, **text);
    }
    key("default");
    value(property, property.defaultValue);
    if (property.precision >= 0) {
        key("precision");
        plain(std::to_string(property.precision));
    }
    field("units", property.units);
    flag("simulation", property.simulation);
    flag("muxControl", property.muxControl);
    flag("test", property.test);
    flag("constraintsOnly", property.constraintsOnly);
    field("description", property.description);
    close();
}

void TreeWriter::references(const std::vector<PinRef>& pins) {
    if (pins.empty()) return;
    key("pins");
    open(Shape::List);
    for (const PinRef& pin : pins) {
        open(Shape::Array);
        if (!pin.instance.empty()) string(pin.instance);
        string((pin.inverted ? "~" : "") + pin.pin);
        close();
    }
    close();
}

void TreeWriter::statements(const char* name, const std::vector<Statement>& statements) {
    if (statements.empty()) return;
    key(name);
    open(Shape::List);
    for (const Statement& item : statements) statement(item);
    close();
}

void TreeWriter::statement(const Statement& statement) {
    using Kind = Statement::Kind;
    static const char* const kinds[] = {"inst", "signal", "connect", "assign", "assign", "if", "call"};
    const bool named = statement.kind != Kind::If && statement.kind != Kind::Call;
    open(Shape::Group);
    field(kinds[static_cast<int>(statement.kind)], named ? statement.name : statement.text);
    field("of", statement.instance);
    field("pin", statement.pin);
    if (statement.kind == Kind::Instance) field("block", statement.text);
    else if (named) field("value", statement.text);
    range(statement.range);
    references(statement.pins);
    statements("then", statement.thenPart);
    statements("else", statement.elsePart);
    close();
}

void DescriptionWriter::write(std::string& out, const Block& block) {
    out += block.name + " =\n{\n";
    for (const Property& property : block.properties)
        out += "    " + property.name + " = \"What " + property.name + " of this cell is for.\";\n";
    out += "};\n";
}

std::unique_ptr<Writer> makeWriter(Form form) {
    switch (form) {
    case Form::Ntl: return std::make_unique<NtlWriter>(true);
    case Form::NtlLines:
    case Form::NtlOneLine: return std::make_unique<NtlWriter>(false);
    case Form::Json: return std::make_unique<TreeWriter>(TreeWriter::Syntax::Json);
    case Form::Config: return std::make_unique<TreeWriter>(TreeWriter::Syntax::Config);
    case Form::Descriptions: return std::make_unique<DescriptionWriter>();
    }
    return nullptr;
}

} // namespace bench
