#pragma once

#include "hdnt/model/HDNTBus.h"
#include "hdnt/platform/HATAttrObj.h"

/// One bit of a bus, or a single pin. Made by HDNTBus::elaborate and owned by the block; what was declared stands in
/// the bus, its parent. A pin without a bus answers as a bus with empty name, direction internal and nothing set.
class HDNT_API HDNTPin : public HDNTBlockEntity, public HATAttrObj {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Pin, lastKind = firstKind;

    HDNTPin(short bit, unsigned short index) : bitIndex_(bit), pinIndex_(index) { setKind(HDNTNodeKind::Pin); }

    /// Reports bad names and a tie value on an output.
    void check() override;
    virtual void accept(HDNTVisitor& visitor);
    /// As accept(), for a const object; the visitor must change nothing. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;

    /// The parent, which is nothing but a bus; null for a pin that no bus made.
    HDNTBus* getBus() const;
    HDNTBlock* getBlock() const;
    /// -1 for a single pin.
    short getBitIndex() const { return bitIndex_; }
    /// Position in the block's list of all pins.
    unsigned short getPinIndex() const { return pinIndex_; }

    const std::string& getBaseName() const;
    /// `CLK`; for a bit `D[7]`, or `D7` without brackets.
    std::string getName(bool noBrackets) const;
    void getName(std::string& out, bool noBrackets) const;
    HDNT_PIN_DIRECTION getDirection() const;
    /// The bus's type; for a mixed bus the type that the description configuration gives for this bit, HDNT_PIN_MIXED
    /// when it gives none. Locks that configuration; any thread.
    HDNT_PIN_TYPE getType() const;
    HDNT_PIN_REQUIREDVALUE getRequiredValue() const;
    bool isTest() const;
    bool isAbstract() const;
    /// Those of the bus.
    hdnt::Nodes<const HDNTProperty> properties() const;
    hdnt::Nodes<HDNTProperty> properties();
    size_t getNumProperties() const;
    HDNTProperty* getProperty(unsigned short i) const;
    HDNTProperty* getPropertyByName(const std::string& name) const;
    bool getPinFunction(std::string& out) const;

    /// Any value above 2 is "internal".
    static std::string getDirectionName(HDNT_PIN_DIRECTION direction);
    /// Throws HEXDataException "Unknown pin type" for a value outside 0 to 9.
    static std::string getTypeName(HDNT_PIN_TYPE type);

private:
    short bitIndex_;
    unsigned short pinIndex_;
};
