#include "bench/Generator.h"

#include "bench/MappingGenerator.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

const char* const families[] = {"FLOP",      "TABLE",     "ADD_CHAIN", "SELECT", "MEM_BLOCK", "SHIFT",
                                "PAD_BIDIR", "CLOCK_GEN", "DELAY",     "LATCH",  "MULTIPLY",  "COUNT",
                                "LINK_LANE", "CHECKSUM",  "COMPARE",   "ROUTE"};
const char* const groups[] = {"REGISTER", "LOGIC",    "ARITHMETIC", "LOGIC", "MEMORY", "MEMORY", "PAD",        "CLOCK",
                              "DELAY",    "REGISTER", "ARITHMETIC", "COUNT", "LINK",   "CHECK",  "ARITHMETIC", "ROUTE"};
const char* const forms[] = {"RISE",  "FALL", "WIDE", "FAST",  "SCAN",   "ENABLE",
                             "CLEAR", "DUAL", "DEEP", "LOCAL", "SIGNED", "MIXED"};
const char* const subgroups[] = {"PLAIN", "ASYNC", "CASCADE", "CONTROL", "OLD_LINE"};
const char* const inputs[] = {"D",        "A",    "B",    "C",    "ADDR",     "SEL",     "DATA_IN",
                              "CARRY_IN", "LOAD", "MASK", "MODE", "SHIFT_IN", "SCAN_IN", "START"};
const char* const outputs[] = {"Q",     "O",     "S",      "DATA_OUT",  "CARRY_OUT",
                               "VALID", "READY", "STATUS", "SHIFT_OUT", "CLK_OUT"};
const char* const controls[][2] = {{"CLK", "clock"},   {"CE", "enable"}, {"CLR", "clear"},   {"PRE", "preset"},
                                   {"R", "reset"},     {"S_IN", "set"},  {"SR", "setreset"}, {"WE", "writeEnable"},
                                   {"CLK_B", "clock"}, {"EN", "enable"}};
const char* const requiredValues[] = {"tieLow",      "tieLow",      "tieLow", "tieHigh", "tieHigh",
                                      "mustConnect", "mustConnect", "active", "untie",   "tieSpecial"};
const char* const firstNames[] = {"CLOCK", "DATA",  "INIT",  "OUTPUT",  "INPUT", "READ",
                                  "WRITE", "CARRY", "RESET", "ENABLE",  "DELAY", "FEEDBACK",
                                  "PHASE", "LEVEL", "WIDTH", "CASCADE", "SLEEP", "PIPELINE"};
const char* const lastNames[] = {"EDGE", "MODE",  "SOURCE", "COUNT", "VALUE", "DEPTH", "STAGES", "LIMIT", "MASK",
                                 "STEP", "RATIO", "SELECT", "STYLE", "ORDER", "CODE",  "PLACE",  "RANGE", "OFFSET"};
const char* const valueNames[] = {"NONE",        "FAST",      "SLOW",   "RISE",      "FALL",   "BOTH",
                                  "AUTO",        "LOCAL",     "GLOBAL", "SINGLE",    "DOUBLE", "READ_FIRST",
                                  "WRITE_FIRST", "NO_CHANGE", "BYPASS", "REGISTERED"};
const char* const plainWords[] = {
    "the",    "value",  "after",  "configuration", "of",    "register", "input",  "when",  "clock", "is",
    "output", "table",  "bits",   "that",          "a",     "chain",    "before", "reset", "holds", "for",
    "each",   "stage",  "memory", "row",           "which", "drives",   "its",    "low",   "half",  "and",
    "signal", "leaves", "pad",    "without",       "delay", "in",       "mode",   "taken", "from",  "line"};
const char* const unitNames[] = {"ns", "ps", "pF", "mA", "steps", "MHz", "bits"};
constexpr int vectorWidths[] = {1, 4, 8, 16, 16, 32, 64, 64, 128, 256};
constexpr int busWidths[] = {2, 4, 4, 8, 8, 8, 16, 16, 18, 32, 32, 32, 48, 64, 72};
constexpr size_t leafCount = 48;

/// A name that was not there: the word itself, else the word with the first number that is free.
std::string unused(const std::string& word, std::set<std::string>& taken) {
    std::string name = word;
    for (int number = 1; !taken.insert(name).second; ++number) name = word + "_" + std::to_string(number);
    return name;
}

