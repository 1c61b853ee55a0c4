#pragma once

#include "hdnt/platform/Export.h"
#include "hdnt/platform/HATAttrTypes.h"
#include "hdnt/platform/HATOwnText.h"
#include "hdnt/platform/HATValueIter.h"
#include "hdnt/platform/HSTUniqString.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

/// An attribute: its name, type, range or allowed values, default, width, unit, flags.
///
/// A library holds tens of thousands, each with three or four facets set. So an object is a name, a description, a word
/// of flags, a mask of the other facets that are set and one packed array of just those, 8 bytes each; a facet set to
/// what it would be anyway takes nothing. Object and array together take for a bool 32 bytes; int with range and
/// default 48; double with range, default and precision, or hex with width, range and default, 64; string with default
/// and four values 80. The texts themselves are shared in the pool, but for descriptions.
///
/// Every facet may be set and read whatever the type is; facets of other types do not interfere. Setters replace, `add`
/// operations append, in order and without looking for duplicates. Texts are stored as given and may hold NUL bytes;
/// what comes back by reference is valid until that facet is set again, and is the same object for equal texts but for
/// descriptions. Any number of threads may read an object that none changes.
class HDNT_API HATAttrSpec {
public:
    /// The kind is the host's business and only kept, in 8 bits.
    HATAttrSpec(HATAttrTypes::AttrType type, int kind);
    ~HATAttrSpec();
    HATAttrSpec(const HATAttrSpec&) = delete;
    HATAttrSpec& operator=(const HATAttrSpec&) = delete;

    HATAttrTypes::AttrType getAttrType() const { return static_cast<HATAttrTypes::AttrType>(type_); }
    int getKind() const { return kind_; }
    void setName(std::string_view name) { name_ = HSTUniqString(name); }
    const std::string& getName() const { return name_.str(); }
    /// Internal: its platform::textHash().
    std::uint64_t getNameHash() const { return name_.hash(); }

    // Flags. All start false but isVisible.
    void setTest(bool on) { setFlag(Test, on); }
    bool isTest() const { return flag(Test); }
    void setSimulation(bool on) { setFlag(Simulation, on); }
    bool isSimulation() const { return flag(Simulation); }
    void setIsTessel(bool on) { setFlag(Tessel, on); }
    bool isTessel() const { return flag(Tessel); }
    void setConstraintsOnly(bool on) { setFlag(ConstraintsOnly, on); }
    bool isConstraintsOnly() const { return flag(ConstraintsOnly); }
    void setVisible(bool on) { setFlag(Hidden, !on); }
    bool isVisible() const { return !flag(Hidden); }
    void setReadOnly(bool on) { setFlag(ReadOnly, on); }
    bool isReadOnly() const { return flag(ReadOnly); }

    void setHasUnit(bool on) { setFlag(Unit, on); }
    bool hasUnit() const { return flag(Unit); }
    void addUnitRange(std::string_view unit) { appendText(UnitList, HSTUniqString(unit)); }
    HATTextIter* createUnitRangeIter() const { return makeIter<const std::string&>(UnitList); }
    void setUnitDefault(std::string_view unit) { putText(UnitDefault, HSTUniqString(unit)); }
    const std::string& getUnitDefault() const { return text(UnitDefault); }

    void setDescription(std::string_view text) { exchangeDescription(text); }
    const std::string& getDescription() const { return description_.str(); }
    /// Sets the description and gives back the one before, for whom it stays where it is; null for an empty one.
    HATOwnText exchangeDescription(std::string_view text);

    /// Source types are HATSrcInfo codes; all are allowed at first, codes outside 0 to 31 never.
    void removeAllowedSourceType(int sourceType);
    bool isAllowedSourceType(int sourceType) const;

    /// In bits; 0 when not set.
    void setBitWidth(int bits) { put(WidthAndPrecision, pack(bits, getPrecision()), pack(0, DefaultPrecision)); }
    int getBitWidth() const { return first(get(WidthAndPrecision, pack(0, DefaultPrecision))); }
    /// Digits after the point of a double; 6 when not set.
    void setPrecision(int digits) { put(WidthAndPrecision, pack(getBitWidth(), digits), pack(0, DefaultPrecision)); }
    int getPrecision() const { return second(get(WidthAndPrecision, pack(0, DefaultPrecision))); }

    /// True when allowed values are listed: for an int or double when marked discrete or any value was added; for text
    /// types when any was added. A bool never is.
    bool isEnumerated() const;

    // int: INT_MIN to INT_MAX, default 0.
    void setIntRange(int low, int high);
    int getLowIntRange() const;
    int getHighIntRange() const;
    void setDiscreteInt(bool on) { setFlag(DiscreteInt, on); }
    void addDiscreteIntRange(int value) { append(IntList, pack(value, 0)); }
    HATIntIter* createDiscreteIntRangeIter() const { return makeIter<int>(IntList); }
    void setIntDefault(int value) { put(IntDefault, pack(value, 0), 0); }
    int getIntDefault() const { return first(get(IntDefault, 0)); }

    // double: -DBL_MAX to DBL_MAX, default 0.0.
    void setDoubleRange(double low, double high);
    double getLowDoubleRange() const;
    double getHighDoubleRange() const;
    void setDiscreteDouble(bool on) { setFlag(DiscreteDouble, on); }
    void addDiscreteDoubleRange(double value);
    HATDoubleIter* createDiscreteDoubleRangeIter() const { return makeIter<double>(DoubleList); }
    void setDoubleDefault(double value);
    double getDoubleDefault() const;

