// Property declarations, printed and as source.
#include "hdnt/writer/PropertyText.h"

#include "hdnt/frontend/HDNTLimits.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/writer/Text.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace hdnt::writer {

using Type = HATAttrTypes::AttrType;

namespace {

// What a declaration without the option has.
constexpr int defaultPrecision = 6;

bool isHex(const HDNTProperty& property) { return property.getType() == Type::TypeBitHex; }
bool isBits(const HDNTProperty& property) { return isHex(property) || property.getType() == Type::TypeBitBinary; }
const char* radixOf(const HDNTProperty& property) { return isHex(property) ? "'h" : "'b"; }

// How values look in the two forms, and which of them are there.

struct Printed {
    const HDNTProperty& property;

    bool hasMin() const { return true; }
    bool hasMax() const { return true; }
    bool hasDefault() const { return true; }
    void append(std::string& line, int value) const { appendInt(line, value); }
    void append(std::string& line, double value) const { appendFixed(line, value, property.getPrecision()); }
    void append(std::string& line, const std::string& value) const {
        if (isBits(property)) line += property.formatValue(value, false);
        else appendQuoted(line, value);
    }
    void appendEmptyList(std::string& line) const { line += " }"; }
};

struct Source {
    const HDNTProperty& property;
    const CannotWrite& cannotWrite;

    bool hasMin() const { return property.isMinDeclared(); }
    bool hasMax() const { return property.isMaxDeclared(); }
    // A bit vector may have none: no constant is an empty text.
    bool hasDefault() const {
        const HATAttrSpec& spec = *property.getAttrSpec();
        return !isBits(property) || !(isHex(property) ? spec.getHexDefault() : spec.getBinaryDefault()).empty();
    }
    void append(std::string& line, int value) const { appendInt(line, value); }
    void append(std::string& line, double value) const { appendSourceNumber(line, value, cannotWrite); }
    void append(std::string& line, const std::string& value) const {
        if (!isBits(property)) return appendSourceText(line, value, cannotWrite);
        if (!isConstant(value)) cannotWrite("the value \"" + value + "\", which is no constant of its type");
        line += value;
    }
    void appendEmptyList(std::string& line) const {
        cannotWrite("a list of allowed values that is empty");
        line += "values { }";
    }

private:
    // As the scanner takes it: a width, the radix in lower case, and any number of digits.
    bool isConstant(const std::string& value) const {
        const size_t quote = value.find_first_not_of("0123456789");
        if (quote == 0 || quote == value.npos || value.compare(quote, 2, radixOf(property)) != 0) return false;
        const char* const digits = isHex(property) ? "0123456789abcdefABCDEF" : "01";
        return value.find_first_not_of(digits, quote + 2) == value.npos;
    }
};

/// The options of a declaration, separated.
class Options {
public:
    explicit Options(std::string& line) : line_(line) {}

    bool empty() const { return empty_; }
    void begin(const char* text) {
        if (!empty_) line_ += ", ";
        empty_ = false;
        line_ += text;
    }
    void flag(const char* text, bool on) {
        begin(text);
        line_ += on ? "true" : "false";
    }
    // An option that may come first, for the others.
    void lead(const HATAttrSpec& spec) {
        flag("simulation = ", spec.isSimulation());
        led_ = true;
    }
    bool isLed() const { return led_; }
    template <typename Form, typename T>
    void value(const char* text, const Form& form, const T& value) {
        begin(text);
        form.append(line_, value);
    }
    template <typename Form, typename T>
    void list(const Form& form, HATValueIter<T>& values) {
        begin("");
        if (!values.hasNext()) return form.appendEmptyList(line_);
        for (const char* before = "values { "; values.hasNext(); before = ", ") {
            values.next();
            line_ += before;
            form.append(line_, values.current());
        }
        line_ += " }";
    }

private:
    std::string& line_;
    bool empty_ = true;
    bool led_ = false;
};

// The list or range, and the default. A maximum cannot be the first option: then it stands behind the default.
template <typename Form, typename T>
void appendValues(Options& options, const Form& form, HATValueIter<T>* iterator, const T& low, const T& high,
                  const T& byDefault) {
    const std::unique_ptr<HATValueIter<T>> values(iterator);
    const HATAttrSpec& spec = *form.property.getAttrSpec();
    const bool hasMax = !spec.isEnumerated() && form.hasMax();
    if (spec.isEnumerated()) options.list(form, *values);
    else if (form.hasMin()) options.value("min = ", form, low);
    const bool maxFirst = hasMax && !options.empty();
    if (maxFirst) options.value("max = ", form, high);
    if (form.hasDefault()) options.value("default = ", form, byDefault);
    if (options.empty()) options.lead(spec);
    if (hasMax && !maxFirst) options.value("max = ", form, high);
}

template <typename Form>
void appendAllValues(Options& options, const Form& form) {
    const HATAttrSpec& spec = *form.property.getAttrSpec();
    using Text = const std::string&;
    switch (spec.getAttrType()) {
    case Type::TypeInt:
        return appendValues(options, form, spec.createDiscreteIntRangeIter(), spec.getLowIntRange(),
                            spec.getHighIntRange(), spec.getIntDefault());
    case Type::TypeDouble:
        return appendValues(options, form, spec.createDiscreteDoubleRangeIter(), spec.getLowDoubleRange(),
                            spec.getHighDoubleRange(), spec.getDoubleDefault());
    case Type::TypeBitHex:
        return appendValues<Form, Text>(options, form, spec.createHexIter(), spec.getLowHexRange(),
                                        spec.getHighHexRange(), spec.getHexDefault());
    case Type::TypeBitBinary:
        return appendValues<Form, Text>(options, form, spec.createBinaryIter(), spec.getLowBinaryRange(),
                                        spec.getHighBinaryRange(), spec.getBinaryDefault());
    case Type::TypeString:
        if (const std::unique_ptr<HATTextIter> values(spec.createStringRangeIter()); spec.isEnumerated())
            options.list(form, *values);
        return options.value("default = ", form, spec.getStringDefault());
    case Type::TypeBool: return options.flag("default = ", spec.getBoolDefault());
    }
}

void appendType(std::string& line, const HDNTProperty& property) {
    line += "property ";
    if (!isBits(property)) {
        line += HDNTProperty::getTypeName(property.getType());
        return;
    }
    appendInt(line, property.getBitWidth());
    line += radixOf(property);
}

void appendFlags(Options& options, const HDNTProperty& property) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    if (spec.isTest()) options.flag("test = ", true);
    if (spec.isConstraintsOnly()) options.flag("constraintsOnly = ", true);
    if (spec.isSimulation() && !options.isLed()) options.flag("simulation = ", true);
    if (property.isMuxControl()) options.flag("muxControl = ", true);
}