std::string fixedPoint(int hundredths) {
    char text[32];
    std::snprintf(text, sizeof text, "%d.%02d", hundredths / 100, hundredths % 100);
    return text;
}

} // namespace

const std::vector<Function>& Generator::functions() {
    static const std::vector<Function> all = {
        {"int", "intProperty", {"string"}},        {"double", "doubleProperty", {"string"}},
        {"bool", "boolProperty", {"string"}},      {"string", "stringProperty", {"string"}},
        {"bool", "isConnected", {"string"}},       {"string", "familyCode", {}},
        {"int", "steps", {"int", "double"}},       {"bool", "reserveColumn", {"string"}},
        {"bool", "makePair", {"string", "string"}}};
    return all;
}

Block Generator::next() {
    Block block;
    const size_t family = static_cast<size_t>(random_.below(static_cast<int>(std::size(families))));
    block.name = std::string(families[family]) + "_" + random_.pick(forms) + "_" + std::to_string(count_++);
    block.group = groups[family];
    if (random_.chance(70)) block.subgroup = random_.pick(subgroups);
    if (random_.chance(20)) block.legacyGroup = random_.pick(groups);
    if (random_.chance(70)) {
        static const char* const levels[] = {"production", "production", "production", "beta", "early", "deprecated"};
        block.maturity = random_.pick(levels);
    }
    block.internal = random_.chance(4);
    if (random_.chance(45))
        for (int lines = random_.between(1, 3); lines > 0; --lines)
            block.comment.push_back(words(random_.between(5, 12)));

    addPins(block);
    const int size = random_.below(10);
    const int properties = size < 3   ? random_.between(0, 8)
                           : size < 8 ? random_.between(9, 23)
                                      : random_.between(22, 58);
    addProperties(block.properties, properties, block.pins);

    if (!leaves_.empty() && random_.chance(45)) block.mapping = MappingGenerator(random_, block, leaves_).make();
    else if (leaves_.size() < leafCount) leaves_.push_back(block);
    else leaves_[static_cast<size_t>(random_.below(static_cast<int>(leafCount)))] = block;
    return block;
}

std::string Generator::words(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text.append(i ? " " : "").append(random_.pick(plainWords));
    text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text + ".";
}

Pin Generator::makePin(const char* direction, std::set<std::string>& taken) {
    Pin pin;
    pin.direction = direction;
    const bool input = direction[0] == 'i' && direction[2] == 'p';
    if (input && random_.chance(35)) {
        const auto& control = random_.pick(controls);
        pin.name = unused(control[0], taken);
        pin.type = control[1];
    } else {
        pin.name = unused(input                 ? random_.pick(inputs)
                          : direction[0] == 'o' ? random_.pick(outputs)
                          : direction[0] == 'b' ? "PAD"
                                                : "NODE",
                          taken);
        if (random_.chance(34)) {
            const int width = random_.pick(busWidths);
            pin.range = random_.chance(90) ? std::pair{width - 1, 0} : std::pair{0, width - 1};
        }
        if (random_.chance(60)) pin.type = pin.range && random_.chance(4) ? "mixed" : "data";
    }
    pin.test = random_.chance(3);
    pin.abstract = random_.chance(1);
    if (direction[0] != 'o' && random_.chance(70)) pin.required = random_.pick(requiredValues);
    if (random_.chance(2)) addProperties(pin.properties, random_.between(1, 2), {});
    if (random_.chance(4)) pin.comment = words(random_.between(3, 7));
    return pin;
}

void Generator::addPins(Block& block) {
    std::set<std::string> taken;
    const int size = random_.below(10);
    const int count = size < 6 ? random_.between(3, 11) : size < 9 ? random_.between(10, 26) : random_.between(24, 60);
    for (int i = 0; i < count; ++i) {
        const int kind = random_.below(100);
        block.pins.push_back(makePin(i == 0 || kind < 62 ? "input" : i == 1 || kind < 96 ? "output" : "bidir", taken));
    }
    if (random_.chance(5)) block.pins.push_back(makePin("internal", taken));
}

