// What the comparison with the oracle cannot say: the interface around the tokens.
#include "hdnt/frontend/Scanner.h"

#include "tests/platform/TempDir.h"
#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>
#include <thread>

static std::vector<int> tokensOf(const std::string& text) {
    yy_scan_bytes(text.data(), static_cast<int>(text.size()));
    NtlInitScanner();
    std::vector<int> tokens;
    while (const int token = HDNTParserlex()) {
        tokens.push_back(token);
        if (token == T_StringConstant || token == T_HexConstant || token == T_BinaryConstant)
            delete HDNTParserlval.text;
    }
    yylex_destroy();
    return tokens;
}

TEST(Scanner, LongestMatchAndPriorities) {
    support::Reports reports;
    const struct {
        std::string text;
        std::vector<int> tokens;
    } cases[] = {
        {"Block BLOCK block", {T_Identifier, T_Identifier, T_Block}},
        {"aproperty propert constraintsonly xonstraintsOnly constraintsOnly",
         {T_Identifier, T_Identifier, T_Identifier, T_Identifier, T_ConstraintsOnly}},
        {"12'h 4'b102", {T_HexConstant, T_BinaryConstant, T_IntConstant}},
        {"1.5e-3", {T_DoubleConstant, T_Identifier, T_IntConstant}},
        {"a-1 - 2", {T_Identifier, T_IntConstant, '-', T_IntConstant}},
        {"\"a\\\"b", {T_StringConstant, T_Identifier}},
        {"a<=b>=c==d!=e&&f||g",
         {T_Identifier, T_LessEqual, T_Identifier, T_GreaterEqual, T_Identifier, T_EqualTo, T_Identifier, T_NotEqual,
          T_Identifier, T_AndAnd, T_Identifier, T_OrOr, T_Identifier}},
        {"a // b\n/* c \n * d */ true", {T_Identifier, T_BoolConstant}},
        {std::string("\"x\0y\"", 5), {T_StringConstant}},
        {"", {}},
    };
    for (const auto& [text, tokens] : cases) EXPECT_EQ(tokensOf(text), tokens) << text;
    EXPECT_EQ(reports.take(), support::Texts{});
    tokensOf("!|~\r");
    EXPECT_EQ(reports.take().size(), 4U);
}

TEST(Scanner, NumbersSaturateLikeStrtol) {
    const struct {
        const char* text;
        int value;
    } cases[] = {{"2147483647", 2147483647},   {"2147483648", -2147483647 - 1}, {"4294967297", 1},
                 {"99999999999999999999", -1}, {"-99999999999999999999", 0},    {"-12", -12}};
    for (const auto& [text, value] : cases) {
        yy_scan_string(text);
        NtlInitScanner();
        EXPECT_EQ(HDNTParserlex(), T_IntConstant);
        EXPECT_EQ(HDNTParserlval.intValue, value) << text;
        EXPECT_EQ(yyget_text(), std::string(text));
        yylex_destroy();
    }
}

TEST(Scanner, TabStops) {
    yy_scan_string("\ta\n       \ta\n        \ta");
    NtlInitScanner();
    for (const int column : {9, 17, 17}) {
        EXPECT_EQ(HDNTParserlex(), T_Identifier);
        EXPECT_EQ(HDNTParserlloc.first_column, column);
    }
    yylex_destroy();
}

TEST(Scanner, IdentifiersAreCutAt31) {
    support::Reports reports;
    for (const size_t length : {31U, 32U}) {
        yy_scan_string(std::string(length, 'x').c_str());
        NtlInitScanner();
        EXPECT_EQ(HDNTParserlex(), T_Identifier);
        EXPECT_EQ(HDNTParserlval.identifier, std::string(31, 'x'));
        yylex_destroy();
    }
    EXPECT_EQ(reports.texts, support::Texts{"1:1-32 Identifier too long: \"" + std::string(32, 'x') + "\""});
}

