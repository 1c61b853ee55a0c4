#include "hdnt/platform/HATAttrSpec.h"

#include "hdnt/platform/HATAttrObj.h"
#include "hdnt/platform/HEX.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

namespace {

using Types = HATAttrTypes;

template <typename T>
std::vector<std::remove_cvref_t<T>> values(HATValueIter<T>* made) {
    const std::unique_ptr<HATValueIter<T>> iter(made);
    std::vector<std::remove_cvref_t<T>> result;
    while (iter->hasNext()) {
        iter->next();
        result.push_back(iter->current());
    }
    return result;
}

TEST(HATAttrSpec, StartsNeutral) {
    const HATAttrSpec spec(Types::TypeBitHex, 0);
    EXPECT_EQ(spec.getAttrType(), Types::TypeBitHex);
    EXPECT_EQ(spec.getName(), "");
    EXPECT_EQ(spec.getLowIntRange(), INT_MIN);
    EXPECT_EQ(spec.getHighIntRange(), INT_MAX);
    EXPECT_EQ(spec.getLowDoubleRange(), -DBL_MAX);
    EXPECT_EQ(spec.getHighDoubleRange(), DBL_MAX);
    EXPECT_EQ(spec.getPrecision(), 6);
    EXPECT_EQ(spec.getBitWidth(), 0);
    EXPECT_TRUE(spec.isVisible());
    EXPECT_FALSE(spec.isEnumerated() || spec.isReadOnly() || spec.hasUnit() || spec.isTessel() ||
                 spec.getBoolDefault());
    EXPECT_EQ(spec.getLowHexRange() + spec.getHighBinaryRange() + spec.getDescription() + spec.getStringDefault(), "");
    for (int source = 0; source < HATSrcInfo::NumSourceTypes; ++source) EXPECT_TRUE(spec.isAllowedSourceType(source));
    EXPECT_FALSE(spec.isAllowedSourceType(-1) || spec.isAllowedSourceType(32));
}

TEST(HATAttrSpec, StaysCompact) {
    struct Derived : HATAttrObj {
        void* only;
    };
    static_assert(sizeof(Derived) == sizeof(void*));
    static_assert(sizeof(HATAttrSpec) == 32);
    HATAttrSpec spec(Types::TypeInt, 0);
    spec.setIntRange(INT_MIN, INT_MAX);
    spec.setDoubleDefault(0.0);
    spec.setPrecision(6);
    spec.setDescription("");
    spec.setHexRange("", "");
    EXPECT_EQ(spec.packedBytes(), 0U);
    spec.setIntRange(1, 8);
    spec.setIntDefault(3);
    spec.setDescription("d");
    EXPECT_EQ(spec.packedBytes(), 16U);
}

// Every facet next to every other, set in any order and more than once, against plain variables.
TEST(HATAttrSpec, KeepsFacetsApart) {
    const std::size_t textsBefore = HSTUniqString::numTexts();
    std::mt19937 random(20);
    for (int round = 0; round < 200; ++round) {
        HATAttrSpec spec(Types::TypeString, 0);
        int width = 0, precision = 6, low = INT_MIN, high = INT_MAX, number = 0;
        double doubleLow = -DBL_MAX, doubleHigh = DBL_MAX, doubleDefault = 0;
        std::string text[9];
        std::vector<int> ints;
        std::vector<double> doubles;
        std::vector<std::string> lists[4];
        for (int step = 0; step < 60; ++step) {
            const int n = static_cast<int>(random() % 5) - 2;
            const std::string t = n == 0 ? "" : std::string("text\0", 5) + std::to_string(n);
            switch (random() % 19) {
            case 0: spec.setBitWidth(width = n); break;
            case 1: spec.setPrecision(precision = n); break;
            case 2: spec.setIntRange(low = n, high = -n); break;
            case 3: spec.setIntDefault(number = n); break;
            case 4: spec.setDoubleRange(doubleLow = n, doubleHigh = n / 2.0); break;
            case 5: spec.setDoubleDefault(doubleDefault = -0.5 * n); break;
            case 6: spec.setDescription(text[0] = t); break;
            case 7: spec.setUnitDefault(text[1] = t); break;
            case 8: spec.setStringDefault(text[2] = t); break;
            case 9: spec.setHexRange(text[3] = t, text[4] = t + "h"); break;
            case 10: spec.setHexDefault(text[5] = t); break;
            case 11: spec.setBinaryRange(text[6] = t + "l", text[7] = t); break;
            case 12: spec.setBinaryDefault(text[8] = t); break;
            case 13: spec.addDiscreteIntRange(ints.emplace_back(n)); break;
            case 14: spec.addDiscreteDoubleRange(doubles.emplace_back(n)); break;
            case 15: spec.addUnitRange(lists[0].emplace_back(t)); break;
            case 16: spec.addStringRange(lists[1].emplace_back(t)); break;
            case 17: spec.addDiscreteHex(lists[2].emplace_back(t)); break;
            case 18: spec.addDiscreteBinary(lists[3].emplace_back(t)); break;
            }
        }
        EXPECT_EQ(std::vector({spec.getBitWidth(), spec.getPrecision(), spec.getLowIntRange(), spec.getHighIntRange(),
                               spec.getIntDefault()}),
                  std::vector({width, precision, low, high, number}));
        EXPECT_EQ(std::vector({spec.getLowDoubleRange(), spec.getHighDoubleRange(), spec.getDoubleDefault()}),
                  std::vector({doubleLow, doubleHigh, doubleDefault}));
        EXPECT_EQ(std::vector({spec.getDescription(), spec.getUnitDefault(), spec.getStringDefault(),
                               spec.getLowHexRange(), spec.getHighHexRange(), spec.getHexDefault(),
                               spec.getLowBinaryRange(), spec.getHighBinaryRange(), spec.getBinaryDefault()}),
                  std::vector(text, text + 9));
        EXPECT_EQ(values(spec.createDiscreteIntRangeIter()), ints);
        EXPECT_EQ(values(spec.createDiscreteDoubleRangeIter()), doubles);
        EXPECT_EQ(values(spec.createUnitRangeIter()), lists[0]);
        EXPECT_EQ(values(spec.createStringRangeIter()), lists[1]);
        EXPECT_EQ(values(spec.createHexIter()), lists[2]);
        EXPECT_EQ(values(spec.createBinaryIter()), lists[3]);
    }
    EXPECT_EQ(HSTUniqString::numTexts(), textsBefore) << "a specification kept a text";
}

TEST(HATAttrSpec, KeepsFlagsApart) {
    struct {
        void (HATAttrSpec::*set)(bool);
        bool (HATAttrSpec::*get)() const;
    } const flags[] = {{&HATAttrSpec::setTest, &HATAttrSpec::isTest},
                       {&HATAttrSpec::setSimulation, &HATAttrSpec::isSimulation},
                       {&HATAttrSpec::setIsTessel, &HATAttrSpec::isTessel},
                       {&HATAttrSpec::setHasUnit, &HATAttrSpec::hasUnit},
                       {&HATAttrSpec::setConstraintsOnly, &HATAttrSpec::isConstraintsOnly},
                       {&HATAttrSpec::setVisible, &HATAttrSpec::isVisible},
                       {&HATAttrSpec::setReadOnly, &HATAttrSpec::isReadOnly},
                       {&HATAttrSpec::setBoolDefault, &HATAttrSpec::getBoolDefault},
                       {&HATAttrSpec::setDiscreteInt, &HATAttrSpec::isEnumerated}};
    HATAttrSpec spec(Types::TypeInt, 0);
    for (const auto& on : flags) {
        for (const auto& f : flags) (spec.*f.set)(&f == &on);
        for (const auto& f : flags) EXPECT_EQ((spec.*f.get)(), &f == &on);
    }
}

TEST(HATAttrSpec, IsEnumeratedByItsOwnTypesList) {
    for (const auto type : {Types::TypeBool, Types::TypeInt, Types::TypeDouble, Types::TypeString, Types::TypeBitHex,
                            Types::TypeBitBinary}) {
        HATAttrSpec ints(type, 0), doubles(type, 0), strings(type, 0), hexes(type, 0), binaries(type, 0);
        ints.addDiscreteIntRange(0);
        doubles.addDiscreteDoubleRange(0);
        strings.addStringRange("");
        hexes.addDiscreteHex("0");
        binaries.addDiscreteBinary("0");
        EXPECT_EQ(ints.isEnumerated(), type == Types::TypeInt);
        EXPECT_EQ(doubles.isEnumerated(), type == Types::TypeDouble);
        EXPECT_EQ(strings.isEnumerated(), type == Types::TypeString);
        EXPECT_EQ(hexes.isEnumerated(), type == Types::TypeBitHex);
        EXPECT_EQ(binaries.isEnumerated(), type == Types::TypeBitBinary);
    }
}

TEST(HATAttrSpec, HoldsLongListsAndOddValues) {
    HATAttrSpec spec(Types::TypeInt, 0);
    std::vector<int> expected;
    for (int i = 0; i < 5000; ++i) spec.addDiscreteIntRange(expected.emplace_back(INT_MIN + i));
    EXPECT_EQ(values(spec.createDiscreteIntRangeIter()), expected);
    EXPECT_LE(spec.packedBytes(), 5000U * 8 * 5 / 4 + 16);
    spec.setDoubleDefault(-0.0);
    EXPECT_TRUE(std::signbit(spec.getDoubleDefault()));
    spec.addDiscreteDoubleRange(std::nan(""));
    EXPECT_TRUE(std::isnan(values(spec.createDiscreteDoubleRangeIter()).front()));
    spec.setHexRange("00", "FF");
    spec.setHexRange(spec.getHighHexRange(), spec.getLowHexRange());
    EXPECT_EQ(spec.getLowHexRange() + spec.getHighHexRange(), "FF00");
    for (const int source : {2, 12, 11, 8, 31, 99, -1}) spec.removeAllowedSourceType(source);
    for (int source = 0; source < 32; ++source)
        EXPECT_EQ(spec.isAllowedSourceType(source),
                  source != 2 && source != 12 && source != 11 && source != 8 && source != 31);
}

TEST(HATAttrSpec, IteratorsRefuseToReadWhereNothingIs) {
    HATAttrSpec spec(Types::TypeInt, 0);
    const std::unique_ptr<HATIntIter> none(spec.createDiscreteIntRangeIter());
    EXPECT_FALSE(none->hasNext());
    EXPECT_THROW(none->next(), HEXAlgException);
    spec.addDiscreteIntRange(7);
    const std::unique_ptr<HATIntIter> one(spec.createDiscreteIntRangeIter());
    EXPECT_THROW(one->current(), HEXAlgException);
    one->next();
    EXPECT_EQ(one->current(), 7);
    EXPECT_THROW(one->next(), HEXAlgException);
    EXPECT_EQ(one->current(), 7);
}

} // namespace
