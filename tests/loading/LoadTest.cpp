#include "hdnt/frontend/Scanner.h"
#include "tests/platform/TempDir.h"
#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <filesystem>
#include <thread>

namespace {

using hdnt::Diagnostic;
using hdnt::diagnosticOf;
using hdnt::Loaded;
using hdnt::LoadOptions;
using support::Texts;

/// "severity code line:column-endColumn offset-endOffset", with the related lines behind it.
std::string brief(const Diagnostic& one) {
    const hdnt::Place& at = one.place;
    std::string text = std::string(nameOf(one.severity)) + " " + one.code;
    if (at.isKnown())
        text += " " + std::to_string(at.line) + ":" + std::to_string(at.column) + "-" + std::to_string(at.endColumn) +
                " " + std::to_string(at.offset) + "-" + std::to_string(at.endOffset);
    for (const hdnt::RelatedPlace& related : one.related)
        text += ", " + related.message + " " + std::to_string(related.place.line);
    return text;
}

Texts brief(const Loaded& loaded) {
    Texts texts;
    for (const Diagnostic& one : loaded.diagnostics) texts.push_back(brief(one));
    return texts;
}

struct Load : testing::Test {
    TempDir dir;
    std::string file(const std::string& name, const std::string& text) {
        dir.write(name, text);
        return dir.path(name);
    }
    std::string library(const std::string& name, const std::string& content) {
        return file(name, "library \"l\" {\n" + content + "\n}\n");
    }
};

void gzip(const std::string& path, const std::string& text) {
    gzFile file = gzopen(path.c_str(), "wb");
    gzwrite(file, text.data(), static_cast<unsigned>(text.size()));
    gzclose(file);
}

} // namespace

TEST_F(Load, SaysWhatIsWrongInCharacters) {
    const struct {
        const char* content; // from line 2 on
        Texts said;
    } cases[] = {
        {"block \"HOLD\" { pin \"A\" input; pin \"A\" input; }",
         {"error pin-redefined 2:31-45 44-58, first declared here 2"}},
        {"block \"HOLD\" { }\nblock \"hold\" { }", {"error block-redefined 3:1-17 31-47, first declared here 2"}},
        {"block \"HOLD\" { property int \"A\" { } ; }", {"error syntax-error 2:35-36 48-49"}},
        {"\tblock \"HOLD\" { /* \xc3\xa4\t\xe2\x82\xac */ pin \"A\" input;\tpin \"A\" input; }",
         {"error pin-redefined 2:42-56 58-72, first declared here 2"}},
        {"/* \xc3\xa4\t\xe2\x82\xac */\t#", {"error unrecognized-character 2:11-12 27-28"}},
        {"/* it\"s\n\t\"so\" */ \t#", {"error unrecognized-character 3:11-12 32-33"}},
        {"block \"HOLD\" { property string \"S\" { default = \"\t\" } } # // \"",
         {"error unrecognized-character 2:56-57 69-70"}},
        {"\t\tINCLUDE none.inc;", {"warning include-not-found 2:10-20 23-33"}},
        {"block \"HOLD\" mapsto { }", {"warning dropped-mapping 2:1-24 14-37"}},
        {"block \"HOLD\" { pin \"A[0:4294967296]\" input; }", {"error range-elements 2:16-44 29-57"}},
    };
    for (const auto& [content, said] : cases) EXPECT_EQ(brief(hdnt::load(library("a.btl", content))), said) << content;
}

// Texts in place of files, for this load alone: of the input and of what it includes, on disk or not.
TEST_F(Load, ReadsTextsInPlaceOfFiles) {
    const std::string main = library("main.btl", "INCLUDE part.inc;\nINCLUDE new.inc;");
    file("part.inc", "block \"HOLD\" { pin \"A\" input; }");
    LoadOptions options;
    options.searchDirectories = {dir.path() + "/folder/.."};
    options.texts = {{dir.path("part.inc"), "\nblock \"GATE_AND_2\" { pin \"A\" input; pin \"A\" input; }"},
                     {dir.path("new.inc"), ""}};
    dir.makeDir("folder");
    EXPECT_EQ(brief(hdnt::load(main, options)), (Texts{"error pin-redefined 2:37-51 37-51, first declared here 2"}));
    options.texts = {{dir.path("unsaved.btl"), "library \"l\" { block \"HOLD\" { pin \"Z\" input; } }"}};
    const Loaded unsaved = hdnt::load(dir.path("./unsaved.btl"), options);
    ASSERT_TRUE(unsaved);
    EXPECT_EQ(unsaved.library->getNumTypeBlocks(false), 1U);
    EXPECT_FALSE(hdnt::load(dir.path("unsaved.btl")));
    options.texts.clear();
    EXPECT_EQ(brief(hdnt::load(main, options)), (Texts{"warning include-not-found 3:8-17 39-48"}));
}