TEST(Scanner, StreamsMayBeSetBeforeOrAfterInit) {
    for (const bool before : {true, false}) {
        std::istringstream stream("block 1");
        if (before) yyset_in(&stream);
        NtlInitScanner();
        if (!before) yyset_in(&stream);
        EXPECT_EQ(HDNTParserlex(), T_Block);
        EXPECT_EQ(HDNTParserlex(), T_IntConstant);
        EXPECT_EQ(HDNTParserlex(), 0);
        std::istringstream next("pin");
        yyrestart(&next);
        EXPECT_EQ(HDNTParserlex(), T_Pin);
        yylex_destroy();
    }
}

// The trace is on when a host or the environment says so at the start of a scan, and changes no token.
TEST(Scanner, TraceIsASwitch) {
    for (const bool inEnvironment : {true, false}) {
        inEnvironment ? setenv("NTL_DEBUG", "1", 1) : unsetenv("NTL_DEBUG");
        yy_scan_string("block 7");
        NtlInitScanner();
        EXPECT_EQ(yyget_debug(), inEnvironment ? 1 : 0);
        yyset_debug(inEnvironment ? 0 : 2);
        EXPECT_EQ(yyget_debug(), inEnvironment ? 0 : 1);
        EXPECT_EQ(HDNTParserlex(), T_Block);
        EXPECT_EQ(HDNTParserlex(), T_IntConstant);
        yylex_destroy();
    }
}

TEST(Scanner, BuffersStack) {
    YY_BUFFER_STATE const outer = yy_scan_string("block pin");
    NtlInitScanner();
    EXPECT_EQ(HDNTParserlex(), T_Block);
    std::istringstream stream("library");
    yypush_buffer_state(yy_create_buffer(&stream, 16384));
    EXPECT_EQ(HDNTParserlex(), T_Library);
    EXPECT_EQ(HDNTParserlloc.first_column, 6);
    yypop_buffer_state();
    EXPECT_EQ(HDNTParserlex(), T_Pin);
    EXPECT_EQ(HDNTParserlloc.first_column, 14);
    yy_delete_buffer(outer);
    std::istringstream instead("primgroup");
    yypush_buffer_state(yy_create_buffer(&instead, 16384));
    EXPECT_EQ(HDNTParserlex(), T_PrimGroup);
    yypop_buffer_state();
    char text[] = "end\0"; // and the terminator
    EXPECT_EQ(yy_scan_buffer(text, 4), nullptr);
    ASSERT_NE(yy_scan_buffer(text, 5), nullptr);
    EXPECT_EQ(HDNTParserlex(), T_End);
    yylex_destroy();
}

TEST(Scanner, BuffersAreSwitchedAndFlushed) {
    YY_BUFFER_STATE const first = yy_scan_string("block pin");
    NtlInitScanner();
    EXPECT_EQ(HDNTParserlex(), T_Block);
    std::istringstream stream("library end");
    YY_BUFFER_STATE const second = yy_create_buffer(&stream, 16384);
    yy_switch_to_buffer(second);
    EXPECT_EQ(HDNTParserlex(), T_Library);
    yy_switch_to_buffer(first);
    EXPECT_EQ(HDNTParserlex(), T_Pin);
    yy_switch_to_buffer(second);
    yy_flush_buffer(second);
    yy_flush_buffer(nullptr);
    EXPECT_EQ(HDNTParserlex(), 0);
    std::istringstream next("int");
    yyset_in(&next); // goes on in a buffer that is at its end
    EXPECT_EQ(yyget_in(), &next);
    EXPECT_EQ(HDNTParserlex(), T_Int);
    yyset_lineno(41);
    EXPECT_EQ(yyget_lineno(), 41);
    yyset_out(stderr);
    EXPECT_EQ(yyget_out(), stderr);
    void* const block = yyrealloc(yyalloc(1), 100);
    EXPECT_NE(block, nullptr);
    yyfree(block);
    yylex_destroy();
    EXPECT_EQ(yyget_out(), stdout);
    yy_delete_buffer(first);
}

