#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <locale>

using support::inBlock;
using support::loaded;
using support::Reports;
using support::Texts;

using Type = HATAttrTypes::AttrType;

struct OneProperty {
    explicit OneProperty(const std::string& declaration) : library(loaded(inBlock("property " + declaration))) {}
    const HDNTProperty* operator->() const { return library->getTypeBlock(0)->getProperty(0); }
    std::unique_ptr<HDNTLibrary> library;
};

TEST(Property, DefaultsOutsideTheList) {
    Reports reports;
    const struct {
        const char* text;
        bool reported;
    } cases[] = {
        {"double \"P\" { values { 0.5, 1.0 }, default = 1.0 }", false},
        {"double \"P\" { values { 0.5, 1.0 }, default = 2.0 }", true},
        {"double \"P\" { min = 0.0, max = 1.0, default = 9.0 }", false},
        {"8'h \"P\" { values { 8'h0F, 8'hFF }, default = 8'h0F }", false},
        {"8'h \"P\" { values { 8'h0F, 8'hFF }, default = 8'hF }", true},
        {"2'b \"P\" { values { 2'b01, 2'b10 }, default = 2'b1 }", true},
        {"int \"P\" { values { 1, 2 }, default = 3 }", false},
        {"string \"P\" { values { \"a\" }, default = \"b\" }", false},
    };
    for (const auto& [text, reported] : cases) {
        const OneProperty property(text);
        EXPECT_EQ(reports.take().size(), reported ? 1U : 0U) << text;
    }
}

TEST(Property, HexRangesAreCompleted) {
    const struct {
        const char* text;
        const char* low;
        const char* high;
    } cases[] = {{"1'h \"P\" { default = 1'h0 }", "0", "1"},
                 {"4'h \"P\" { default = 1'h0 }", "0", "F"},
                 {"5'h \"P\" { default = 1'h0 }", "00", "1F"},
                 {"7'h \"P\" { default = 1'h0 }", "00", "7F"},
                 {"10'h \"P\" { default = 1'h0 }", "000", "3FF"},
                 {"16'h \"P\" { min = 16'h1 }", "16'h1", "FFFF"},
                 {"8'h \"P\" { values { 8'h9, 8'h10 } }", "8'h10", "8'h9"}};
    for (const auto& [text, low, high] : cases) {
        const OneProperty property(text);
        EXPECT_EQ(property->getMinHexValue(), low) << text;
        EXPECT_EQ(property->getMaxHexValue(), high) << text;
    }
    EXPECT_EQ(OneProperty("4'b \"P\" { default = 4'b0 }")->getMaxBinaryValue(), "");
}

TEST(Property, PinInversion) {
    for (const auto& [name, inversion] :
         {std::pair("IS_C_INVERTED", true), {"IS_INVERTED", false}, {"IS__INVERTED", false}, {"WAS_C_INVERTED", false}})
        EXPECT_EQ(OneProperty(std::string("bool \"") + name + "\" true;")->isPinInversion(), inversion) << name;
}

TEST(Property, FlagsAndUnits) {
    const OneProperty property("int \"P\" { min = 0, constraintsOnly = true, simulation = true, units = \"ns\" }");
    const HATAttrSpec& spec = *property->getAttrSpec();
    EXPECT_TRUE(spec.isConstraintsOnly() && !spec.isVisible() && spec.isSimulation() && spec.isTessel() &&
                spec.hasUnit());
    EXPECT_EQ(HDNTProperty::getTypeName(Type::TypeBitHex), "bithex");
    EXPECT_THROW(HDNTProperty::getTypeName(static_cast<Type>(4)), HEXAlgException);
}

