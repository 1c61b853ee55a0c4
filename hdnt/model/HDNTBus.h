#pragma once

#include "hdnt/model/HDNTNode.h"
#include "hdnt/model/Nodes.h"
#include "hdnt/platform/HSTUniqString.h"

#include <memory>
#include <string_view>
#include <vector>

class HDNTBlock;
class HDNTPin;
class HDNTProperty;
class HDNTVisitor;

enum HDNT_PIN_DIRECTION : int {
    HDNT_PIN_INPUT = 0,
    HDNT_PIN_OUTPUT = 1,
    HDNT_PIN_BIDIR = 2,
    HDNT_PIN_INTERNAL = 3,
};

enum HDNT_PIN_TYPE : int {
    HDNT_PIN_DATA = 0,
    HDNT_PIN_CLEAR = 1,
    HDNT_PIN_CLOCK = 2,
    HDNT_PIN_ENABLE = 3,
    HDNT_PIN_MIXED = 4,
    HDNT_PIN_PRESET = 5,
    HDNT_PIN_RESET = 6,
    HDNT_PIN_SET = 7,
    HDNT_PIN_SET_RESET = 8,
    HDNT_PIN_WRITE_ENABLE = 9,
};

/// What a pin must be tied to when nothing drives it; anything but 0 makes its block tie-capable.
enum HDNT_PIN_REQUIREDVALUE : int {
    HDNT_PIN_NO_VALUE = 0,
    HDNT_PIN_ACTIVE = 1,
    HDNT_PIN_MUST_CONNECT = 2,
    HDNT_PIN_TIE_LOW = 3,
    HDNT_PIN_TIE_HIGH = 4,
    HDNT_PIN_TIE_SPECIAL = 5,
    HDNT_PIN_UNTIE = 6,
};

/// One pin declaration, single (`CLK`) or ranged (`D[7:0]`), with everything that was declared for it. Its block makes
/// one HDNTPin of each bit, which reads its attributes here.
class HDNT_API HDNTBus : public HDNTBlockEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Bus, lastKind = firstKind;

    /// The name is as declared, range included. Takes over the properties, which get the bus as parent; the vector
    /// stays the caller's and may be null.
    HDNTBus(std::string_view name, HDNT_PIN_DIRECTION dir, bool test, bool abstract, HDNT_PIN_TYPE type,
            HDNT_PIN_REQUIREDVALUE required, std::vector<HDNTProperty*>* props);
    ~HDNTBus() override;
    HDNTBus(const HDNTBus&) = delete;

    virtual void accept(HDNTVisitor& visitor);
    /// As accept(), for a const object; the visitor must change nothing. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;

    /// Appends a new pin for each bit, in the order of the range, and cuts the name to its base. A malformed name, a
    /// bit above 32,767 or a pin list of more than 65,536 pins is one report at the bus and appends nothing. Once more
    /// it appends pins of the same bits.
    void elaborate(std::vector<HDNTPin*>& pins);

    /// Internal: of a declaration, for a block. The name is cut at once if that is all there is to do with it: most
    /// ranged names are not there already, and would be shared only to be dropped again.
    HDNT_LOCAL static HDNTBus* declared(std::string_view name, HDNT_PIN_DIRECTION dir, bool test, bool abstract,
                                        HDNT_PIN_TYPE type, HDNT_PIN_REQUIREDVALUE required,
                                        std::vector<HDNTProperty*>* props);

    // The two halves of elaborate(), for the block that the bus belongs to: what is declared wrong is told at once,
    // pins are made when they are asked for.

    /// Reports, cuts the name, and takes the places for its pins behind that many others. Once.
    void placePins(size_t before);
    /// Appends the pins; the list holds those of the buses before.
    void makePins(std::vector<HDNTPin*>& pins);
    /// How many there are, made or not; 0 before elaboration and after a report.
    size_t pinCount() const;
    /// Whether HDNTPin::check() finds nothing in any of them.
    bool pinsAreFaultless() const;

    /// The parent, which is nothing but a block; null before one adopted the bus.
    HDNTBlock* getBlock() const;
    /// `CLK`, or `D[7:0]`; `D[5:5]` when declared with one index.
    std::string getName() const;
    /// Without brackets, once elaborated.
    const std::string& getBaseName() const { return name_.str(); }
    /// Internal: for the block's index.
    std::uint64_t getBaseNameHash() const { return name_.hash(); }
    /// Bounds of the range as written; both -1 for a single pin.
    int getFirstIndex() const { return firstIndex_; }
    int getLastIndex() const { return lastIndex_; }
    /// Position of its first pin in the block's list of all pins; the others follow it. -1 when it has none.
    int getFirstPinIndex() const { return firstPinIndex_; }
    HDNT_PIN_DIRECTION getDirection() const { return direction_; }
    /// As declared: HDNT_PIN_MIXED means that each pin has a type of its own.
    HDNT_PIN_TYPE getType() const { return type_; }
    HDNT_PIN_REQUIREDVALUE getRequiredValue() const { return required_; }
    bool isTest() const { return test_; }
    bool isAbstract() const { return abstract_; }

    // What the bus holds, to be walked (hdnt/model/Nodes.h). Any thread.

    /// Its pins in the block; none before a block adopted it.
    hdnt::Nodes<const HDNTPin> pins() const;
    hdnt::Nodes<HDNTPin> pins();
    hdnt::Nodes<const HDNTProperty> properties() const { return propertyNodes<const HDNTProperty>(); }
    hdnt::Nodes<HDNTProperty> properties() { return propertyNodes<HDNTProperty>(); }
    /// The first one of exactly that name, or null.
    const HDNTProperty* findProperty(std::string_view name) const;
    HDNTProperty* findProperty(std::string_view name);

    size_t getNumProperties() const { return properties().size(); }
    /// Throws HEXAlgException "Property index out of range".
    HDNTProperty* getProperty(unsigned short i) const;
    HDNTProperty* getPropertyByName(const std::string& name) const;
    /// The pin function that the application configuration gives for the base name; false, and `out` emptied, when
    /// there is none. Any thread.
    bool getPinFunction(std::string& out) const;

private:
    HDNT_LOCAL HDNTProperty* lookUpProperty(std::string_view name) const;

    using Properties = std::vector<HDNTProperty*>;
    template <typename Property>
    hdnt::Nodes<Property> propertyNodes() const {
        return properties_ ? hdnt::Nodes<Property>(*properties_) : hdnt::Nodes<Property>();
    }

    // A cache line for all: the first of these are where the node leaves room.
    HDNT_PIN_DIRECTION direction_ : 4;
    HDNT_PIN_TYPE type_ : 6;
    HDNT_PIN_REQUIREDVALUE required_ : 4;
    bool test_ : 1;
    bool abstract_ : 1;
    int firstIndex_ = -1;
    int lastIndex_ = -1;
    int firstPinIndex_ = -1;
    HSTUniqString name_;
    std::unique_ptr<const Properties> properties_; ///< null: none, as most have
};
