#pragma once

#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/Nodes.h"
#include "hdnt/platform/HATAttrObj.h"
#include "hdnt/platform/HSTKeyValIter.h"
#include "hdnt/platform/NameIndex.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

class HATAttrSpec;
class HDNTLibrary;
class HDNTNetlist;
class HDNTPin;
class HDNTPrimGroup;
class HDNTProperty;

namespace CommonPart {
struct PartSpec;
}

/// One primitive of a library: its pins bit by bit, its buses as declared, its properties, flags and primitive group,
/// and at most one mapping netlist.
///
/// Owns all of these. Once its library is finalized, the const operations may run in any number of threads.
class HDNT_API HDNTBlock : public HDNTBlockEntity, public HATAttrObj {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Block, lastKind = firstKind;

    /// Netlist kinds.
    enum Kind : unsigned short {
        AnyArchitecture = 100, ///< from a map library without sections for architectures
        NoNetlist = 101,
        OwnNetlist = 103,
        OwnNetlistInChild = 104, ///< of a library that has a parent
    };

    /// Sorts the entities into the block and deletes those that only set an attribute (flags, maturity level, group).
    /// Takes over the other entities and the netlist, also when it throws; the vector stays the caller's and may be
    /// null, as may netlist and library. A name that the cellview registry does not know is noted in
    /// s_unregisteredNames. Throws HEXDataException "Internal pins must be last in list, in tessel " + name for a bus
    /// that is not internal behind one that is.
    HDNTBlock(const std::string& name, std::vector<HDNTBlockEntity*>* entities, HDNTNetlist* netlist,
              HDNTLibrary* library);
    ~HDNTBlock() override;
    HDNTBlock(const HDNTBlock&) = delete;

    /// Reports the block's name and what its netlist, pins and properties find wrong.
    void check() override;
    /// Builds the indexes over pins and properties and finalizes properties and netlist. A name that is taken is
    /// reported; the first one keeps it.
    void finalize() override;

    const std::string& getName() const { return name_; }
    /// The parent; null for a block without library.
    HDNTLibrary* getLibrary() const;
    /// Numbers above HDNTCellviewLib::UNKNOWN for blocks that the registry does not know: 4001 for the first of the
    /// process, and so on; 65535 for all past that.
    HDNTCellviewLib::Type getType() const { return static_cast<HDNTCellviewLib::Type>(type_); }
    bool isInternal() const { return internal_; }
    bool isTest() const { return test_; }
    /// 0 early, 1 beta, 2 production, 3 deprecated; 0 when not declared.
    int getMaturityLevel() const { return maturityLevel_; }
    /// Whether pins of the block can be tied: it has a bus with a required value, or a netlist that allows it.
    bool getCanTiePins() const { return canTiePins_; }

    /// Visits buses, pins and properties, and then the netlist of getNetlist(), which may have to be loaded.
    virtual void accept(HDNTVisitor& visitor);
    /// The same with the netlist that hasOwnNetlist() tells of, if any. Loads nothing. The visitor gets nodes that it
    /// could change; one that visits a const block must not. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;

    // The mapping netlist. What asks for an architecture may load a map library, if the parameter "ntl.enableMapLib"
    // was on at the first such question of the process: loading thread only, then; else any thread. A load replaces,
    // and so deletes, the netlist of another architecture. What else its text maps is for that architecture only, too.

    /// The own netlist; without one, that for the manager's current architecture. Null when there is none.
    HDNTNetlist* getNetlist();
    /// The netlist for an architecture: the own one, or what the map library of the block's name attaches. Null when
    /// there is none; a load that attached nothing is not tried again. A map library that does not parse throws
    /// HEXDataException.
    HDNTNetlist* getNetlist(const std::string& architecture);
    /// What is attached now; loads nothing. Null when there is none. Any thread.
    const HDNTNetlist* getAttachedNetlist() const { return netlist_.get(); }
    /// Whether what is attached came from the library's own text and not from a map library. Any thread.
    bool hasOwnNetlist() const { return netlistKind_ == OwnNetlist || netlistKind_ == OwnNetlistInChild; }
    /// HDNTNetlist::getReferencedInstanceName of the netlist for the architecture, the manager's current one when
    /// empty.
    std::string getReferencedInstanceName(std::string architecture);
    /// Whether that netlist holds an instance of a block that can be pseudo-differential, or calls a function that the
    /// configuration lists as making one. Types are sought in this library, its parents, and the common library if it
    /// is loaded; one that is nowhere says no.
    bool hasPseudoDifferentialExpansion(std::string architecture);
    /// Replaces the netlist and deletes the one before, unless they are the same; null removes it. Finalizes the new
    /// one. Loading thread only.
    void setNetlist(HDNTNetlist* netlist);
    unsigned short getNetlistKind() const { return netlistKind_; }