TEST(PropertyValue, Reasons) {
    const OneProperty ranged("int \"P\" { min = 0, max = 10 }");
    const OneProperty listed("int \"P\" { values { 5, 1 } }");
    const OneProperty real("double \"P\" { min = 0.5, max = 2.0 }");
    const OneProperty reals("double \"P\" { values { 0.5 } }");
    const OneProperty flag("bool \"P\" true;");
    const OneProperty text("string \"P\" { values { \"ABC\", \"DEF\" } }");
    const OneProperty freeText("string \"P\" { default = \"\" }");
    const OneProperty hex("8'h \"P\" { min = 8'h0 }");
    const OneProperty hexes("8'h \"P\" { values { 8'h0F } }");
    std::string reason;
    const auto ask = [&](const OneProperty& property, auto value) {
        reason = "valid";
        const bool valid = property->isValidValue(value, reason);
        EXPECT_EQ(valid, reason == "valid");
        return reason;
    };
    EXPECT_EQ(ask(ranged, 0), "valid");
    EXPECT_EQ(ask(ranged, 10), "valid");
    EXPECT_EQ(ask(ranged, -1), "The integer value (-1) is less than the allowed minimum (0).");
    EXPECT_EQ(ask(ranged, 11), "The integer value (11) is greater than the allowed minimum (10).");
    EXPECT_EQ(ask(listed, 2), "The integer value is not one of the allowed values.");
    EXPECT_EQ(ask(ranged, true), "Property is not of type bool.");
    EXPECT_EQ(ask(real, 1), "Property is not of type integer.");
    EXPECT_EQ(ask(real, 3.0), "The double value (3) is greater than the allowed minimum (0.5).");
    EXPECT_EQ(ask(real, 0.25), "The double value (0.25) is less than the allowed minimum (0.5).");
    EXPECT_EQ(ask(reals, 0.25), "The double value is not one of the allowed values.");
    EXPECT_EQ(ask(ranged, 1.0), "Property is not of type double.");
    EXPECT_EQ(ask(flag, false), "valid");
    EXPECT_EQ(ask(text, "abc"), "valid");
    EXPECT_EQ(ask(text, "x"), "The string value is not one of the allowed values.");
    EXPECT_EQ(ask(freeText, "x"), "valid");
    EXPECT_EQ(ask(ranged, "x"), "Property is not of type string.");
    EXPECT_EQ(ask(hex, std::string("anything")), "valid");
    EXPECT_EQ(ask(hexes, "8'h0f"), "valid");
    EXPECT_EQ(ask(hexes, "0F"), "The string value is not one of the allowed values.");
    EXPECT_EQ(listed->getMinIntValue() * 10 + listed->getMaxIntValue(), 15);
}

// A host that groups digits and writes a decimal comma gets the same texts.
// Default, bounds and values as texts, "-" where there are none.
TEST(PropertyValue, OfAnyType) {
    const struct {
        const char* declaration;
        const char* expected;
        size_t alternative;
    } cases[] = {
        {"bool \"P\" true;", "true - -", 0},
        {"int \"P\" { default = 3 }", "3 - -", 1},
        {"int \"P\" { min = 0, default = 3 }", "3 0 -", 1},
        {"int \"P\" { min = 1, max = 9 }", "0 1 9", 1},
        {"int \"P\" { values { 5, 1, 7 } }", "5 1 7 | 5 1 7", 1},
        {"double \"P\" { default = 0.5 }", "0.5 - -", 2},
        {"double \"P\" { min = 1.0, max = 2.0, default = 1.5 }", "1.5 1.0 2.0", 2},
        {"double \"P\" { values { 0.5, 0.25 } }", "0.5 0.25 0.5 | 0.5 0.25", 2},
        {"string \"P\" { default = \"x\" }", "x - -", 3},
        {"string \"P\" { values { \"b\", \"a\" } }", "b - - | b a", 3},
        {"8'h \"P\" { default = 8'h0f }", "8'h0f 00 FF", 3},
        {"8'h \"P\" { values { 8'h9, 8'h10 } }", "8'h9 8'h10 8'h9 | 8'h9 8'h10", 3},
        {"2'b \"P\" { default = 2'b01 }", "2'b01 - -", 3},
        {"2'b \"P\" { min = 2'b01, default = 2'b10 }", "2'b10 2'b01 -", 3},
    };
    const auto textOr = [](const std::optional<hdnt::Value>& value) { return value ? hdnt::textOf(*value) : "-"; };
    const auto describe = [&](const HDNTProperty& property) {
        std::string text = hdnt::textOf(property.getDefaultValue()) + " " + textOr(property.getMinValue()) + " " +
                           textOr(property.getMaxValue());
        const std::vector<hdnt::Value> allowed = property.getAllowedValues();
        for (const hdnt::Value& value : allowed) text += (&value == &allowed[0] ? " | " : " ") + hdnt::textOf(value);
        return text;
    };
    for (const auto& [declaration, expected, alternative] : cases) {
        const OneProperty property(declaration);
        EXPECT_EQ(describe(*property.operator->()), expected) << declaration;
        EXPECT_EQ(property->getDefaultValue().index(), alternative) << declaration;
        if (*expected != '0') { // that of the range is below its minimum
            std::string reason;
            EXPECT_TRUE(property->isValid(property->getDefaultValue(), reason)) << declaration << reason;
        }
    }
    const auto library = loaded(inBlock("pin \"A\" input { property int \"P\" { default = 2, max = 4 } }"));
    EXPECT_EQ(describe(library->blocks()[0].pins()[0].properties()[0]), "2 - 4");
}