struct BadBuffer : std::streambuf {
    int underflow() override { throw std::runtime_error("disk"); }
};

TEST(ScannerDeathTest, AStreamThatTurnsBadEndsTheProcess) {
    BadBuffer buffer;
    std::istream stream(&buffer);
    yyset_in(&stream);
    NtlInitScanner();
    EXPECT_EXIT(HDNTParserlex(), testing::ExitedWithCode(2), "^input in flex scanner failed\n$");
}

// The classic mistakes around INCLUDE, with what is printed, noticed and quoted afterwards.
TEST(Include, SplicesSkipsAndReports) {
    support::Reports reports;
    const TempDir dir;
    dir.write("inner", "pin");
    dir.write("broken.gz", "\x1f\x8b");
    NtlAddSearchDirectory(dir.path());
    const std::string text =
        "INCLUDE inner ;\nINCLUDE inner;\nINLINE inner; rest\nINCLUDE none;\nINCLUDE broken.gz;\nend";
    yy_scan_string(text.c_str());
    NtlInitScanner();
    std::vector<int> tokens;
    std::vector<int> lines;
    const std::string out = support::printedBy([&] {
                                while (const int token = HDNTParserlex()) {
                                    tokens.push_back(token);
                                    lines.push_back(HDNTParserlloc.fileLine);
                                }
                            }).out;
    EXPECT_EQ(tokens, (std::vector<int>{T_Pin, T_Pin, T_End}));
    EXPECT_EQ(lines, (std::vector<int>{1, 1, 6}));
    EXPECT_EQ(NtlGetLineNumbered(static_cast<unsigned long>(HDNTParserlloc.first_line)), "end");
    const std::string inner = dir.path() + "/inner";
    const std::string broken = dir.path() + "/broken.gz";
    EXPECT_EQ(out, "\t Loading File : " + inner + "\n\t Loading File : " + inner +
                       "\nCould not find INCLUDE file: none . check NTL_PATH\n\t Loading File : " + broken + "\nfile " +
                       broken + " could not be opened\n");
    using Kind = HDNTNotice::Kind;
    EXPECT_EQ(reports.notices, (std::vector<Kind>{Kind::FileOpened, Kind::IncludeSkipped, Kind::IncludeTrailingText,
                                                  Kind::FileOpened, Kind::IncludeNotFound, Kind::IncludeNotOpened}));
    yylex_destroy();
}

TEST(Include, ATextThatBeginsWithTheLettersOfAnArchiveIsRead) {
    const TempDir dir;
    const std::string call = dir.write("call", "BZhOne(1);\n");
    const auto library =
        support::loaded("library \"L\" { function bool BZhOne(int); block \"ADD\" { } mapsto { INLINE " + call +
                        ";\ninst \"U\" \"ADD\"; } }");
    ASSERT_TRUE(library);
    const auto& calls = library->getTypeBlock(0)->getNetlist()->preInstanceCalls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0]->name(), "BZhOne");
}

