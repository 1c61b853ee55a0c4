#include "hdnt/platform/HCTMutex.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/HSTUniqString.h"
#include "hdnt/platform/HUTConvert.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/HUTMemWatcher.h"
#include "hdnt/platform/TextHash.internal.h"
#include "tests/platform/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <thread>
#include <vector>

namespace {

using hdnt::platform::caselessHash;
using hdnt::platform::equalCaseless;
using hdnt::platform::equalTexts;
using hdnt::platform::textHash;

TEST(HUTConvert, FitsDigitsToTheWidth) {
    struct Case {
        void (*convert)(const std::string&, std::string&, int);
        const char* digits;
        int width;
        const char* expected;
    };
    const Case cases[] = {
        {HUTConvert::hexToHex, "ff", 8, "FF"},
        {HUTConvert::hexToHex, "000a", 12, "00A"},
        {HUTConvert::hexToHex, "12345", 8, "45"},
        {HUTConvert::hexToHex, "F", 1, "F"},
        {HUTConvert::hexToHex, "0", 5, "00"},
        {HUTConvert::hexToHex, "", 8, ""},
        {HUTConvert::hexToHex, "0xg", 8, "0xg"},
        {HUTConvert::hexToHex, "00a0", 0, "A0"},
        {HUTConvert::hexToHex, "000", -3, "0"},
        {HUTConvert::binaryToHex, "101", 3, "5"},
        {HUTConvert::binaryToHex, "11010", 5, "1A"},
        {HUTConvert::binaryToHex, "1", 16, "0001"},
        {HUTConvert::binaryToHex, "1111000010", 8, "C2"},
        {HUTConvert::binaryToHex, "12", 8, "12"},
        {HUTConvert::hexToBinary, "a", 4, "1010"},
        {HUTConvert::hexToBinary, "0F", 6, "001111"},
        {HUTConvert::hexToBinary, "ff", 3, "111"},
        {HUTConvert::hexToBinary, "1", 0, "1"},
        {HUTConvert::binaryToBinary, "0011", 2, "11"},
        {HUTConvert::binaryToBinary, "1", 4, "0001"},
        {HUTConvert::binaryToBinary, "2", 4, "2"},
        {HUTConvert::hexToBinary, "1_0", 4, "1_0"},
    };
    for (const Case& c : cases) {
        std::string text = c.digits;
        c.convert(text, text, c.width);
        EXPECT_EQ(text, c.expected) << c.digits << " to " << c.width;
    }
}

TEST(HSTStringUtils, FoldsAsciiOnly) {
    std::string text = "a\xe4z_\x7b`@[";
    EXPECT_EQ(HSTStringUtils::to_upper_copy(text), "A\xe4Z_\x7b`@[");
    EXPECT_EQ(HSTStringUtils::to_lower_copy("A\xc4Zm_@[9"), "a\xc4zm_@[9");
    HSTStringUtils::to_upper(text);
    EXPECT_EQ(text, "A\xe4Z_\x7b`@[");
    EXPECT_TRUE(HSTStringUtils::istarts_with("Cell_A", "cELL"));
    EXPECT_TRUE(HSTStringUtils::istarts_with("x", ""));
    EXPECT_FALSE(HSTStringUtils::istarts_with("cel", "cell"));
    using namespace std::string_view_literals;
    EXPECT_EQ(HSTStrUtils::compareCI("aBc", "AbC"), 0);
    EXPECT_NE(HSTStrUtils::compareCI("a\0b"sv, "a\0c"sv), 0);
    EXPECT_LT(HSTStrUtils::compareCI("ab", "ABC"), 0);
    EXPECT_GT(HSTStrUtils::compareCI("\xff", "z"), 0);
    EXPECT_LT(HSTStrUtils::compareCI("_", "A"), 0);
}

// Tables of names rest on these; every length meets another way through eight bytes at a time.
TEST(TextHash, FoldsWhatUpperCaseFolds) {
    std::string text;
    for (size_t length = 0; length < 40; ++length, text += static_cast<char>('a' + length % 26)) {
        for (size_t at = 0; at <= length && at < text.size(); ++at) {
            for (int c = 0; c < 256; ++c) {
                std::string other = text;
                other[at] = static_cast<char>(c);
                const bool same = HSTStringUtils::to_upper_copy(text) == HSTStringUtils::to_upper_copy(other);
                EXPECT_EQ(equalCaseless(text, other), same) << text << ' ' << at << ' ' << c;
                EXPECT_EQ(caselessHash(text) == caselessHash(other), same) << text << ' ' << at << ' ' << c;
                EXPECT_EQ(textHash(text) == textHash(other), text == other) << text << ' ' << at << ' ' << c;
            }
        }
        EXPECT_FALSE(equalCaseless(text, text + 'x'));
        EXPECT_NE(caselessHash(text), caselessHash(text + '\0'));
    }
}

TEST(HSTUniqString, SharesOneCopyUntilTheLastHandleGoes) {
    const std::size_t before = HSTUniqString::numTexts();
    {
        HSTUniqString a("some text"), b(std::string("some ") + "text"), c = a;
        EXPECT_EQ(a, b);
        EXPECT_EQ(&a.str(), &c.str());
        EXPECT_FALSE(a == HSTUniqString("other"));
        a = HSTUniqString("changed");
        b = b = std::move(c);
        EXPECT_EQ(b, "some text");
        EXPECT_TRUE(c.empty());
        EXPECT_FALSE(HSTUniqString(std::string_view("x\0y", 3)) == HSTUniqString("x"));
    }
    EXPECT_EQ(HSTUniqString::numTexts(), before);
    EXPECT_EQ(HSTUniqString(""), HSTUniqString(static_cast<const char*>(nullptr)));
    EXPECT_EQ(HSTUniqString().str(), "");
    const char* kept = HSTUniqString::internCString("kept");
    EXPECT_EQ(HSTUniqString::internCString(std::string("kept")), kept);
    EXPECT_STREQ(kept, "kept");
    EXPECT_STREQ(HSTUniqString::internCString(""), "");
}

// Texts come and go in any order, and those that stay are found.
TEST(HSTUniqString, FindsWhatIsLeftOfManyTexts) {
    constexpr std::size_t count = 50000;
    const std::size_t before = HSTUniqString::numTexts();
    const auto text = [](std::size_t i) { return std::string(i % 40, 'x') + std::to_string(i); };
    std::vector<HSTUniqString> handles(count);
    for (std::size_t step = 0; step < 4 * count; ++step) {
        const std::size_t i = step * 7919 % count;
        const bool keep = step < count || step % 3 == 0;
        handles[i] = keep ? HSTUniqString(text(i)) : HSTUniqString();
    }
    const auto held = [&] {
        return static_cast<std::size_t>(std::ranges::count(handles, false, &HSTUniqString::empty));
    };
    EXPECT_GT(held(), count / 10);
    EXPECT_EQ(HSTUniqString::numTexts(), before + held());
    for (std::size_t i = 0; i < count; ++i) {
        const HSTUniqString again(text(i));
        EXPECT_TRUE(handles[i].empty() || handles[i] == again) << text(i);
        EXPECT_EQ(again.str(), text(i));
    }
    EXPECT_EQ(HSTUniqString::numTexts(), before + held());
}

TEST(TextHash, IsThatOfTheTextAlone) {
    const std::string text = "A_name\xff of many letters";
    for (std::size_t at = 0; at < 8; ++at) {
        for (std::size_t size = 0; at + std::max<std::size_t>(size, 8) <= text.size(); ++size) {
            const std::string_view part = std::string_view(text).substr(at, size);
            const std::string alone(part);
            EXPECT_EQ(textHash(part), textHash(alone));
            EXPECT_TRUE(equalTexts(part, alone));
            for (std::size_t i = 0; i < size; ++i) {
                std::string other = alone;
                other[i] = static_cast<char>(other[i] ^ 0x20);
                EXPECT_FALSE(equalTexts(part, other)) << other;
                EXPECT_NE(textHash(part), textHash(other)) << other;
            }
        }
    }
}

TEST(HSTUniqString, SurvivesThreadsThatMakeAndDropTheSameTexts) {
    const HSTUniqString shared("shared by all");
    const std::size_t textsBefore = HSTUniqString::numTexts();
    const auto work = [&shared](unsigned seed) {
        for (unsigned i = 0; i < 20000; ++i) {
            const std::string text = "t" + std::to_string((i * 31 + seed) % 7);
            const HSTUniqString made(text), copied = made, again(text), other = shared;
            if (made.str() != text || !(again == copied) || !(other == shared)) return false;
        }
        return true;
    };
    std::vector<char> good(4);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < good.size(); ++t) threads.emplace_back([&, t] { good[t] = work(t); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(good, std::vector<char>(4, 1));
    EXPECT_EQ(HSTUniqString::numTexts(), textsBefore);
}

TEST(HCTMutex, ReportsMisuseWithItsCode) {
    static HCTMutex mutex;
    const auto codeOf = [](auto&& action) {
        try {
            action();
        } catch (const HCTThreadException& e) {
            EXPECT_NE(std::string(e.what()), "");
            return e.getCode();
        }
        return 0;
    };
#ifndef __SANITIZE_THREAD__ // which reports the misuse itself
    EXPECT_EQ(codeOf([] { mutex.unlock(); }), EPERM);
#endif
    HCTLock held(mutex);
    EXPECT_FALSE(mutex.try_lock());
    EXPECT_EQ(codeOf([] { mutex.lock(); }), EDEADLK);
    int seen = 0;
    std::thread waiting([&] {
        const HCTLock lock(mutex);
        seen = 1;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(seen, 0);
    held.unlock();
    held.unlock();
    waiting.join();
    EXPECT_EQ(seen, 1);
    EXPECT_STREQ(HEXDataException("exactly this").what(), "exactly this");
}

TEST(HPAParamMgr, AsksTheHostThenTheEnvironment) {
    HPAParamMgr* const params = HPAParamMgr::getParamMgr();
    const char* name = "ntl.enableMapLib";
    EXPECT_FALSE(params->getValueAsBool(name));
    struct {
        const char* value;
        bool expected;
    } const cases[] = {{"1", true},  {"TRUE", true}, {"On", true},   {"yes", true},
                       {"0", false}, {"", false},    {"yess", false}};
    for (const auto& c : cases) {
        setenv("HDNT_PARAM_ntl_enableMapLib", c.value, 1);
        EXPECT_EQ(params->getValueAsBool(name), c.expected) << c.value;
    }
    params->setValueAsBool(name, true);
    EXPECT_TRUE(params->getValueAsBool(name));
    setenv("HDNT_PARAM_ntl_enableMapLib", "1", 1);
    params->setValueAsBool(name, false);
    EXPECT_FALSE(params->getValueAsBool(name));
    params->unset(name);
    EXPECT_TRUE(params->getValueAsBool(name));
}

TEST(HUTFile, ListsEntriesInNameOrder) {
    TempDir dir;
    for (const char* name : {"b.btl", "a.txt", "B.btl", "a-b.btl", "\xc3\xa9.btl", ".hidden"}) dir.write(name, "");
    dir.makeDir("sub");
    for (const std::string& given : {dir.path(), dir.path() + "/"}) {
        const std::unique_ptr<HUTFileIter> iter(HUTFile(given).createFileIter());
        EXPECT_THROW(iter->current(), HEXAlgException);
        std::vector<std::string> names;
        while (iter->hasNext()) {
            iter->next();
            ASSERT_TRUE(HUTFile(iter->current()).exists());
            names.push_back(iter->current().substr(dir.path().size()));
        }
        EXPECT_THROW(iter->next(), HEXAlgException);
        EXPECT_EQ(names, (std::vector<std::string>{"/.hidden", "/B.btl", "/a-b.btl", "/a.txt", "/b.btl", "/sub",
                                                   "/\xc3\xa9.btl"}));
    }
    EXPECT_TRUE(HUTFile(dir.path("sub")).isDir());
    EXPECT_FALSE(HUTFile(dir.path("a.txt")).isDir() || HUTFile(dir.path("none")).exists() || HUTFile("").exists());
    EXPECT_THROW(HUTFile(dir.path("none")).createFileIter(), HEXDataException);
    EXPECT_THROW(HUTFile(dir.path("a.txt")).createFileIter(), HEXDataException);
    EXPECT_EQ(HUTPathUtils::replaceExtension("/m/CELL.x", "btl"), "/m/CELL.btl");
    EXPECT_EQ(HUTPathUtils::replaceExtension("/m.d/CELL", "btl"), "/m.d/CELL.btl");
}

TEST(HUTMemWatcher, SpeaksOnlyWhenAsked) {
    const auto outputOf = [] {
        testing::internal::CaptureStderr();
        { const HUTMemWatcher watcher("Load", "file"); }
        return testing::internal::GetCapturedStderr();
    };
    unsetenv("HDNT_MEMWATCH");
    EXPECT_EQ(outputOf(), "");
    setenv("HDNT_MEMWATCH", "", 1);
    EXPECT_EQ(outputOf().rfind("Load (file): ", 0), 0U);
}

} // namespace