TEST(PropertyValue, OfAnotherTypeIsRefusedWithItsReason) {
    const OneProperty real("double \"P\" { min = 0.5, max = 2.0 }");
    const std::pair<hdnt::Value, const char*> cases[] = {
        {0.25, "The double value (0.25) is less than the allowed minimum (0.5)."},
        {1, "Property is not of type integer."},
        {true, "Property is not of type bool."},
        {"1.0", "Property is not of type string."}};
    for (const auto& [value, expected] : cases) {
        std::string reason;
        EXPECT_FALSE(real->isValid(value, reason));
        EXPECT_EQ(reason, expected);
    }
    HDNTProperty bare("P", Type::TypeInt, false, false, false, false, "");
    bare.getAttrSpec()->setDiscreteInt(true);
    EXPECT_EQ(bare.getMinValue(), hdnt::Value(0)) << "a list that is empty";
}

// What a property takes when bit vectors are numbers; the reasons begin with the property's name.
TEST(PropertyValue, StrictRefusals) {
    const char* const hex = "8'h \"P\" { default = 8'h0 }";
    const char* const ranged = "8'h \"P\" { min = 8'h10, max = 8'h7f }";
    const char* const listed = "8'h \"P\" { values { 8'h0F, 8'h10 }, default = 8'h0F }";
    const char* const binary = "4'b \"P\" { default = 4'b1 }";
    const char* const least = "4'b \"P\" { min = 4'b11 }";
    const char* const number = "int \"P\" { min = 1, max = 64, default = 1 }";
    const char* const real = "double \"P\" { min = 0.5, default = 1.0 }";
    const char* const flag = "bool \"P\" true;";
    const char* const mode = "string \"P\" { values { \"FAST\", \"SLOW\" } }";
    const char* const noForm = " is no 8'h value; write 8'h00 to 8'hFF";
    const char* const tooWide = " is wider than 8 bits; write 8'h00 to 8'hFF";
    const struct {
        const char* declaration;
        hdnt::Value value;
        std::string reason;
    } cases[] = {
        {hex, "8'hfF", ""},
        {hex, "8'H00ff", ""},
        {hex, "7", ""},
        {hex, "4'B1010", ""},
        {hex, "hello", std::string("'hello'") + noForm},
        {hex, "0x8", std::string("'0x8'") + noForm},
        {hex, "", std::string("''") + noForm},
        {hex, "8'h", std::string("'8'h'") + noForm},
        {hex, "8'", std::string("'8''") + noForm},
        {hex, "'hFF", std::string("''hFF'") + noForm},
        {hex, "-8'hFF", std::string("'-8'hFF'") + noForm},
        {hex, "+8'hFF", std::string("'+8'hFF'") + noForm},
        {hex, "8'd12", std::string("'8'd12'") + noForm},
        {hex, "4'b12", std::string("'4'b12'") + noForm},
        {hex, " 8'hFF", std::string("' 8'hFF'") + noForm},
        {hex, "8'hF_F", std::string("'8'hF_F'") + noForm},
        {hex, 255, std::string("255") + noForm},
        {hex, "9'h1FF", std::string("9'h1FF") + tooWide},
        {hex, "9'h0FF", std::string("9'h0FF") + tooWide},
        {hex, "99999999999999999999'h1", std::string("99999999999999999999'h1") + tooWide},
        {hex, "1FF", std::string("8'h1FF is wider than 8 bits; write 8'h00 to 8'hFF")},
        {hex, "4'hFF", "4'hFF is wider than 4 bits; write 8'h00 to 8'hFF"},
        {ranged, "010", ""},
        {ranged, "8'h7F", ""},
        {ranged, "8'hF", "8'hF is below 8'h10; allowed are 8'h10 to 8'h7f"},
        {ranged, "80", "8'h80 is above 8'h7f; allowed are 8'h10 to 8'h7f"},
        {listed, "f", ""},
        {listed, "8'b10000", ""},
        {listed, "8'h0E", "8'h0E is none of 8'h0F, 8'h10"},
        {listed, "x", "'x' is no 8'h value; write one of 8'h0F, 8'h10"},
        {binary, "0101", ""},
        {binary, "4'hf", ""},
        {binary, "2", "'2' is no 4'b value; write 4'b0000 to 4'b1111"},
        {least, "10", "4'b10 is below 4'b11; allowed are 4'b11 to 4'b1111"},
        {"5'h \"P\" { default = 5'h0 }", "1F", ""},
        {"5'h \"P\" { default = 5'h0 }", "20", "5'h20 is wider than 5 bits; write 5'h00 to 5'h1F"},
        {"1'b \"P\" { default = 1'b0 }", "2'b01", "2'b01 is wider than 1 bit; write 1'b0 to 1'b1"},
        {"256'h \"P\" { default = 256'h0 }", "x", "'x' is no 256'h value; write 256'h and up to 64 digits"},
        {number, 64, ""},
        {number, 65, "65 is above 64; allowed are 1 to 64"},
        {number, 0, "0 is below 1; allowed are 1 to 64"},
        {number, 1.0, "1.0 is no int value; write 1 to 64"},
        {number, true, "true is no int value; write 1 to 64"},
        {"int \"P\" { default = 1 }", "1", "'1' is no int value; write a whole number"},
        {"int \"P\" { values { 5, 1 } }", 2, "2 is none of 5, 1"},
        {real, 0.5, ""},
        {real, 0.25, "0.25 is below 0.5; allowed are 0.5 and above"},
        {real, std::numeric_limits<double>::quiet_NaN(), "nan is no double value; write 0.5 and above"},
        {real, std::numeric_limits<double>::infinity(), "inf is no double value; write 0.5 and above"},
        {"double \"P\" { default = 1.0, max = 2.0 }", 3.0, "3.0 is above 2.0; allowed are 2.0 and below"},
        {flag, false, ""},
        {flag, "false", "'false' is no bool value; write true or false"},
        {mode, "slow", ""},
        {mode, "FAT", "'FAT' is none of FAST, SLOW"},
        {"string \"P\" { default = \"\" }", "any", ""},
        {"string \"P\" { default = \"\" }", 1, "1 is no string value; write a text"},
    };
    for (const auto& [declaration, value, reason] : cases)
        EXPECT_EQ(OneProperty(declaration)->refusalOf(value), reason.empty() ? "" : "P: " + reason) << declaration;
    EXPECT_EQ(OneProperty(number)->refusalOfOther("None"), "P: None is no int value; write 1 to 64");
}

