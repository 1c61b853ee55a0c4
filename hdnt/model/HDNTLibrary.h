#pragma once

#include "hdnt/model/BlockNames.h"
#include "hdnt/model/HDNTNode.h"
#include "hdnt/model/Nodes.h"
#include "hdnt/platform/HATAttrObj.h"
#include "hdnt/platform/HATAttrTypes.h"

#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <set>
#include <string_view>
#include <tuple>
#include <unordered_map>

class ConfigBase;
class HDNTBlock;
class HDNTFunctionDecl;
class HDNTVisitor;

namespace hdnt::model {
class Configuration;
struct ConfigurationFacts;
} // namespace hdnt::model
namespace hdnt::frontend {
struct MapLibrary;
}

/// One parsed library: its blocks and function declarations, and the library it extends, if any. Look-ups that are
/// allowed to go on ask the parent when this library has no answer.
///
/// Made and owned by HDNTLibraryMgr, or by whoever constructs one. Life: constructed, parsed into (one text or
/// several), finalize(), check(), queries. Constructing and parsing belong to the loading thread; once finalized, the
/// queries may run in any number of threads.
class HDNT_API HDNTLibrary : public HDNTDecl, public HATAttrObj {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Library, lastKind = firstKind;

    /// Builds an empty library over `parent`, which may be null, is not owned and must outlive it, and makes it the
    /// target of the parser (myTopLib). A library without parent reads "HDNTApplicationData.cfg": a malformed file
    /// throws HEXDataException with its name and line.
    explicit HDNTLibrary(HDNTLibrary* parent);
    /// The same without parent, with the configuration of another library as that one has read it, and shared with it:
    /// nothing is read again. The other one may go first.
    static std::unique_ptr<HDNTLibrary> configuredLike(const HDNTLibrary& other);
    /// The same without parent, for hosts that show no descriptions: their file is not read, and getDescConfig() is
    /// empty.
    static std::unique_ptr<HDNTLibrary> withoutDescriptions();
    /// Deletes blocks and function declarations; what a child library still refers to is gone then.
    ~HDNTLibrary() override;
    HDNTLibrary(const HDNTLibrary&) = delete;

    /// Calls check() of every own block, in order.
    void check() override;
    /// Builds the name index and finalizes the blocks. A block whose name, case aside, is taken is reported, stays
    /// reachable by index and is not finalized; each such block shifts the names of later blocks by one position. Does
    /// nothing once the index holds entries. A description configuration that is malformed throws HEXDataException; the
    /// library is as before then, and can be finalized when the file is mended.
    void finalize() override;
    /// Visits function declarations and all blocks, the parents' too. May load map libraries (HDNTBlock::getNetlist).
    virtual void accept(HDNTVisitor& visitor);
    /// Visits what was parsed into this library alone: its function declarations, and its blocks each by
    /// HDNTBlock::acceptOwn. Loads nothing. The visitor gets nodes that it could change; one that visits a const
    /// library must not. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;

    // Text (frontend). Errors in the text are reported through HDNTError; what counts as success is the caller's to
    // decide from the result and HDNTError::numErrors. The text goes to the library constructed last (myTopLib), which
    // is usually the one these are called on. Exceptions of constructors pass through, with the scanner left clean.

    /// Parses a file, compressed or not. 0 on success; 1 and a report when it cannot be opened; else not 0.
    int parseFile(const std::string& path);
    /// Parses a text in memory; its locations have no file name.
    int parseString(const std::string& text);
    /// Loads the map library `name` of the data location "maplib", with the sections for `arch`, when the parameter
    /// "ntl.enableMapLib" was on at the first call in the process. True when it was loaded and has sections for
    /// architectures. False without one, also for a name that is empty or holds a slash. A text that does not parse
    /// throws HEXDataException "Invalid maplib ntl file: " + name.
    bool loadMaplib(const std::string& name, const std::string& arch);
    /// Whether loadMaplib loads at all: the parameter "ntl.enableMapLib" as it was at the first call of either in the
    /// process. Any thread.
    static bool usesMapLibraries();