// What the grammar, or a limit in force, refuses.
void findUnwritable(const HDNTProperty& property, const CannotWrite& cannotWrite) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    const HDNTLimits& limits = HDNTLimits::get();
    const bool isNumber = property.getType() == Type::TypeInt || property.getType() == Type::TypeDouble;
    if (spec.hasUnit() && !spec.getUnitDefault().empty() && !isNumber && !isBits(property))
        cannotWrite("units, which its type does not have");
    if (isBits(property) && (property.getBitWidth() < 0 || property.getBitWidth() > limits.bitWidth))
        cannotWrite("a width of " + std::to_string(property.getBitWidth()) + " bits");
    if (isBits(property) && spec.isEnumerated() &&
        (isHex(property) ? spec.getHexDefault() : spec.getBinaryDefault()).empty())
        cannotWrite("a list of allowed values without a default");
    if (property.getType() == Type::TypeDouble &&
        (property.getPrecision() < 0 || property.getPrecision() > limits.precision))
        cannotWrite("a precision of " + std::to_string(property.getPrecision()));
}

} // namespace

void appendPrinted(std::string& line, const HDNTProperty& property) {
    appendType(line, property);
    line += ' ';
    appendQuoted(line, property.getName());
    line += " { ";
    Options options(line);
    appendAllValues(options, Printed{property});
    if (property.getType() == Type::TypeDouble) {
        options.begin("precision = ");
        appendInt(line, property.getPrecision());
    }
    appendFlags(options, property);
    if (property.getAttrSpec()->hasUnit()) {
        options.begin("units = ");
        appendQuoted(line, property.getAttrSpec()->getUnitDefault());
    }
    line += " }";
}

void appendSource(std::string& line, const HDNTProperty& property, const CannotWrite& cannotWrite) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    findUnwritable(property, cannotWrite);
    appendType(line, property);
    line += ' ';
    appendSourceText(line, property.getName(), cannotWrite);
    line += " { ";
    Options options(line);
    appendAllValues(options, Source{property, cannotWrite});
    if (property.getType() == Type::TypeDouble && property.getPrecision() != defaultPrecision) {
        options.begin("precision = ");
        appendInt(line, property.getPrecision());
    }
    appendFlags(options, property);
    const auto text = [&](const char* option, const std::string& value) {
        options.begin(option);
        appendSourceText(line, value, cannotWrite);
    };
    if (spec.hasUnit() && !spec.getUnitDefault().empty()) text("units = ", spec.getUnitDefault());
    if (const std::string& description = property.getDeclaredDescription(); !description.empty())
        text("description = ", description);
    line += " }";
}

void appendSourceText(std::string& line, const std::string& text, const CannotWrite& cannotWrite) {
    if (text.find_first_of("\"\n") != text.npos)
        cannotWrite("the text \"" + text + "\", which holds a quote or a line break");
    appendQuoted(line, text);
}

void appendSourceNumber(std::string& line, double value, const CannotWrite& cannotWrite) {
    if (std::isnan(value)) cannotWrite("a number that is none (NaN)");
    else appendShortest(line, value);
}

} // namespace hdnt::writer