// Programs may set what no text can say.
TEST(PropertyValue, BoundsThatAreNoNumbersStopNothing) {
    HDNTProperty property("P", Type::TypeBitHex, false, false, false, false, "");
    property.setBitWidth(4);
    property.getAttrSpec()->setHexRange("garbage", "");
    EXPECT_EQ(property.refusalOf("3"), "");
    EXPECT_EQ(property.refusalOf("13"), "P: 4'h13 is wider than 4 bits; write 'garbage' to 4'hF");
    property.getAttrSpec()->addDiscreteHex("garbage");
    EXPECT_EQ(property.refusalOf("3"), "P: 4'h3 is none of garbage");
}

TEST(PropertyValue, WhatAProgramMadeIsCompletedToo) {
    HDNTProperty property("P", Type::TypeBitHex, false, false, false, false, "");
    property.setBitWidth(6);
    property.finalize();
    EXPECT_EQ(property.getAttrSpec()->getLowHexRange() + " " + property.getAttrSpec()->getHighHexRange(), "00 3F");
    EXPECT_FALSE(property.isMinDeclared() || property.isMaxDeclared());
}

TEST(PropertyValue, TheHostsLocaleHasNoSay) {
    struct Grouping : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\1"; }
    };
    std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const OneProperty real("double \"P\" { min = 100.5, max = 200.0 }");
    std::string reason;
    EXPECT_FALSE(real->isValidValue(12.25, reason));
    EXPECT_EQ(reason, "The double value (12.25) is less than the allowed minimum (100.5).");
    EXPECT_EQ(OneProperty("1024'h \"P\" { default = 1024'h1 }")->formatValue("1", 'b', 'h', "%d'%c%s"), "1024'h01");
}