TEST_F(Load, KeepsSoManyDiagnostics) {
    const struct {
        std::string text;
        std::size_t limit;
        std::string last;
    } cases[] = {
        {"!!!", 3, "error unrecognized-character Unrecognized char: '!'"},
        {"!!!", 2, "error too-many-diagnostics 1 more are not kept (limit diagnostics)"},
        {"!!!", 0, "error too-many-diagnostics 3 more are not kept (limit diagnostics)"},
        {"INCLUDE none;\nINCLUDE none;", 1, "warning too-many-diagnostics 1 more are not kept (limit diagnostics)"},
    };
    for (const auto& [text, limit, last] : cases) {
        LoadOptions options;
        options.limits.emplace().diagnostics = limit;
        const Loaded loaded = hdnt::load(library("l.btl", text + "\n"), options);
        const Diagnostic& one = loaded.diagnostics.back();
        EXPECT_EQ(std::string(nameOf(one.severity)) + " " + one.code + " " + one.message, last);
        EXPECT_EQ(bool(loaded), one.severity == hdnt::Severity::warning);
    }
}

TEST_F(Load, LeavesNothingBehindAndPrintsNothing) {
    const std::string bad = library("bad.btl", "INCLUDE part.inc;\n\"open\nblock 7");
    file("part.inc", "block \"HOLD\" { pin \"A\" input; }");
    const std::string good = library("good.btl", "INCLUDE part.inc;");
    support::Reports host;
    HDNTError::numErrors = 3;
    HDNTLimits limits;
    limits.includeDepth = 1;
    LoadOptions options;
    options.searchDirectories = {dir.path()};
    options.limits = limits;
    const support::Printed printed = support::printedBy([&] {
        for (int round = 0; round < 3; ++round) {
            const Loaded failed = hdnt::load(bad, options);
            EXPECT_FALSE(failed);
            EXPECT_EQ(brief(failed),
                      (Texts{"warning unterminated-string 3:1-6 32-37", "error syntax-error 4:7-8 44-45"}));
            const Loaded loaded = hdnt::load(good, options);
            ASSERT_TRUE(loaded);
            EXPECT_EQ(loaded.library->getNumTypeBlocks(false), 1U);
            EXPECT_TRUE(loaded.diagnostics.empty());
            EXPECT_EQ(loaded.files, (Texts{good, dir.path("part.inc")}));
        }
    });
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(HDNTError::numErrors, 3);
    EXPECT_EQ(HDNTLimits::get().includeDepth, 256);
    EXPECT_EQ(NtlFindFile("part.inc"), "");
    EXPECT_EQ(HDNTError::setListener(&host), &host);
    EXPECT_TRUE(host.texts.empty());
    EXPECT_FALSE(HDNTLibraryMgr::m_diagnostics);
}

