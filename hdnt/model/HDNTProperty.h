#pragma once

#include "hdnt/model/HDNTNode.h"
#include "hdnt/model/Value.h"
#include "hdnt/platform/HATAttrSpec.h"

#include <cstdio>
#include <optional>

class ConfigBase;
class HDNTBlock;
class HDNTVisitor;

namespace hdnt::model {
struct PropertyContext;
}

/// A typed attribute that a block or one of its buses declares: type, range or list of allowed values, default, flags.
/// Nearly all of it stands in the attribute specification, which the host uses directly.
///
/// Owned by its block or bus. Complete after finalize(); from then on the const operations may run in any thread.
class HDNT_API HDNTProperty : public HDNTBlockEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Property, lastKind = firstKind;

    /// A constraints-only property is not visible. An empty unit means none.
    HDNTProperty(std::string_view name, HATAttrTypes::AttrType type, bool test, bool simulation, bool constraintsOnly,
                 bool muxControl, std::string_view units);
    ~HDNTProperty() override;
    HDNTProperty(const HDNTProperty&) = delete;

    /// Reports a bad name, and a default that is not listed (double, hex, binary). Int, string and bool defaults are
    /// not checked, nor is a double against its range.
    void check() override;
    /// Takes read-only flag and description from the configuration, and completes the range of a hex property. Called
    /// for the properties of blocks, not for those of buses.
    void finalize() override;
    // Internal: the same in two steps, for a block that finalizes all its properties.
    void finalize(const hdnt::model::PropertyContext& context);
    void describe(std::string_view text);
    /// Writes the declaration as one line of text to standard output, indented by 4.
    virtual void print();
    virtual void accept(HDNTVisitor& visitor);
    /// As accept(), for a const object; the visitor must change nothing. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;
    /// Likewise with another indent (0 counts as 1), and to another stream.
    void print(unsigned long indent);
    void print(unsigned long indent, FILE* stream);
    void print(unsigned long indent, FILE* stream) const;

    const std::string& getName() const { return spec_.getName(); }
    HATAttrTypes::AttrType getType() const { return spec_.getAttrType(); }
    /// Never null; owned by the property.
    const HATAttrSpec* getAttrSpec() const { return &spec_; }
    HATAttrSpec* getAttrSpec() { return &spec_; }
    /// The block that owns the property, directly or through a bus; null when none does.
    HDNTBlock* getBlock() const;
    /// Position among the properties of its block that bear a name of their own; -1 before the block is finalized.
    int getIndex() const { return index_; }
    void setIndex(int index) { index_ = index; }
    bool isMuxControl() const { return muxControl_; }
    /// Whether the width of a hex property is rounded up to whole digits. False before finalize().
    bool isNibbleSized() const { return nibbleSized_; }

    // What was declared, where the property itself holds what followed from it. For the writer.

    /// Whether the range has a bound on that side which was given: not one that finalize() completed, and not the
    /// greatest number of the type. False for an enumerated property and for a bool or string.
    bool isMinDeclared() const;
    bool isMaxDeclared() const;
    /// The description of the declaration, also when finalize() put that of the configuration in its place; empty when
    /// there was none.
    const std::string& getDeclaredDescription() const {
        return describedByConfig_ ? declaredDescription_.str() : spec_.getDescription();
    }

    void setBitWidth(int bits) { spec_.setBitWidth(bits); }
    int getBitWidth() const { return spec_.getBitWidth(); }
    /// The bit width; of a nibble-sized property the next multiple of 4.
    int getAdjustedBitWidth() const;
    void setPrecision(int digits) { spec_.setPrecision(digits); }
    int getPrecision() const { return spec_.getPrecision(); }

    // Values of whatever type.

    /// An empty text for a bit vector without one.
    hdnt::Value getDefaultValue() const;
    /// The bounds of the range, or the least and greatest listed value: numbers by size, texts of bit vectors byte by
    /// byte. Nothing where there is no bound: an int or double as small or great as can be, a bit vector without range,
    /// a bool or string.
    std::optional<hdnt::Value> getMinValue() const;
    std::optional<hdnt::Value> getMaxValue() const;
    /// Allowed values in the order written; empty for a property with a range.
    std::vector<hdnt::Value> getAllowedValues() const;
    /// isValidValue for the value's own type. It has a name of its own since classes that convert to a text would go
    /// with both.
    bool isValid(const hdnt::Value& value, std::string& reason) const;
    /// Why the property may not have the value: one line without a full stop that names property, value and what is
    /// allowed. Empty when it may. Stricter than isValid, in whose words nothing may change: the text of a bit vector
    /// must be one (BitText), no wider than the property or its own prefix, and is held against range or list as a
    /// number; a double must be finite. Cases of other texts make no difference here either.
    std::string refusalOf(const hdnt::Value& value) const;
    /// The same of something that is no value at all, in the caller's writing.
    std::string refusalOfOther(const std::string& written) const;

    // The same by type. What is of another type answers as if nothing had been given.

    int getDefaultIntValue() const { return spec_.getIntDefault(); }
    double getDefaultDoubleValue() const { return spec_.getDoubleDefault(); }
    bool getDefaultBoolValue() const { return spec_.getBoolDefault(); }
    std::string getDefaultStringValue() const { return spec_.getStringDefault(); }
    /// Bit vectors are texts as written, prefix included.
    std::string getDefaultHexValue() const { return spec_.getHexDefault(); }
    std::string getDefaultBinaryValue() const { return spec_.getBinaryDefault(); }

    /// The bounds of the range, or the least and greatest listed value.
    int getMinIntValue() const;
    int getMaxIntValue() const;
    double getMinDoubleValue() const;
    double getMaxDoubleValue() const;
    /// Likewise; empty when nothing was given. Listed texts compare byte by byte, not as numbers.
    std::string getMinHexValue() const;
    std::string getMaxHexValue() const;
    std::string getMinBinaryValue() const;
    std::string getMaxBinaryValue() const;
    /// Allowed values in the order written; empty for a property with a range.
    std::vector<int> getAllowedIntValues() const;
    std::vector<double> getAllowedDoubleValues() const;
    std::vector<std::string> getAllowedStringValues() const;
    std::vector<std::string> getAllowedHexValues() const;
    std::vector<std::string> getAllowedBinaryValues() const;

    /// Whether the name has the form IS_..._INVERTED with something in between.
    bool isPinInversion() const;
    /// Description configuration of the block's library; null for a property without one.
    ConfigBase* getDescConfig() const;

    // Values (HDNTProperty_value.cpp). False with the reason when the property may not take the value; the reason is
    // left alone when it may. Texts serve string, hex and binary properties, case aside; hex and binary values are not
    // held against a range.
    bool isValidValue(int value, std::string& reason) const;
    bool isValidValue(double value, std::string& reason) const;
    bool isValidValue(bool value, std::string& reason) const;
    bool isValidValue(std::string value, std::string& reason) const;
    bool isValidValue(const char* value, std::string& reason) const;
    /// Plain digits of a hex or binary value in the property's radix and width, without leading zeros but one unless
    /// they are kept. Values of other types come back unchanged.
    std::string formatValue(std::string value, bool keepLeadingZeros) const;
    /// The value through a Boost.Format format that takes width, radix letter and digits, as in "%d'%c%s". Throws
    /// boost::io::format_error, a std::exception, for one that takes fewer or more, or is none.
    std::string formatValue(const std::string& value, char binaryRadix, char hexRadix, const char* format) const;

    /// "bool", "int", "double", "string", "bithex", "bitbinary". Throws HEXAlgException "Unknown HDNTProperty type".
    static std::string getTypeName(HATAttrTypes::AttrType type);

private:
    HDNT_LOCAL void completeHexRange();

    bool muxControl_; ///< first, where the node leaves room
    bool nibbleSized_ = false;
    HATAttrSpec spec_;
    HATOwnText declaredDescription_; ///< set once describedByConfig_ is
    int index_ = -1;
    bool describedByConfig_ = false;
    bool minCompleted_ = false;
    bool maxCompleted_ = false;
};

/// Drops leading zeros of the digits but one; a width and radix prefix, as in 8'h, stays.
HDNT_API std::string compressIntString(const std::string& text);