    // Text again (writer). Nothing of the model is changed, but accept() is: print() may load map libraries.

    /// Writes the library and its parents' blocks in the printed form (HDNTPrintVisitor), to standard output or to a
    /// stream, which is borrowed and may be null for standard output. Errors of the stream are not looked at.
    void print();
    void print(FILE* stream);
    /// Writes the library's own contents as source (HDNTSourceVisitor): a text that reads back to an equal library. It
    /// loads nothing. False when something in the library cannot be said in NTL, which no text can bring about but a
    /// program can; then each such thing is appended to `problems`, which may be null, and the text is of no use.
    bool printSource(FILE* stream, std::vector<std::string>* problems) const;

    /// Adopts parsed declarations: blocks and function declarations, in order; null entries are skipped. Blocks with
    /// the test flag are deleted unless the parameter "arch.enableTestFeatures" is on. The vector stays the caller's
    /// and may be null. Another kind throws HEXAlgException "Invalid library declaration type"; what came before stays
    /// adopted. Behind std::bad_alloc, what was adopted or deleted is null in the vector.
    void init(const std::string& name, std::vector<HDNTDecl*>* decls);

    /// The name in the last text parsed into this library; empty before.
    const std::string& getName() const { return name_; }
    HDNTLibrary* getParentLibrary() const { return parentLibrary_; }

    // What was parsed into this library alone, to be walked (hdnt/model/Nodes.h). Any thread.

    hdnt::Nodes<const HDNTBlock> blocks() const { return hdnt::Nodes<const HDNTBlock>(blocks_); }
    hdnt::Nodes<HDNTBlock> blocks() { return hdnt::Nodes<HDNTBlock>(blocks_); }
    hdnt::Nodes<const HDNTFunctionDecl> functions() const { return hdnt::Nodes<const HDNTFunctionDecl>(functions_); }
    hdnt::Nodes<HDNTFunctionDecl> functions() { return hdnt::Nodes<HDNTFunctionDecl>(functions_); }

    // By name, here and else in the parents; null when there is none. These allocate nothing. Any thread.

    /// As getTypeBlockByName().
    const HDNTBlock* findBlock(std::string_view name) const;
    HDNTBlock* findBlock(std::string_view name);
    /// As getFunctionDeclByName().
    const HDNTFunctionDecl* findFunction(std::string_view name) const;
    HDNTFunctionDecl* findFunction(std::string_view name);

    size_t getNumTypeBlocks(bool withParents) const;
    /// Own blocks first, then the parent's, as getNumTypeBlocks(true) counts them. Throws HEXAlgException
    /// "HDNTLibrary::getTypeBlock call is invalid" past the end.
    HDNTBlock* getTypeBlock(size_t index) const;
    /// By name, case aside; null when there is none. Finds nothing in a library that is not finalized.
    HDNTBlock* getTypeBlockByName(const std::string& name, bool searchParents) const;
    /// What a separate mapping finds: as getTypeBlockByName in this library alone, else the first block of that name
    /// that was adopted since finalize(), or before it.
    HDNTBlock* getDeclaredBlock(const std::string& name) const;
    /// Appends the blocks whose names begin with the prefix, case aside, in the order of their upper-cased names, then
    /// the parents' (also those that own blocks hide). True when any was appended; never for an empty prefix.
    bool getTypeBlocksBeginWith(const std::string& prefix, std::vector<HDNTBlock*>& out, bool searchParents) const;

    size_t getNumFunctionDecls() const { return functions_.size(); }
    /// Own declarations only. Throws HEXAlgException "Function declaration index out of range".
    HDNTFunctionDecl* getFunctionDecl(size_t i) const;
    /// By exact name, in the parents too; null when there is none.
    HDNTFunctionDecl* getFunctionDeclByName(const std::string& name) const;