TEST_F(Load, WhatIsNoLibraryIsADiagnostic) {
    dir.makeDir("folder");
    dir.write("folder/a.btl", "library \"l\" { }");
    dir.makeDir("empty");
    dir.write("cut.btl", "\x1f\x8b");
    const auto messages = [&](const std::string& path) {
        Texts texts;
        for (const Diagnostic& one : hdnt::load(path).diagnostics) texts.push_back(one.code + " " + textOf(one));
        return texts;
    };
    EXPECT_EQ(messages(dir.path("none")),
              (Texts{"cannot-open Could not open file: " + dir.path("none") + ": No such file or directory"}));
    EXPECT_EQ(messages(dir.path("cut.btl")).at(0).find("cannot-open Could not open file: "), 0U);
    EXPECT_TRUE(hdnt::load(dir.path("folder")));
    EXPECT_TRUE(hdnt::load(dir.path("empty")));
    EXPECT_EQ(messages(library("order.btl", "block \"HOLD\" { pin \"A\" internal; pin \"B\" input; }")),
              Texts{"refused Internal pins must be last in list, in tessel HOLD"});
    dir.write("HDNTApplicationData.cfg", "CELLS = {");
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    EXPECT_EQ(messages(dir.path("folder")).at(0).find("configuration "), 0U);
    dir.write("HDNTApplicationData.cfg", "");
    EXPECT_TRUE(hdnt::load(dir.path("folder")));
}

// The required entries, with a listener that takes everything.
TEST_F(Load, ASilencingListenerHearsEveryLine) {
    struct Silent : support::Reports {
        bool silencesOutput() const override { return true; }
    } silent;
    file("part.inc", "block \"HOLD\" { pin \"A\" input; }");
    NtlAddSearchDirectory(dir.path());
    const std::string text =
        "library \"l\" {\nINCLUDE part.inc;\nINCLUDE none;\nINCLUDE\nstray\npart.inc;\n\"open\n/* end";
    HDNTLibrary library(nullptr);
    const support::Printed printed = support::printedBy([&] { EXPECT_NE(library.parseString(text), 0); });
    EXPECT_EQ(printed.out + printed.err, "");
    using Kind = HDNTNotice::Kind;
    EXPECT_EQ(silent.notices, (std::vector{Kind::FileOpened, Kind::IncludeNotFound, Kind::IncludeText,
                                           Kind::IncludeSkipped, Kind::UnterminatedString, Kind::UnterminatedComment}));
}

// Small ones share memory, others have their own.
TEST_F(Load, FilesOfAFolderInEachForm) {
    const auto text = [](const std::string& name) { return "library \"l\" {\nblock \"" + name + "\" { }\n}\n"; };
    dir.makeDir("d");
    dir.makeDir("e");
    dir.write("d/1.btl", text("A"));
    gzip(dir.path("d/2.btl"), text("B"));
    dir.write("d/3.btl", std::string(100000, '\n') + text("C"));
    dir.write("e/inner.btl", "block \"D\" { }\n");
    dir.write("d/4.btl", "library \"l\" {\nINCLUDE " + dir.path("e/inner.btl") + ";\n}\n");
    dir.write("d/5.btl", text("E"));
    for (int i = 0; i < 2; ++i) {
        const Loaded loaded = hdnt::load(dir.path("d"));
        ASSERT_TRUE(loaded);
        Texts names;
        for (const HDNTBlock& block : loaded.library->blocks()) names.push_back(block.getName());
        EXPECT_EQ(names, (Texts{"A", "B", "C", "D", "E"}));
        EXPECT_EQ(loaded.library->blocks()[4].copyOfLocation()->fileName, dir.path("d/5.btl"));
    }
    dir.write("d/5.btl", text("A"));
    EXPECT_EQ(hdnt::load(dir.path("d")).diagnostics.at(0).place.text, "block \"A\" { }");
}

// More text than is kept for the next load, which must not see what stands there.
TEST_F(Load, LargeFoldersAgainAndAgain) {
    dir.makeDir("d");
    for (const int length : {60000, 59000, 100, 60000}) {
        const std::string comment = "/*" + std::string(static_cast<size_t>(length), length == 59000 ? '"' : 'x') + "*/";
        Texts expected;
        for (int i = 100; i < 450; ++i) {
            expected.push_back(std::to_string(i) + "_" + std::to_string(length));
            dir.write("d/" + std::to_string(i) + ".btl",
                      "library \"l\" {" + comment + "\nblock \"" + expected.back() + "\" { }\n}");
        }
        const Loaded loaded = hdnt::load(dir.path("d"));
        ASSERT_TRUE(loaded);
        Texts names;
        for (const HDNTBlock& block : loaded.library->blocks()) names.push_back(block.getName());
        EXPECT_EQ(names, expected);
        dir.write("d/450.btl", "library \"l\" {\nblock \"" + expected.back() + "\" { }\n}");
        EXPECT_EQ(hdnt::load(dir.path("d")).diagnostics.at(0).place.text, "block \"" + expected.back() + "\" { }");
        std::filesystem::remove(dir.path("d/450.btl"));
    }
}

