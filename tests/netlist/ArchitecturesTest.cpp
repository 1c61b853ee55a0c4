// Mappings that depend on the architecture: loaded when they are asked for, one at a time.
#include "tests/platform/TempDir.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <filesystem>

using support::loaded;
using support::Reports;
using support::Texts;

class Architectures : public testing::Test {
protected:
    Architectures() {
        dir.makeDir("maplib");
        dir.makeDir("tessels");
        setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
        setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
        HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    }
    // A section for each architecture whose mapping has one instance of that name; one for all without architectures.
    void writeMap(const std::string& block, const Texts& architectures, const std::string& prefix = "") const {
        std::string text = "library \"M\" {\n";
        for (const std::string& arch : architectures)
            text += "#ifArch \"" + arch + "\"\n" + mapping(block, prefix + arch) + "#endif\n";
        if (architectures.empty()) text += mapping(block, prefix + "all");
        dir.write("maplib/" + block + ".btl", text + "}\n");
    }
    static std::string mapping(const std::string& block, const std::string& instance) {
        return "block \"" + block + "\" mapsto { inst \"" + instance + "\" \"HOLD\"; }\n";
    }
    static void use(const std::string& arch, unsigned short number) {
        HDNTLibraryMgr::getLibraryMgr()->m_architecture = arch;
        HDNTLibraryMgr::m_archEnumInfo = number;
    }
    // What the block's mapping for the current architecture has, asked in every way there is.
    static std::string expansionOf(HDNTBlock& block) {
        HDNTExpansion expansion(block);
        const std::string name =
            expansion.expand() ? expansion.levels().at(0).instances.at(0).name : std::string("none");
        const std::string& arch = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
        EXPECT_EQ(block.getReferencedInstanceName(""), name == "none" ? "" : name);
        EXPECT_EQ(block.getReferencedInstanceName(arch), name == "none" ? "" : name);
        return name;
    }
    const TempDir dir;
    const std::unique_ptr<HDNTLibrary> library =
        loaded("library \"L\" { block \"HOLD\" { } block \"GATE_AND_2\" { } }");
    HDNTBlock& hold = *library->getTypeBlock(0);
    HDNTBlock& gate = *library->getTypeBlock(1);
};

TEST_F(Architectures, EachHasItsOwnExpansion) {
    writeMap("HOLD", {"alpha", "beta"});
    for (const auto& [arch, number] : {std::pair("alpha", 7), {"beta", 8}, {"alpha", 7}, {"beta", 8}}) {
        use(arch, static_cast<unsigned short>(number));
        EXPECT_EQ(expansionOf(hold), arch);
        EXPECT_EQ(hold.getNetlistKind(), number);
        EXPECT_EQ(hold.getNetlist(arch), hold.getAttachedNetlist());
        EXPECT_FALSE(hold.hasOwnNetlist());
    }
    // The host's number alone, or the name alone, is not enough to take the netlist for the right one.
    EXPECT_EQ(hold.getReferencedInstanceName("alpha"), "alpha");
    use("alpha", 9);
    const std::string renamed = "new";
    writeMap("HOLD", {"alpha", "beta"}, renamed);
    EXPECT_EQ(expansionOf(hold), "newalpha");
    EXPECT_EQ(hold.getNetlistKind(), 9);
}

TEST_F(Architectures, OneWithoutSectionsIsLoadedOnceForAll) {
    writeMap("HOLD", {});
    use("alpha", 7);
    EXPECT_EQ(expansionOf(hold), "all");
    const HDNTNetlist* const netlist = hold.getAttachedNetlist();
    std::filesystem::remove(dir.path("maplib/HOLD.btl"));
    use("beta", 8);
    EXPECT_EQ(expansionOf(hold), "all");
    EXPECT_EQ(hold.getNetlist("gamma"), netlist);
    EXPECT_EQ(hold.getNetlistKind(), HDNTBlock::AnyArchitecture);
}

// Neither a missing file nor one without a fitting section is looked for again; what was there stays.
TEST_F(Architectures, ALoadThatAttachedNothingIsNotRepeated) {
    writeMap("HOLD", {"alpha"});
    use("alpha", 7);
    EXPECT_EQ(expansionOf(hold), "alpha");
    const HDNTNetlist* const netlist = hold.getAttachedNetlist();
    for (HDNTBlock* const block : {&hold, &gate}) EXPECT_EQ(block->getNetlist("beta"), nullptr);
    writeMap("HOLD", {"alpha", "beta"});
    writeMap("GATE_AND_2", {"alpha", "beta"});
    for (HDNTBlock* const block : {&hold, &gate}) EXPECT_EQ(block->getNetlist("beta"), nullptr);
    EXPECT_EQ(hold.getNetlist("alpha"), netlist);
    EXPECT_EQ(hold.getNetlistKind(), 7);
    EXPECT_EQ(gate.getNetlistKind(), HDNTBlock::NoNetlist);
    EXPECT_EQ(gate.getReferencedInstanceName("alpha"), "alpha");
}

TEST_F(Architectures, AnOwnMappingHoldsForAllAndOpensNoFile) {
    dir.write("maplib/HOLD.btl", "oops");
    const auto child = loaded("library \"C\" { block \"HOLD\" { } mapsto { inst \"own\" \"T\"; } }", library.get());
    HDNTBlock& block = *child->getTypeBlock(0);
    for (const char* arch : {"alpha", "beta", ""}) EXPECT_EQ(block.getNetlist(arch), block.getAttachedNetlist());
    EXPECT_EQ(block.getNetlistKind(), HDNTBlock::OwnNetlistInChild);
}