TEST(Include, FilesOfSomeoneElseAreLimited) {
    const TempDir dir;
    std::filesystem::create_directories(dir.path("own/below"));
    dir.write("outside", "pin");
    dir.write("own/near", "pin pin");
    dir.write("own/below/deep", "INLINE ../near;\npin");
    std::filesystem::create_symlink(dir.path("outside"), dir.path("own/link"));
    const auto own = [](HDNTLimits& limits) { limits.ownFolderOnly = true; };
    const struct {
        std::string name; ///< sought from own/below
        size_t tokens;
        std::string reason;
        std::function<void(HDNTLimits&)> change;
    } cases[] = {
        {"../near", 2, "", [](HDNTLimits&) {}},
        {dir.path("own/near"), 2, "", [](HDNTLimits&) {}},
        {dir.path("own/near"), 0, "an absolute name (limit ownFolderOnly)", own},
        {"../near", 2, "", [](HDNTLimits& limits) { limits.includedBytes = 7; }},
        {"../near", 0, "more than 6 bytes of included files (limit includedBytes)",
         [](HDNTLimits& limits) { limits.includedBytes = 6; }},
        {"deep", 1, "more than 25 bytes of included files (limit includedBytes)",
         [](HDNTLimits& limits) { limits.includedBytes = 25; }},
        {"../near", 2, "", own},
        {"deep", 3, "", own},
        {"../link", 0, "not below the folder of " + dir.path("own/top") + " (limit ownFolderOnly)", own},
        {"../../outside", 0, "not below the folder of " + dir.path("own/top") + " (limit ownFolderOnly)", own},
        {"../near", 2, "", [](HDNTLimits& limits) { limits.seconds = 1; }},
        {"deep", 1, "more than 1 files open at once (limit includeDepth)",
         [](HDNTLimits& limits) { limits.includeDepth = 1; }},
    };
    ntl_parse_top_level_file = strdup(dir.path("own/top").c_str());
    for (const auto& each : cases) {
        struct : HDNTErrorListener {
            void notice(const HDNTNotice& notice) override { reason = notice.detail; }
            std::string reason;
        } listener;
        HDNTErrorListener* const before = HDNTError::setListener(&listener);
        HDNTLimits limits;
        each.change(limits);
        HDNTLimits::set(limits);
        NtlAddSearchDirectory(dir.path("own/below"));
        std::vector<int> tokens;
        support::printedBy([&] { tokens = tokensOf("INLINE " + each.name + ";\n"); });
        HDNTError::setListener(before);
        EXPECT_EQ(tokens.size(), each.tokens) << each.name << each.reason;
        EXPECT_EQ(listener.reason, each.reason) << each.name;
    }
}

TEST(Include, NoneIsOpenedWhenTheTimeIsOver) {
    struct : HDNTErrorListener {
        void notice(const HDNTNotice& notice) override { reason = notice.detail; }
        std::string reason;
    } listener;
    HDNTError::setListener(&listener);
    const TempDir dir;
    HDNTLimits limits;
    limits.seconds = 1;
    HDNTLimits::set(limits);
    const std::string text = "pin\nINLINE " + dir.write("inner", "pin pin") + ";\npin";
    yy_scan_bytes(text.data(), static_cast<int>(text.size()));
    NtlInitScanner();
    EXPECT_EQ(HDNTParserlex(), T_Pin);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    support::printedBy([] { EXPECT_EQ(HDNTParserlex(), T_Pin); });
    EXPECT_EQ(HDNTParserlex(), 0);
    EXPECT_EQ(listener.reason, "more than 1 s have passed (limit seconds)");
    HDNTError::setListener(nullptr);
}

TEST(Include, DepthAndRootFolderAreLimited) {
    support::Reports reports;
    const TempDir dir;
    dir.write("loop", "INLINE " + dir.path() + "/loop;\npin");
    HDNTLimits limits;
    limits.includeDepth = 3;
    const struct {
        std::string root;
        size_t pins;
    } cases[] = {{"", 3}, {dir.path(), 3}, {"/usr", 0}};
    for (const auto& [root, pins] : cases) {
        limits.rootFolder = root;
        HDNTLimits::set(limits);
        std::vector<int> tokens;
        support::printedBy([&, text = "INLINE " + dir.path() + "/loop;\n"] { tokens = tokensOf(text); });
        EXPECT_EQ(tokens.size(), pins) << root;
        EXPECT_EQ(reports.notices.back(), HDNTNotice::Kind::IncludeNotOpened);
        EXPECT_EQ(std::exchange(reports.notices, {}).size(), pins + 1);
    }
}