// The library manager fails at such an entry, so a folder with one is no good library anywhere.
TEST_F(Load, ShortNamesInFoldersAreRefusedByName) {
    dir.makeDir("d");
    dir.write("d/x", "");
    dir.write("d/a.btl", "library \"l\" { }");
    ASSERT_EQ(chdir(dir.path().c_str()), 0);
    const Loaded loaded = hdnt::load("d");
    EXPECT_FALSE(loaded);
    ASSERT_EQ(loaded.diagnostics.size(), 1U);
    EXPECT_EQ(loaded.diagnostics[0].code, "folder-entry");
    EXPECT_EQ(loaded.diagnostics[0].message.find("d/x: "), 0U);
    EXPECT_TRUE(hdnt::load(dir.path("d")));
}

TEST_F(Load, AFailureOverAParentGivesItsMappingsBack) {
    const Loaded parent = hdnt::load(library("parent.btl", "block \"HOLD\" { pin \"A\" input tieLow; }\n"
                                                           "block \"HOLD\" mapsto { inst \"own\" \"T\"; }"));
    ASSERT_TRUE(parent);
    HDNTBlock& hold = *parent.library->getTypeBlock(0);
    LoadOptions options;
    options.parent = parent.library.get();
    dir.makeDir("child");
    library("child/1.btl", "block \"HOLD\" mapsto { inst \"theirs\" \"T\"; }");
    library("child/2.btl", "block \"FLOP_RISE\" { pin \"A\" input; pin \"A\" input; }");
    EXPECT_FALSE(hdnt::load(dir.path("child"), options));
    EXPECT_EQ(hold.getReferencedInstanceName(""), "own");
    EXPECT_EQ(hold.getNetlistKind(), HDNTBlock::OwnNetlist);
    const support::Reports silent;
    EXPECT_THROW(HDNTLibraryMgr::getLibraryMgr()->loadLibrary(dir.path("child"), options.parent), HEXDataException);
    EXPECT_EQ(hold.getReferencedInstanceName(""), "own");
    dir.write("child/2.btl", "library \"l\" { }");
    EXPECT_TRUE(hdnt::load(dir.path("child"), options));
    EXPECT_EQ(hold.getReferencedInstanceName(""), "theirs");
    EXPECT_TRUE(hold.getCanTiePins());
}

TEST_F(Load, SharedIncludesAreBroughtInOnceAProcess) {
    dir.write("part.inc", "block \"HOLD\" { pin \"A\" input; }");
    const std::string path = library("a.btl", "INCLUDE part.inc;");
    LoadOptions options;
    options.searchDirectories = {dir.path()};
    options.sharedIncludes = true;
    EXPECT_EQ(brief(hdnt::load(path, options)), Texts{});
    EXPECT_EQ(brief(hdnt::load(path, options)), Texts{"warning include-skipped 2:8-18 21-31"});
    options.sharedIncludes = false;
    EXPECT_EQ(brief(hdnt::load(path, options)), Texts{});
}

// What a text declares while a host loads in between: each text finds the blocks of those before it.
TEST_F(Load, AMappingFindsABlockThatCameAfterFinalize) {
    const Loaded loaded = hdnt::load(library("a.btl", "block \"HOLD\" { pin \"A\" input; }"));
    HDNTLibrary& all = *loaded.library;
    EXPECT_EQ(all.parseString("library \"l\" { block \"FLOP_RISE\" { pin \"A\" input; } }"), 0);
    EXPECT_EQ(all.parseString("library \"l\" { block \"FLOP_RISE\" mapsto { inst \"late\" \"T\"; } }"), 0);
    EXPECT_EQ(all.getTypeBlock(1)->getReferencedInstanceName(""), "late");
}