    // bool: default false.
    void setBoolDefault(bool value) { setFlag(BoolDefault, value); }
    bool getBoolDefault() const { return flag(BoolDefault); }

    // string: default empty.
    void addStringRange(std::string_view value) { appendText(StringList, HSTUniqString(value)); }
    HATTextIter* createStringRangeIter() const { return makeIter<const std::string&>(StringList); }
    void setStringDefault(std::string_view value) { putText(StringDefault, HSTUniqString(value)); }
    const std::string& getStringDefault() const { return text(StringDefault); }

    // Bit vectors are texts, stored as written: range and default empty.
    void setHexRange(std::string_view low, std::string_view high);
    const std::string& getLowHexRange() const { return text(HexLow); }
    const std::string& getHighHexRange() const { return text(HexHigh); }
    void addDiscreteHex(std::string_view value) { appendText(HexList, HSTUniqString(value)); }
    HATTextIter* createHexIter() const { return makeIter<const std::string&>(HexList); }
    void setHexDefault(std::string_view value) { putText(HexDefault, HSTUniqString(value)); }
    const std::string& getHexDefault() const { return text(HexDefault); }

    void setBinaryRange(std::string_view low, std::string_view high);
    const std::string& getLowBinaryRange() const { return text(BinaryLow); }
    const std::string& getHighBinaryRange() const { return text(BinaryHigh); }
    void addDiscreteBinary(std::string_view value) { appendText(BinaryList, HSTUniqString(value)); }
    HATTextIter* createBinaryIter() const { return makeIter<const std::string&>(BinaryList); }
    void setBinaryDefault(std::string_view value) { putText(BinaryDefault, HSTUniqString(value)); }
    const std::string& getBinaryDefault() const { return text(BinaryDefault); }

    /// Internal (AttrSpecDraft.h).
    class Draft;

    /// Bytes of the facet array, for memory reports; the object itself is sizeof(HATAttrSpec).
    std::size_t packedBytes() const;

private:
    enum Flag : std::uint16_t {
        Test = 1U << 0,
        Simulation = 1U << 1,
        Tessel = 1U << 2,
        Unit = 1U << 3,
        ConstraintsOnly = 1U << 4,
        Hidden = 1U << 5,
        ReadOnly = 1U << 6,
        DiscreteInt = 1U << 7,
        DiscreteDouble = 1U << 8,
        BoolDefault = 1U << 9,
    };

    // The facets in the order of their slots. A list's slot holds its length; the items of all lists follow the slots
    // of all facets, in the same order.
    enum Facet : unsigned {
        WidthAndPrecision,
        RemovedSources,
        IntRange,
        IntDefault,
        DoubleLow,
        DoubleHigh,
        DoubleDefault,
        FirstText,
        UnitDefault = FirstText,
        StringDefault,
        HexLow,
        HexHigh,
        HexDefault,
        BinaryLow,
        BinaryHigh,
        BinaryDefault,
        FirstList,
        IntList = FirstList,
        DoubleList,
        FirstTextList,
        UnitList = FirstTextList,
        StringList,
        HexList,
        BinaryList,
        NumFacets
    };

    static constexpr int DefaultPrecision = 6;

    static constexpr std::uint64_t pack(int first, int second) {
        return static_cast<std::uint32_t>(first) | static_cast<std::uint64_t>(static_cast<std::uint32_t>(second)) << 32;
    }
    static constexpr int first(std::uint64_t slot) { return static_cast<int>(static_cast<std::uint32_t>(slot)); }
    static constexpr int second(std::uint64_t slot) { return static_cast<int>(slot >> 32); }

    void setFlag(Flag f, bool on) { flags_ = static_cast<std::uint16_t>(on ? flags_ | f : flags_ & ~f); }
    bool flag(Flag f) const { return (flags_ & f) != 0; }

    bool has(unsigned facet) const { return (present_ >> facet & 1U) != 0; }
    HDNT_API std::size_t indexOf(unsigned facet) const;
    std::size_t listLength(unsigned list) const { return has(list) ? slots_[indexOf(list)] : 0; }
    HDNT_API std::size_t listBegin(unsigned list) const;
    std::size_t numSlots() const { return listBegin(NumFacets); }

    std::uint64_t get(Facet facet, std::uint64_t absent) const { return has(facet) ? slots_[indexOf(facet)] : absent; }
    HDNT_API void put(Facet facet, std::uint64_t value, std::uint64_t absent);
    HDNT_API const std::string& text(Facet facet) const;
    HDNT_API void putText(Facet facet, HSTUniqString value);
    HDNT_API void append(Facet list, std::uint64_t value);
    HDNT_API void appendText(Facet list, HSTUniqString value);
    HDNT_LOCAL void putRange(Facet low, std::string_view least, std::string_view greatest);
    HDNT_LOCAL void insertSlots(std::size_t index, std::initializer_list<std::uint64_t> values);
    template <typename T>
    HDNT_API HATValueIter<T>* makeIter(Facet list) const;

    HSTUniqString name_;
    HATOwnText description_; ///< hardly ever the same twice, so not shared
    std::uint64_t* slots_ = nullptr;
    std::uint32_t present_ = 0;
    std::uint16_t flags_ = 0;
    std::uint8_t type_;
    std::uint8_t kind_;
};