// A text may map other blocks beside the one it is named for, also blocks of the parent; none of these is their own.
TEST_F(Architectures, WhatElseAFileMapsIsForItsArchitectureToo) {
    const auto child = loaded("library \"C\" { block \"ADD_CHAIN_8\" { } }", library.get());
    HDNTBlock& add = *child->getTypeBlock(0);
    const std::string pair = mapping("ADD_CHAIN_8", "both") + mapping("HOLD", "beside");
    dir.write("maplib/ADD_CHAIN_8.btl", "library \"M\" {\n#ifArch \"alpha\"\n" + pair + "#endif\n}");
    writeMap("HOLD", {"beta"}, "own ");
    use("alpha", 7);
    EXPECT_EQ(expansionOf(add), "both");
    EXPECT_EQ(expansionOf(hold), "beside");
    EXPECT_FALSE(hold.hasOwnNetlist());
    use("beta", 8);
    EXPECT_EQ(hold.getReferencedInstanceName("beta"), "own beta");
    EXPECT_EQ(add.getNetlist("beta"), nullptr);

    const Reports silent;
    dir.write("maplib/ADD_CHAIN_8.btl", "library \"M\" { " + pair + " oops }");
    EXPECT_THROW(add.getNetlist("gamma"), HEXDataException);
    EXPECT_EQ(expansionOf(hold), "own beta");
    EXPECT_EQ(add.getNetlistKind(), 7);
    EXPECT_EQ(add.getAttachedNetlist()->instances().at(0)->instName(), "both");
}

// What a block has of its own is not lost to another's map library, nor is what a text dropped kept.
TEST_F(Architectures, AFileThatFailsChangesNothing) {
    const auto child = loaded("library \"C\" { block \"ADD_CHAIN_8\" { } block \"FLOP_RISE\" { } mapsto { "
                              "inst \"mine\" \"T\"; } }",
                              library.get());
    HDNTBlock& add = *child->getTypeBlock(0);
    HDNTBlock& flop = *child->getTypeBlock(1);
    const Reports silent;
    dir.write("maplib/ADD_CHAIN_8.btl", "library \"M\" { " + mapping("FLOP_RISE", "theirs") +
                                            mapping("HOLD", "theirs") + "block \"NO_CELL\" mapsto { } oops }");
    for (int i = 0; i < 2; ++i) EXPECT_THROW(add.getNetlist("alpha"), HEXDataException);
    EXPECT_EQ(flop.getReferencedInstanceName("alpha"), "mine");
    EXPECT_EQ(flop.getNetlistKind(), HDNTBlock::OwnNetlistInChild);
    EXPECT_EQ(hold.getAttachedNetlist(), nullptr);
    EXPECT_TRUE(child->getDroppedMappings().empty());
}

TEST_F(Architectures, AFileThatFailsLeavesNothingAndCanBeMended) {
    const Reports silent;
    dir.write("maplib/HOLD.btl", "library \"M\" {\n" + mapping("HOLD", "half") + "oops }");
    use("alpha", 7);
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(hold.getNetlist("alpha"), HEXDataException);
        EXPECT_EQ(hold.getAttachedNetlist(), nullptr);
        EXPECT_EQ(hold.getNetlistKind(), HDNTBlock::NoNetlist);
    }
    writeMap("HOLD", {"alpha"});
    EXPECT_EQ(expansionOf(hold), "alpha");
    std::filesystem::remove(dir.path("maplib/HOLD.btl"));
    dir.makeDir("maplib/HOLD.btl");
    EXPECT_THROW(hold.getNetlist("beta"), HEXAlgException);
    EXPECT_EQ(expansionOf(hold), "alpha");
}

// The library has the declarations of a text by the time its end turns out to be wrong.
TEST_F(Architectures, AFileThatFailsBehindItsEndLeavesNothingEither) {
    const Reports silent;
    HDNTLibrary late(library.get()); // with one block that is indexed, and one that is not
    ASSERT_EQ(late.parseString("library \"N\" { block \"FLOP_RISE\" { } }"), 0);
    late.finalize();
    ASSERT_EQ(late.parseString("library \"N\" { block \"ADD_CHAIN_8\" { } }"), 0);
    dir.write("maplib/FLOP_RISE.btl", "library \"M\" { function int f(int); block \"GATE_OR_2\" { } " +
                                          mapping("FLOP_RISE", "theirs") + "} oops");
    for (int i = 0; i < 2; ++i) EXPECT_THROW(late.getTypeBlock(0)->getNetlist("alpha"), HEXDataException);
    EXPECT_EQ(std::tuple(late.getName(), late.blocks().size(), late.functions().size()), std::tuple("N", 2U, 0U));
    EXPECT_EQ(late.getLocation()->first_line, 1);
    EXPECT_EQ(late.getDeclaredBlock("ADD_CHAIN_8"), late.getTypeBlock(1));
    EXPECT_EQ(late.getDeclaredBlock("GATE_OR_2"), nullptr);
    EXPECT_EQ(late.getTypeBlock(0)->getAttachedNetlist(), nullptr);
    writeMap("FLOP_RISE", {"alpha"});
    EXPECT_EQ(late.getTypeBlock(0)->getReferencedInstanceName("alpha"), "alpha");
}

// A file that cannot be parsed would fail the question if it were opened.
TEST_F(Architectures, SwitchedOffTheAnswerIsNullAndNoFileIsOpened) {
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", false);
    dir.write("maplib/HOLD.btl", "oops");
    use("alpha", 7);
    EXPECT_EQ(expansionOf(hold), "none");
    EXPECT_EQ(hold.getNetlist(), nullptr);
    EXPECT_FALSE(hold.hasPseudoDifferentialExpansion("alpha"));
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    EXPECT_EQ(hold.getNetlist("beta"), nullptr);
    EXPECT_EQ(HDNTError::numErrors, 0);
}