// Lines that "#ifArch" left out count, and a compressed map library is its text.
TEST_F(Load, PlacesInMapLibrariesAreThoseOfTheirFiles) {
    dir.makeDir("maplib");
    const std::string text = "library \"M\" {\n#ifArch \"beta\"\nnonsense\n#endif\n#ifArch \"alpha\"\n\n"
                             "\t/* \xc3\xa4 */ block \"HOLD\" mapsto {\n  inst \"i\" \"T\";\n}\n#endif\n#\n}\n";
    const size_t fault = text.find("\n#\n") + 1;
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    const std::string path = dir.path("maplib/HOLD.btl");
    for (const bool compressed : {false, true}) {
        if (compressed) gzip(path, text);
        else dir.write("maplib/HOLD.btl", text);
        const Loaded loaded = hdnt::load(library("a.btl", "block \"HOLD\" { pin \"A\" input; }"));
        struct Said : HDNTErrorListener {
            bool report(const HDNTReport& report) override {
                said.push_back(brief(diagnosticOf(report)) + " " + diagnosticOf(report).place.file);
                return true;
            }
            Texts said;
        } listener;
        HDNTErrorListener* const before = HDNTError::setListener(&listener);
        const HDNTNetlist* const netlist = loaded.library->getTypeBlock(0)->getNetlist("alpha");
        HDNTError::setListener(before);
        EXPECT_EQ(listener.said, Texts{"error unrecognized-character 11:1-2 " + std::to_string(fault) + "-" +
                                       std::to_string(fault + 1) + " " + path});
        ASSERT_NE(netlist, nullptr);
        EXPECT_EQ(netlist->getLocation()->fileName, nullptr);
        hdnt::SourcePlaces places;
        const hdnt::Place place = places.placeOf(*netlist->instances().at(0)->getLocation());
        EXPECT_EQ(describe(place), path + ":8:3");
        EXPECT_EQ(place.text, "  inst \"i\" \"T\";");
        EXPECT_EQ(text.substr(place.offset, place.endOffset - place.offset), "inst \"i\" \"T\";");
        EXPECT_EQ(describe(places.placeOf(*netlist->getLocation())), path + ":7:10");
        EXPECT_EQ(describe(places.placeOf({path.c_str(), 0, 0, 1, 0, 1})), path);
    }
}

TEST_F(Load, AMapLibraryThatMayNotBeReadIsNoticed) {
    dir.makeDir("maplib");
    dir.write("maplib/HOLD.btl", "library \"M\" { }");
    dir.makeDir("root");
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    const Loaded loaded = hdnt::load(library("a.btl", "block \"HOLD\" { pin \"A\" input; }"));
    struct Noticed : HDNTErrorListener {
        void notice(const HDNTNotice& notice) override { diagnostics.push_back(diagnosticOf(notice)); }
        std::vector<Diagnostic> diagnostics;
    } listener;
    HDNTError::setListener(&listener);
    HDNTLimits limits;
    limits.rootFolder = dir.path("root");
    HDNTLimits::set(limits);
    EXPECT_EQ(loaded.library->getTypeBlock(0)->getNetlist("alpha"), nullptr);
    limits = HDNTLimits();
    limits.inputBytes = 3;
    HDNTLimits::set(limits);
    EXPECT_THROW(loaded.library->getTypeBlock(0)->getNetlist("beta"), HEXAlgException);
    HDNTError::setListener(nullptr);
    ASSERT_EQ(listener.diagnostics.size(), 2U);
    EXPECT_EQ(listener.diagnostics[0].code, "map-library-refused");
    EXPECT_NE(listener.diagnostics[0].detail.find("rootFolder"), std::string::npos);
    EXPECT_FALSE(listener.diagnostics[1].detail.empty());
}

TEST_F(Load, ItsLimitsAreThoseOfItsThread) {
    struct Asking : HDNTErrorListener {
        bool report(const HDNTReport&) override {
            own = HDNTLimits::get().bitWidth;
            std::thread([this] { others = HDNTLimits::get().bitWidth; }).join();
            return true;
        }
        int own = 0;
        int others = 0;
    } listener;
    LoadOptions options;
    options.listener = &listener;
    options.limits.emplace().bitWidth = 4;
    const std::string wide = library("a.btl", "block \"HOLD\" { property 5'h \"P\" { default = 5'h0 } }");
    EXPECT_EQ(brief(hdnt::load(wide, options)), (Texts{"error bit-width 2:16-51 29-64"}));
    EXPECT_EQ(std::pair(listener.own, listener.others), std::pair(4, HDNTLimits().bitWidth));
}

