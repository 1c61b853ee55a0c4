#include "hdnt/platform/ConfigBase.h"

#include "hdnt/platform/DataDirectory.h"
#include "hdnt/platform/HEX.h"
#include "tests/platform/TempDir.h"

#include <gtest/gtest.h>
#include <libconfig.h++>

#include <filesystem>

namespace {

class Config : public testing::Test {
protected:
    Config() { setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1); }
    std::string failureOf(const std::string& name, const std::string& text) {
        dir.write(name, text);
        try {
            ConfigBase().readFile(name);
        } catch (const HEXDataException& e) {
            return e.what();
        }
        return "";
    }
    TempDir dir;
};

TEST_F(Config, LooksUpPathsAndNeverThrowsForNames) {
    dir.write("app.cfg", "CELL = { INIT = \"text\"; D7 = 3; };\nLIST = ( \"a\", \"b\" );");
    ConfigBase config;
    config.readFile("app.cfg", "");
    const CommonPart::PartSpec part{"alpha", ""};
    std::string text;
    EXPECT_EQ(config.findValidPartPath("CELL.INIT", nullptr), "CELL.INIT");
    EXPECT_EQ(config.findValidPartPath("CELL.INIT", &part), "CELL.INIT");
    EXPECT_TRUE(config.getLibConfig().lookupValue("CELL.INIT", text));
    EXPECT_EQ(text, "text");
    ASSERT_NE(config.lookup("CELL"), nullptr);
    EXPECT_TRUE(config.lookup("CELL")->isGroup());
    using namespace std::string_literals;
    for (const std::string& name : {""s, "."s, "@X"s, "1X"s, "CELL."s, ".CELL"s, "CELL..INIT"s, "CELL:INIT"s,
                                    "CELL/INIT"s, "LIST.[0]"s, "LIST[0]"s, "CELL.D[7]"s, "CELL.INIT.X"s, "LIST.a"s,
                                    "cell"s, "CELL\0.INIT"s, "CELL.INI"s, "CELL INIT"s, std::string(100000, '.')}) {
        EXPECT_EQ(config.lookup(name), nullptr) << name;
        EXPECT_EQ(config.findValidPartPath(name, nullptr), "") << name;
        EXPECT_FALSE(config.exists(name)) << name;
    }
    EXPECT_TRUE(ConfigBase::isValidName("A-b_*9"));
    EXPECT_FALSE(ConfigBase::isValidName("A.B") || ConfigBase::isValidName("_A") || ConfigBase::isValidName(""));
}

// Small groups are searched, large ones indexed; nothing but the time may differ.
TEST_F(Config, FindsMembersOfGroupsOfAnySize) {
    for (const int size : {1, 31, 32, 33, 500}) {
        std::string text = "ALL = {\n";
        for (int i = 0; i < size; ++i) text += "M" + std::to_string(i) + " = { N = " + std::to_string(i) + "; };\n";
        dir.write("app.cfg", text + "};");
        ConfigBase config;
        for (int again = 0; again < 2; ++again) {
            config.readFile("app.cfg");
            for (int i = 0; i < size; ++i) {
                const std::string name = "M" + std::to_string(i);
                const libconfig::Setting* const found = config.find({"ALL", name, "N"});
                ASSERT_NE(found, nullptr) << size << ' ' << name;
                EXPECT_EQ(static_cast<int>(*found), i);
                EXPECT_EQ(config.lookup("ALL." + name + ".N"), found);
            }
            for (const char* name : {"m0", "M", "M00", "M0.N", ""})
                EXPECT_EQ(config.find({"ALL", name}), nullptr) << size << ' ' << name;
        }
    }
}

TEST_F(Config, FindsFilesInOrderAndTakesAMissingOneAsEmpty) {
    TempDir second;
    dir.write("both.cfg", "which = 1;");
    second.write("both.cfg", "which = 2;");
    second.write("second.cfg", "which = 3;");
    setenv("HDNT_CONFIG_PATH", (":/none:" + dir.path() + ":" + second.path()).c_str(), 1);
    const auto which = [](const std::string& name) {
        ConfigBase config;
        config.readFile(name);
        const libconfig::Setting* found = config.lookup("which");
        return found ? static_cast<int>(*found) : 0;
    };
    EXPECT_EQ(which("both.cfg"), 1);
    EXPECT_EQ(which("second.cfg"), 3);
    EXPECT_EQ(which(second.path("both.cfg")), 2);
    EXPECT_EQ(which("missing.cfg"), 0);
    unsetenv("HDNT_CONFIG_PATH");
    EXPECT_EQ(which("both.cfg"), 0);
}

TEST_F(Config, NamesFileAndLineOfWhatIsMalformed) {
    struct {
        const char* text;
        const char* line;
    } const cases[] = {{"a = 1;\nb = ;", ":2: "},
                       {"a = 1;\n\na = 2;", ":3: "},
                       {"@include \"nowhere\"", ":1: "},
                       {"@include \"bad.cfg\"", ":1: "},
                       {"a = 1;\n  @include \"sub\"", "sub: is a directory"}};
    dir.makeDir("sub");
    for (const auto& c : cases) {
        const std::string message = failureOf("bad.cfg", c.text);
        EXPECT_EQ(message.rfind("Invalid configuration file: ", 0), 0U) << c.text;
        EXPECT_NE(message.find(c.line), std::string::npos) << message;
    }
    EXPECT_NE(failureOf("deep.cfg", "a = " + std::string(100000, '(')), "");
    EXPECT_NE(failureOf("nul.cfg", std::string("a = 1;\0b = 2;", 13)), "");
    EXPECT_THROW(ConfigBase().readFile("sub"), HEXDataException);

    ConfigBase config;
    dir.write("good.cfg", "a = 1;");
    config.readFile("good.cfg");
    EXPECT_THROW(config.readFile("bad.cfg"), HEXDataException);
    EXPECT_TRUE(config.exists("a"));
}

TEST_F(Config, FallsBackToTheParentAndStartsInTheSection) {
    dir.write("parent.cfg", "a = 1; b = 2;");
    dir.write("child.cfg", "part = { a = 3; };");
    ConfigBase parent, child(&parent);
    parent.readFile("parent.cfg");
    child.readFile("child.cfg", "part");
    EXPECT_EQ(static_cast<int>(*child.lookup("a")), 3);
    EXPECT_EQ(static_cast<int>(*child.lookup("b")), 2);
    EXPECT_EQ(child.findValidPartPath("a", nullptr), "part.a");
    EXPECT_EQ(child.findValidPartPath("b", nullptr), "");
    EXPECT_EQ(&child.mutex(), &parent.mutex());
}

TEST_F(Config, LocatesData) {
    dir.makeDir("tessels");
    unsetenv("HDNT_DATA_PATH");
    EXPECT_EQ(ConfigBase::getDataLocation("tessels.none"), "");
    setenv("HDNT_DATA_PATH", ("/none:" + dir.path()).c_str(), 1);
    EXPECT_EQ(ConfigBase::getDataLocation("tessels"), dir.path("tessels"));
    EXPECT_EQ(ConfigBase::getDataLocation(""), "");
    const std::filesystem::path share = hdnt::platform::shareDirectory();
    EXPECT_TRUE(share.is_absolute());
    EXPECT_EQ(share, share.lexically_normal());
}

} // namespace