void Generator::addProperties(std::vector<Property>& properties, int count, const std::vector<Pin>& pins) {
    std::set<std::string> taken;
    for (const Pin& pin : pins) {
        if (static_cast<int>(properties.size()) >= count / 3) break;
        if (std::string(pin.type) != "clock" || pin.range) continue;
        Property inversion;
        inversion.type = ValueType::Binary;
        inversion.width = 1;
        inversion.name = unused("IS_" + pin.name + "_INVERTED", taken);
        inversion.defaultValue = "0";
        properties.push_back(inversion);
    }
    while (static_cast<int>(properties.size()) < count) {
        Property property = makeProperty();
        std::string name = random_.pick(firstNames);
        name.append("_").append(random_.pick(lastNames));
        property.name = unused(name, taken);
        properties.push_back(std::move(property));
    }
}

Property Generator::makeProperty() {
    Property property;
    const int kind = random_.below(100);
    if (kind < 22) property.type = ValueType::Int;
    else if (kind < 32) property.type = ValueType::Double;
    else if (kind < 46) property.type = ValueType::Bool;
    else if (kind < 70) property.type = ValueType::String;
    else if (kind < 90) property.type = ValueType::Hex;
    else property.type = ValueType::Binary;

    switch (property.type) {
    case ValueType::Int:
    case ValueType::Double: fillNumber(property); break;
    case ValueType::Bool: property.defaultValue = random_.chance(50) ? "true" : "false"; break;
    case ValueType::String:
        if (random_.chance(85)) {
            const int first = random_.below(static_cast<int>(std::size(valueNames)));
            for (int i = random_.between(2, 5); i > 0; --i)
                property.values.push_back(valueNames[static_cast<size_t>(first + i) % std::size(valueNames)]);
            property.defaultValue = random_.pick(property.values);
        } else property.defaultValue = random_.pick(valueNames);
        break;
    default: fillVector(property); break;
    }
    property.simulation = random_.chance(8);
    property.muxControl = random_.chance(10);
    property.test = random_.chance(3);
    property.constraintsOnly = random_.chance(4);
    if (random_.chance(24)) property.description = words(random_.between(3, 9));
    return property;
}

void Generator::fillNumber(Property& property) {
    const bool whole = property.type == ValueType::Int;
    const auto text = [&](int value) { return whole ? std::to_string(value) : fixedPoint(value); };
    const int form = random_.below(10);
    if (form < 5) {
        const int least = whole ? random_.between(-8, 1) : random_.below(100);
        const int most = least + (1 << random_.between(1, 12));
        property.minimum = text(least);
        property.maximum = text(most);
        property.defaultValue = text(random_.between(least, most));
    } else if (form < 7) {
        const int step = whole ? 1 : 25;
        for (int i = random_.between(2, 6); i > 0; --i) property.values.push_back(text(i * step));
        property.defaultValue = random_.pick(property.values);
    } else property.defaultValue = text(random_.below(1000));
    if (!whole && random_.chance(50)) property.precision = random_.between(1, 4);
    if (random_.chance(whole ? 10 : 60)) property.units = random_.pick(unitNames);
}

std::string Generator::digits(const Property& property) {
    const int count = property.type == ValueType::Hex ? (property.width + 3) / 4 : property.width;
    const int most = property.type == ValueType::Hex ? std::min(16, 1 << std::min(property.width, 4)) : 2;
    std::string text;
    const bool plain = random_.chance(60);
    for (int i = 0; i < count; ++i) text += plain ? '0' : "0123456789ABCDEF"[random_.below(most)];
    return text;
}

void Generator::fillVector(Property& property) {
    property.width = property.type == ValueType::Hex ? random_.pick(vectorWidths) : random_.between(1, 8);
    const int form = random_.below(10);
    if (form < 3 && property.width <= 64) {
        const std::string all = property.type == ValueType::Binary ? "1" : property.width == 1 ? "1" : "F";
        const std::string zeros(digits(property).size(), '0');
        property.minimum = zeros;
        property.maximum.emplace();
        while (property.maximum->size() < zeros.size()) *property.maximum += all;
    } else if (form < 5 && property.width <= 16 && property.width > 1) {
        std::set<std::string> values;
        for (int i = random_.between(2, 4); i > 0; --i) values.insert(digits(property));
        property.values.assign(values.begin(), values.end());
        property.defaultValue = random_.pick(property.values);
        return;
    }
    property.defaultValue = digits(property);
}

} // namespace bench