TEST(PropertyValue, CompressedIntegers) {
    for (const auto& [text, expected] : {std::pair("0000", "0"),
                                         {"16'h0000", "16'h0"},
                                         {"", ""},
                                         {"00FF", "0FF"},
                                         {"8'h000A", "8'h0A"},
                                         {"0F", "0F"},
                                         {"12", "12"},
                                         {"8'h", "8'h"},
                                         {"8'", "8'"}})
        EXPECT_EQ(compressIntString(text), expected) << text;
}

TEST(PropertyValue, Formats) {
    const OneProperty hex("12'h \"P\" { min = 12'h0 }");
    const OneProperty binary("6'b \"P\" { min = 6'b0 }");
    const OneProperty number("int \"P\" { min = 0 }");
    const struct {
        const OneProperty& property;
        const char* value;
        const char* full;
        const char* shortened;
        const char* formatted;
    } cases[] = {{hex, "12'h00a", "00A", "0A", "12'h0a"},
                 {hex, "4'b1010", "00A", "0A", "12'h0a"},
                 {hex, "FFF", "FFF", "FFF", "12'hFFF"},
                 {hex, "8'b00120101", "00120101", "0120101", "12'h0X5"},
                 {binary, "6'b000101", "000101", "0101", "6'b6'b0101"},
                 {binary, "6'hF", "001111", "01111", "6'b06'hF"},
                 {number, "007", "007", "007", "007"},
                 {hex, "'", "", "", "12'h0'"}};
    for (const auto& [property, value, full, shortened, formatted] : cases) {
        EXPECT_EQ(property->formatValue(value, true), full) << value;
        EXPECT_EQ(property->formatValue(value, false), shortened) << value;
        EXPECT_EQ(property->formatValue(value, 'b', 'h', "%d'%c%s"), formatted) << value;
    }
}

TEST(SpecIter, WalksBlocksAndParents) {
    const auto parent = loaded("library \"P\" { block \"A\" { } block \"B\" { property bool \"X\" true; } }");
    const auto child =
        loaded("library \"C\" { block \"C\" { property bool \"Y\" true; property bool \"Z\" true; } }", parent.get());
    HDNTAllSpecIter all(child.get());
    EXPECT_THROW(all.getKey(), HEXAlgException);
    EXPECT_THROW(all.getVal(), HEXAlgException);
    Texts names;
    while (all.hasNext()) {
        all.next();
        names.push_back(all.getKey());
        EXPECT_EQ(all.getVal()->getName(), names.back());
    }
    EXPECT_EQ(names, (Texts{"Y", "Z", "X"}));
    const std::unique_ptr<HSTKeyValIter<std::string, HATAttrSpec*>> none(parent->getTypeBlock(0)->createSpecIter());
    EXPECT_FALSE(none->hasNext());
    EXPECT_THROW(none->getKey(), HEXAlgException);
}