    /// A netlist with what the block knows of it.
    struct DeleteNetlist {
        void operator()(HDNTNetlist* netlist) const noexcept;
    };
    struct Mapping {
        std::unique_ptr<HDNTNetlist, DeleteNetlist> netlist;
        std::string architecture; ///< that it was loaded for
        unsigned short kind = NoNetlist;
        bool canTiePins = false;
    };
    /// Puts one mapping in the place of another, as it is, and gives back what was here. Loading thread only.
    Mapping exchangeMapping(Mapping mapping);

    // What the block holds, to be walked (hdnt/model/Nodes.h). Any thread.

    hdnt::Nodes<const HDNTBus> buses() const { return hdnt::Nodes<const HDNTBus>(buses_); }
    hdnt::Nodes<HDNTBus> buses() { return hdnt::Nodes<HDNTBus>(buses_); }
    /// All of them, bit by bit, in order of declaration, internal ones included whatever the current part: these stand
    /// last, behind getNumPins() where they do not count.
    hdnt::Nodes<const HDNTPin> pins() const;
    hdnt::Nodes<HDNTPin> pins();
    hdnt::Nodes<const HDNTProperty> properties() const { return hdnt::Nodes<const HDNTProperty>(properties_); }
    hdnt::Nodes<HDNTProperty> properties() { return hdnt::Nodes<HDNTProperty>(properties_); }

    // The same by index.

    /// Pins counted bit by bit; without those of internal buses when the manager's current part does not support them.
    size_t getNumPins() const;
    /// In order of declaration, internal pins included. The first question for a pin of a block makes all of them, in
    /// any thread; they stay as long as the block. Past the end: a line on standard error, and HEXAlgException
    /// "Pin index out of range for tessel " + name.
    HDNTPin* getPin(size_t i) const;
    size_t getNumBuses() const { return buses_.size(); }
    /// Null for an index between the number of buses and that of all pins. From there on, HEXAlgException
    /// "Bus index out of range for tessel " + name.
    HDNTBus* getBus(size_t i) const;
    size_t getNumProperties() const { return properties_.size(); }
    /// Throws HEXAlgException "Property index out of range".
    HDNTProperty* getProperty(size_t i) const;

    // By name; null when there is none. These allocate nothing, but for names of more than 64 characters.

    /// A pin as in getPinByName().
    const HDNTPin* findPin(std::string_view name) const;
    HDNTPin* findPin(std::string_view name);
    /// The first bus of that base name; when there is none, of that whole name. As in getBusByName().
    const HDNTBus* findBus(std::string_view name) const;
    HDNTBus* findBus(std::string_view name);
    /// A property as in getPropertyByName().
    const HDNTProperty* findProperty(std::string_view name) const;
    HDNTProperty* findProperty(std::string_view name);

    /// `CLK` or `D[7]`. The query is upper-cased and compared with the names as declared, so that a pin declared with
    /// lower-case letters is not found. Needs finalize().
    HDNTPin* getPinByName(const std::string& name) const;
    /// Upper-cases the query likewise. By the whole name (`D[7:0]`) or by the base name (`D`); the first match.
    HDNTBus* getBusByName(const std::string& name, bool fullName) const;
    /// Case aside. Needs finalize().
    HDNTProperty* getPropertyByName(const std::string& name) const;
    /// Appends the pins of the first run of pins with exactly that base name: the bits of one bus.
    void getBusPins(const std::string& baseName, std::vector<HDNTPin*>& out) const;
    /// Iterator over the attribute specifications of the block's own properties, in order of declaration; the caller
    /// owns it, and the block must outlive it.
    HSTKeyValIter<std::string, HATAttrSpec*>* createSpecIter() const;