    /// Text of a group abbreviation, valid as long as the library. Throws HEXAlgException
    /// "Prim group name index out of bounds".
    const char* getGroupAbbrev(size_t index) const;
    /// Index of an abbreviation (case matters), added when new. Loading thread only.
    size_t getGroupAbbrevIdx(std::string abbrev);
    /// The group, or subgroup, of the named block here or in a parent; empty when block or group is unknown.
    std::string getPrimGroupType(const std::string& blockName, bool legacy) const;
    std::string getPrimSubGroupType(const std::string& blockName, bool legacy) const;

    /// The root library's application configuration. Hold its mutex() while using it.
    ConfigBase* getConfig() const;
    /// The root library's description configuration, "tessel.desc.cfg", read on first use: a malformed file throws
    /// HEXDataException, and the next call reads it again. Any thread.
    ConfigBase* getDescConfig() const;

    /// A separate mapping that was dropped while a text was parsed into this library.
    struct DroppedMapping {
        std::string blockName;
        std::string reason;
        yyltype location;
    };
    /// In the order met. The parser reports nothing of them.
    const std::vector<DroppedMapping>& getDroppedMappings() const { return droppedMappings_; }
    /// Once for each place, however often a map library is loaded. The builder's.
    void addDroppedMapping(DroppedMapping mapping);
    /// Those from the index on: of a text that failed. The loader's.
    void forgetDroppedMappings(size_t firstForgotten);

    // What the application configuration says; neutral answers where it says nothing. Any thread.
    std::string getSimDeviceString(const std::string& arch) const;
    std::string getMasterArchitecture(const std::string& arch) const;
    bool isIOPinConstr(const std::string& name) const;
    bool isReadOnlyAttribute(const std::string& name) const;
    /// The list is cleared first.
    void getMasterDriverTypes(std::vector<std::string>& out) const;
    /// The configuration as tables. Internal.
    const hdnt::model::ConfigurationFacts& getConfigurationFacts() const;
    HDNT_LOCAL hdnt::model::Configuration& getConfiguration() const;

private:
    HDNT_LOCAL HDNTLibrary(HDNTLibrary* parent, std::shared_ptr<hdnt::model::Configuration> configuration);
    HDNT_LOCAL const HDNTLibrary& root() const;
    HDNT_LOCAL HDNTBlock* lookUpBlock(std::string_view name, bool searchParents) const;
    HDNT_LOCAL HDNTFunctionDecl* lookUpFunction(std::string_view name) const;
    HDNT_LOCAL void enterParser();
    HDNT_LOCAL void leaveParser() noexcept;
    HDNT_LOCAL void parseMapLibrary(hdnt::frontend::MapLibrary& library, const std::string& name);
    HDNT_LOCAL bool adoptFunction(HDNTDecl* decl);
    HDNT_LOCAL void deleteFunctions() noexcept;
    HDNT_LOCAL void adopt(HDNTBlock* block);
    bool isIndexed() const { return !names_.blocks().empty(); }
    HDNT_LOCAL void index(HDNTBlock* block);
    HDNT_LOCAL const std::vector<uint32_t>& sortedNames() const;
    HDNT_LOCAL HDNTBlock* answerOf(const hdnt::model::BlockNames::Entry& name) const;

    std::string name_;
    std::vector<HDNTBlock*> blocks_;
    std::vector<HDNTFunctionDecl*> functions_;
    hdnt::model::BlockNames names_;             ///< of finalize()
    mutable std::vector<uint32_t> sortedNames_; ///< positions in names_, by upper-cased name; made when first asked for
    mutable std::mutex sortedNamesMutex_;
    hdnt::model::LateBlockNames adopted_; ///< those that are not indexed
    std::vector<DroppedMapping> droppedMappings_;
    std::set<std::tuple<std::string, const char*, int, int>> droppedPlaces_;
    std::deque<std::string> groupAbbrevs_;
    std::unordered_map<std::string_view, size_t> groupIndexes_; ///< in groupAbbrevs_, which hold the keys
    std::shared_ptr<hdnt::model::Configuration> configuration_; ///< of a root
    HDNTLibrary* parentLibrary_;
};