// What is no std::exception ends the load; it leaves as little behind as one that fails.
TEST_F(Load, AnExceptionOfTheListenerPassesThrough) {
    struct Stop {};
    struct Stopping : HDNTErrorListener {
        bool report(const HDNTReport&) override { throw Stop(); }
    } listener;
    HDNTLibrary target(nullptr);
    LoadOptions options;
    options.listener = &listener;
    const std::string bad = library("a.btl", "#");
    EXPECT_THROW(hdnt::load(bad, options), Stop);
    EXPECT_EQ(myTopLib, &target);
    EXPECT_EQ(HDNTError::setListener(nullptr), nullptr);
    EXPECT_EQ(HDNTError::numErrors, 0);
    EXPECT_EQ(brief(hdnt::load(bad)), (Texts{"error unrecognized-character 2:1-2 14-15"}));
    EXPECT_EQ(myTopLib, &target);
}

// A configuration that changed meanwhile, or became malformed, makes no difference then.
TEST_F(Load, SharesAConfiguration) {
    setenv("HDNT_CONFIG_PATH", dir.path("").c_str(), 1);
    dir.write("HDNTApplicationData.cfg", "MASTER_DRIVER_TYPES = [\"FIRST\"];");
    dir.write("tessel.desc.cfg", "HOLD = { N = \"a number\"; };");
    const std::string text = library("a.btl", "block \"HOLD\" { property int \"N\" { default = 1 } }");
    LoadOptions options;
    Loaded other = hdnt::load(text);
    dir.write("HDNTApplicationData.cfg", "}");
    dir.write("tessel.desc.cfg", "}");
    options.configuredLike = other.library.get();
    const Loaded like = hdnt::load(text, options);
    EXPECT_EQ(brief(hdnt::load(text)), (Texts{"error configuration"}));
    ASSERT_TRUE(like);
    EXPECT_EQ(like.library->getConfig(), other.library->getConfig());
    other.library.reset();
    Texts types;
    like.library->getMasterDriverTypes(types);
    EXPECT_EQ(types, (Texts{"FIRST"}));
    EXPECT_EQ(like.library->getTypeBlock(0)->getProperty(0)->getAttrSpec()->getDescription(), "a number");
}

// Their file may be as it will then.
TEST_F(Load, LeavesDescriptionsOut) {
    setenv("HDNT_CONFIG_PATH", dir.path("").c_str(), 1);
    dir.write("HDNTApplicationData.cfg", "MASTER_DRIVER_TYPES = [\"FIRST\"];");
    dir.write("tessel.desc.cfg", "}");
    const std::string text = library("a.btl", "block \"HOLD\" { property int \"N\" { default = 1 } }");
    EXPECT_EQ(brief(hdnt::load(text)), (Texts{"error configuration"}));
    const std::unique_ptr<HDNTLibrary> without = HDNTLibrary::withoutDescriptions();
    LoadOptions options;
    options.configuredLike = without.get();
    const Loaded loaded = hdnt::load(text, options);
    ASSERT_TRUE(loaded);
    EXPECT_FALSE(loaded.library->getDescConfig()->exists("HOLD"));
    EXPECT_EQ(loaded.library->getTypeBlock(0)->getProperty(0)->getAttrSpec()->getDescription(), "");
    Texts types;
    loaded.library->getMasterDriverTypes(types);
    EXPECT_EQ(types, (Texts{"FIRST"}));
}

TEST_F(Load, IsRefusedInsideALoad) {
    struct Nested : HDNTErrorListener {
        bool report(const HDNTReport&) override {
            EXPECT_THROW(hdnt::load("/none"), HEXAlgException);
            ++calls;
            return true;
        }
        int calls = 0;
    } listener;
    LoadOptions options;
    options.listener = &listener;
    EXPECT_FALSE(hdnt::load(library("a.btl", "#"), options));
    EXPECT_EQ(listener.calls, 1);
}
