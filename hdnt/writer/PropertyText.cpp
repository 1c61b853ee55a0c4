// Property declarations, printed and as source.
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/TypedValues.internal.h"
#include "hdnt/model/Words.h"
#include "hdnt/writer/Line.internal.h"
#include "hdnt/writer/PropertyText.internal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>

namespace hdnt::writer {

using Type = HATAttrTypes::AttrType;

namespace {

// What a declaration without the option has.
constexpr int defaultPrecision = 6;

bool isHex(const HDNTProperty& property) { return property.getType() == Type::TypeBitHex; }
bool isBits(const HDNTProperty& property) { return HATAttrTypes::isBitVector(property.getType()); }
const char* radixOf(const HDNTProperty& property) { return isHex(property) ? "'h" : "'b"; }

// No constant is an empty text.
bool lacksDefault(const HDNTProperty& property) {
    return isBits(property) && property.getDefaultValue() == hdnt::Value(std::string());
}

void appendBool(Line& line, bool value) { line.add(value ? std::string_view("true") : "false"); }

/// What a character may be in a value of bits.
enum Digit : unsigned char { Binary = 1, Hex = 2, Capital = 4 };

constexpr auto digitTable = [] {
    std::array<unsigned char, 256> table{};
    for (const char c : std::string_view("01")) table[static_cast<unsigned char>(c)] = Binary;
    for (const char c : std::string_view("0123456789ABCDEF")) table[static_cast<unsigned char>(c)] |= Hex | Capital;
    for (const char c : std::string_view("abcdef")) table[static_cast<unsigned char>(c)] = Hex;
    return table;
}();

// What all of them are.
unsigned kindOf(std::string_view digits) {
    unsigned kind = Binary | Hex | Capital;
    for (const char c : digits) kind &= digitTable[static_cast<unsigned char>(c)];
    return kind;
}

// What HDNTProperty::formatValue gives without leading zeros, put together in place where the value has the radix of
// its type or none: as many digits as the width has, of which one zero stays where there are any.
void appendBits(Line& line, const HDNTProperty& property, const std::string& value) {
    if (value.empty()) return;
    const bool hex = isHex(property);
    std::string_view digits = value;
    const size_t quote = value.find('\'');
    const bool hasDigits = quote < value.size() && quote + 2 < value.size();
    if (hasDigits && value[quote + 1] == radixOf(property)[1]) digits.remove_prefix(quote + 2);
    const unsigned kind = kindOf(digits);
    if ((kind & (hex ? Hex : Binary)) == 0) {
        line.add(property.formatValue(value, false));
        return;
    }
    const auto width = static_cast<size_t>(std::max(property.getBitWidth(), 0));
    const size_t room = hex ? (width + 3) / 4 : width;
    if (room > 0 && digits.size() > room) digits.remove_prefix(digits.size() - room);
    while (!digits.empty() && digits.front() == '0') digits.remove_prefix(1);
    if (digits.size() < room || digits.empty()) line.add('0');
    if ((kind & Capital) != 0) line.add(digits);
    else
        for (const char c : digits) line.add(c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c);
}

// How values look in the two forms, and which of them are there.

struct Printed {
    const HDNTProperty& property;

    bool hasMin() const { return true; }
    bool hasMax() const { return true; }
    bool hasDefault() const { return true; }
    void append(Line& line, bool value) const { appendBool(line, value); }
    void append(Line& line, int value) const { line.add(value); }
    void append(Line& line, double value) const { line.fixed(value, property.getPrecision()); }
    void append(Line& line, const std::string& value) const {
        if (isBits(property)) appendBits(line, property, value);
        else line.quoted(value);
    }
    void appendEmptyList(Line& line) const { line.add(" }"); }
};

struct Source {
    const HDNTProperty& property;
    const CannotWrite& cannotWrite;