    // Primitive group: texts valid as long as the library; null when there is none. Setters: loading thread only; they
    // do nothing for a block without library.
    const char* getPrimGroupType(bool legacy) const;
    const char* getPrimSubGroupType(bool legacy) const;
    void setPrimGroupType(std::string abbrev);
    void setPrimSubGroupType(std::string abbrev);
    void setLegacyPrimGroupType(std::string abbrev);
    void setLegacyPrimSubGroupType(std::string abbrev);

    // What the application configuration says of the block; neutral where it says nothing. Lists are cleared first.
    bool canTiePins() const;
    bool usesNibbleSizeHexAttrs() const;
    bool canBePseudoDifferential() const;
    /// For the part's architecture; null: the manager's current part, and false when there is none.
    bool internalPinsSupported(const CommonPart::PartSpec* part) const;
    std::vector<std::string> getCellArchesCfg() const;
    std::string getMasterDriverPinName() const;
    void getMasterShadowPins(std::vector<std::string>& out) const;

    /// Names of blocks that the registry does not know, in order of construction. Never cleared. There before the first
    /// initialiser of the process, and until those of the library are undone: blocks made after that are not noted.
    static std::vector<std::string> s_unregisteredNames;

private:
    HDNT_LOCAL const std::vector<HDNTPin*>& allPins() const;
    HDNT_LOCAL void makePins() const;
    HDNT_LOCAL void acceptDeclared(HDNTVisitor& visitor);
    HDNT_LOCAL HDNTPin* lookUpPin(std::string_view name) const;
    HDNT_LOCAL HDNTBus* lookUpBus(std::string_view name) const;
    HDNT_LOCAL HDNTBus* lookUpBus(std::string_view name, bool fullName) const;
    HDNT_LOCAL HDNTProperty* lookUpProperty(std::string_view name) const;
    HDNT_LOCAL void deleteOwned();
    HDNT_LOCAL void adopt(std::vector<HDNTBlockEntity*>& entities);
    HDNT_LOCAL void adoptEntity(HDNTBlockEntity* entity);
    HDNT_LOCAL void adoptBus(HDNTBus& bus);
    HDNT_LOCAL void applyGroup(const HDNTPrimGroup& group);
    HDNT_LOCAL bool applyAttribute(const HDNTBlockEntity& entity);
    HDNT_LOCAL void reportRedefinedPins() const;
    HDNT_LOCAL void indexProperties();
    HDNT_LOCAL void describeProperties(const HDNTLibrary& library);
    HDNT_LOCAL void findRedefinedPins(const hdnt::platform::NameIndex::Positions& buses,
                                      std::vector<size_t>& redefined) const;
    HDNT_LOCAL HDNTNetlist* loadNetlist(const std::string& architecture);
    HDNT_LOCAL const char* groupText(int index) const;
    HDNT_LOCAL int groupIndex(std::string abbrev) const;

    std::string name_;
    HDNT_LOCAL void noteNetlist();
    HDNT_LOCAL void checkNetlist();
    HDNT_LOCAL void finalizeNetlist();

    std::unique_ptr<HDNTNetlist, DeleteNetlist> netlist_;
    mutable std::vector<HDNTPin*> pins_; ///< made when first asked for
    std::vector<HDNTBus*> buses_;
    std::vector<HDNTProperty*> properties_;
    hdnt::platform::NameIndex busesByName_;      ///< by base name
    hdnt::platform::NameIndex propertiesByName_; ///< case aside
    std::string netlistArchitecture_;            ///< that the netlist was loaded for
    std::vector<std::string> triedArchitectures_;
    uint32_t pinCount_ = 0;
    uint32_t internalBusCount_ = 0;
    uint32_t internalPinCount_ = 0;
    int maturityLevel_ = 0;
    int group_ = -1;
    int subGroup_ = -1;
    int legacyGroup_ = -1;
    int legacySubGroup_ = -1;
    unsigned short type_ = HDNTCellviewLib::UNKNOWN;
    unsigned short netlistKind_ = NoNetlist;
    mutable std::atomic<bool> pinsMade_ = false;
    bool canTiePins_ = false;
    bool internal_ = false;
    bool test_ = false;
    bool indexed_ = false;
};
