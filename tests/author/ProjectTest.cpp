#include "author/project/Project.h"

#include "hdnt/platform/HEX.h"
#include "tests/platform/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

// The file of a project.
namespace {

using hdnt::author::Project;
using hdnt::author::readProject;

struct ProjectTest : testing::Test {
    TempDir directory;

    std::string refusal(const std::string& text) {
        directory.write(".ntl.cfg", text);
        try {
            readProject(directory.path(".ntl.cfg"));
        } catch (const HEXDataException& error) {
            const std::string what = error.what();
            return what.substr(what.find(".ntl.cfg") + 8);
        }
        return {};
    }
};

} // namespace

TEST_F(ProjectTest, WhatIsWrongIsSaidWithItsLine) {
    const std::pair<std::string, std::string> cases[] = {
        {"rule = { };", ":1: unknown key 'rule'; did you mean rules?"},
        {"\nzzz = 1;", ":2: unknown key 'zzz'; there are architectures, budget, cells, exceptions, include, parents, "
                       "rules"},
        {"rules = [ ];", ":1: 'rules' is not a group; write { ... }"},
        {"rules = {\n of = [ ]; };", ":2: unknown key 'of'; did you mean off?"},
        {"rules = { off = \"no-group\"; };", ":1: 'off' is no list of texts; write [ \"...\" ]"},
        {"rules = { off = [\n \"no-group\",\n \"no-grup\" ]; };", ":3: no code 'no-grup'; did you mean no-group?"},
        {"rules = { only = ( 1 ); };", ":1: 'only' is no text; write it in quotes"},
        {"rules = { severity = { no-group = \"of\"; }; };",
         ":1: 'of' is no severity; write error, warning, note or off"},
        {"rules = { severity = { pin-redefined = \"note\"; }; };",
         ":1: 'pin-redefined' is an error of the text, which is always said and always an error"},
        {"exceptions = { };", ":1: 'exceptions' is no list; write ( { path = \"...\"; off = [ ... ]; } )"},
        {"exceptions = (\n { path = \"a\"; } );",
         ":2: an exception without 'path' or 'off'; write { path = \"...\"; off = [ ... ]; }"},
        {"exceptions = ( { path = \"a\"; off = [ \"syntax-error\" ]; } );",
         ":1: 'syntax-error' is an error of the text, which is always said and always an error"},
        {"budget = -1;", ":1: 'budget' is no number from 0 to 1000000"},
        {"budget = 1.5;", ":1: 'budget' is no number from 0 to 1000000"},
        {"cells = [ 1 ];", ":1: 'cells' is no text; write it in quotes"},
        {"include = [ \"a\"\n", ":2: syntax error; mend it here or just before"},
        {"\n  @include \"/etc\"\n", ":2: @include is not allowed here; write its text instead"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(refusal(text), expected) << text;
    directory.makeDir("folder/.ntl.cfg");
    EXPECT_THROW(readProject(directory.path("folder/.ntl.cfg")), HEXDataException);
}

TEST_F(ProjectTest, PathsAreThoseOfItsFolder) {
    directory.write(".ntl.cfg",
                    "parents = [ \"common\", \"a/base.btl\" ]; include = ( \"../b\", \"/c\" ); cells = [ ];\n"
                    "budget = 7; architectures = [ \"meadow\" ];");
    const Project project = readProject(directory.path(".ntl.cfg"));
    const std::string above = std::filesystem::path(directory.path("x")).parent_path().parent_path().string();
    EXPECT_EQ(project.parents, (std::vector<std::string>{"common", directory.path("a/base.btl")}));
    EXPECT_EQ(project.searchDirectories, (std::vector<std::string>{above + "/b", "/c"}));
    EXPECT_TRUE(project.cellTables.empty());
    EXPECT_EQ(project.budget, 7U);
    EXPECT_EQ(project.architectures, std::vector<std::string>{"meadow"});
}

TEST_F(ProjectTest, TheNearestOneIsFound) {
    directory.makeDir("a/b/c");
    directory.write("a/.ntl.cfg", "");
    directory.write("a/b/c/.ntl.cfg", "");
    const auto found = [&](const std::string& path) { return hdnt::author::findProject(path); };
    EXPECT_EQ(found(directory.path("a/b/x.btl")), directory.path("a/.ntl.cfg"));
    EXPECT_EQ(found(directory.path("a/b/c")), directory.path("a/b/c/.ntl.cfg"));
    EXPECT_EQ(found(directory.path("a/b/c/missing/x.btl")), directory.path("a/b/c/.ntl.cfg"));
    std::filesystem::current_path(directory.path("a/b"));
    EXPECT_EQ(found("x.btl"), directory.path("a/.ntl.cfg"));
    EXPECT_EQ(found("c/x.btl"), "c/.ntl.cfg");
    EXPECT_EQ(found("../.."), found(directory.path("")));
}