    bool hasMin() const { return property.isMinDeclared(); }
    bool hasMax() const { return property.isMaxDeclared(); }
    bool hasDefault() const { return !lacksDefault(property); }
    void append(Line& line, bool value) const { appendBool(line, value); }
    void append(Line& line, int value) const { line.add(value); }
    void append(Line& line, double value) const { appendSourceNumber(line, value, cannotWrite); }
    void append(Line& line, const std::string& value) const {
        if (!isBits(property)) return appendSourceText(line, value, cannotWrite);
        if (!isConstant(value)) cannotWrite("the value \"" + value + "\", which is no constant of its type");
        line.add(value);
    }
    void appendEmptyList(Line& line) const {
        cannotWrite("a list of allowed values that is empty");
        line.add("values { }");
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
    explicit Options(Line& line) : line_(line) {}

    bool empty() const { return empty_; }
    void begin(std::string_view text) {
        if (!empty_) line_.add(", ");
        empty_ = false;
        line_.add(text);
    }
    void flag(std::string_view text, bool on) {
        begin(text);
        appendBool(line_, on);
    }
    // An option that may come first, for the others.
    void lead(const HATAttrSpec& spec) {
        flag("simulation = ", spec.isSimulation());
        led_ = true;
    }
    bool isLed() const { return led_; }
    template <typename Form, typename T>
    void value(std::string_view text, const Form& form, const T& value) {
        begin(text);
        form.append(line_, value);
    }
    template <typename Form, typename T>
    void list(const Form& form, const model::TypedValues<T>& listed) {
        const std::unique_ptr<HATValueIter<T>> values((listed.spec.*listed.list)());
        begin("");
        if (!values->hasNext()) return form.appendEmptyList(line_);
        for (std::string_view before = "values { "; values->hasNext(); before = ", ") {
            values->next();
            line_.add(before);
            form.append(line_, values->current());
        }
        line_.add(" }");
    }
    template <typename Form>
    void list(const Form&, const model::TypedValues<bool>&) {} // there is none

private:
    Line& line_;
    bool empty_ = true;
    bool led_ = false;
};

// The list or range, and the default. A maximum cannot be the first option: then it stands behind the default.
template <typename Form, typename T>
void appendValues(Options& options, const Form& form, const model::TypedValues<T>& values) {
    const bool listed = values.spec.isEnumerated();
    const bool hasMax = values.ranged && !listed && form.hasMax();
    if (listed) options.list(form, values);
    else if (values.ranged && form.hasMin()) options.value("min = ", form, values.low);
    const bool maxFirst = hasMax && !options.empty();
    if (maxFirst) options.value("max = ", form, values.high);
    if (form.hasDefault()) options.value("default = ", form, values.byDefault);
    if (options.empty()) options.lead(values.spec);
    if (hasMax && !maxFirst) options.value("max = ", form, values.high);
}

template <typename Form>
void appendAllValues(Options& options, const Form& form) {
    model::withValues(*form.property.getAttrSpec(), [&](const auto& values) { appendValues(options, form, values); });
}

void appendType(Line& line, const HDNTProperty& property) {
    line.add("property ");
    const std::string_view word = hdnt::words::propertyTypes.wordOf(property.getType());
    if (isBits(property)) line.add(property.getBitWidth()).add(std::string_view(radixOf(property)));
    else if (!word.empty()) line.add(word);
    else line.add(HDNTProperty::getTypeName(property.getType())); // says that it is none
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
    if (lacksDefault(property) && spec.isEnumerated()) cannotWrite("a list of allowed values without a default");
    if (property.getType() == Type::TypeDouble &&
        (property.getPrecision() < 0 || property.getPrecision() > limits.precision))
        cannotWrite("a precision of " + std::to_string(property.getPrecision()));
}

} // namespace

void appendPrinted(Line& line, const HDNTProperty& property) {
    appendType(line, property);
    line.add(' ').quoted(property.getName()).add(" { ");
    Options options(line);
    appendAllValues(options, Printed{property});
    if (property.getType() == Type::TypeDouble) {
        options.begin("precision = ");
        line.add(property.getPrecision());
    }
    appendFlags(options, property);
    if (property.getAttrSpec()->hasUnit()) {
        options.begin("units = ");
        line.quoted(property.getAttrSpec()->getUnitDefault());
    }
    line.add(" }");
}

void appendSource(Line& line, const HDNTProperty& property, const CannotWrite& cannotWrite) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    findUnwritable(property, cannotWrite);
    appendType(line, property);
    line.add(' ');
    appendSourceText(line, property.getName(), cannotWrite);
    line.add(" { ");
    Options options(line);
    appendAllValues(options, Source{property, cannotWrite});
    if (property.getType() == Type::TypeDouble && property.getPrecision() != defaultPrecision) {
        options.begin("precision = ");
        line.add(property.getPrecision());
    }
    appendFlags(options, property);
    const auto text = [&](std::string_view option, const std::string& value) {
        options.begin(option);
        appendSourceText(line, value, cannotWrite);
    };
    if (spec.hasUnit() && !spec.getUnitDefault().empty()) text("units = ", spec.getUnitDefault());
    if (const std::string& description = property.getDeclaredDescription(); !description.empty())
        text("description = ", description);
    line.add(" }");
}

void appendSourceText(Line& line, const std::string& text, const CannotWrite& cannotWrite) {
    if (std::any_of(text.begin(), text.end(), [](char c) { return c == '"' || c == '\n'; }))
        cannotWrite("the text \"" + text + "\", which holds a quote or a line break");
    line.quoted(text);
}

void appendSourceNumber(Line& line, double value, const CannotWrite& cannotWrite) {
    if (std::isnan(value)) cannotWrite("a number that is none (NaN)");
    else line.shortest(value);
}

} // namespace hdnt::writer

void HDNTProperty::print() { print(4); }
void HDNTProperty::print(unsigned long indent) { print(indent, stdout); }

void HDNTProperty::print(unsigned long indent, FILE* stream) { std::as_const(*this).print(indent, stream); }

void HDNTProperty::print(unsigned long indent, FILE* stream) const {
    hdnt::writer::Line line;
    line.indent(static_cast<long>(indent));
    hdnt::writer::appendPrinted(line, *this);
    line.add('\n');
    std::fwrite(line.view().data(), 1, line.view().size(), stream);
}
