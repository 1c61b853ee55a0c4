#include "hdnt/platform/InputFile.h"

#include "hdnt/platform/filtering_stream.h"
#include "tests/platform/TempDir.h"

#include <bzlib.h>
#include <gtest/gtest.h>
#include <lzma.h>
#include <sys/resource.h>
#include <zlib.h>
#include <zstd.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using hdnt::platform::InputLimits;
using hdnt::platform::readInput;

std::string gzip(const std::string& text) {
    std::string out(text.size() / 100 + text.size() + 1000, '\0');
    z_stream s{};
    deflateInit2(&s, 9, Z_DEFLATED, 16 + MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    s.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    s.avail_in = static_cast<uInt>(text.size());
    s.next_out = reinterpret_cast<Bytef*>(out.data());
    s.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&s, Z_FINISH), Z_STREAM_END);
    out.resize(s.total_out);
    deflateEnd(&s);
    return out;
}

std::string bzip2(const std::string& text) {
    std::string out(text.size() / 100 + text.size() + 1000, '\0');
    auto size = static_cast<unsigned>(out.size());
    EXPECT_EQ(BZ2_bzBuffToBuffCompress(out.data(), &size, const_cast<char*>(text.data()),
                                       static_cast<unsigned>(text.size()), 9, 0, 0),
              BZ_OK);
    out.resize(size);
    return out;
}

std::string xz(const std::string& text) {
    std::string out(lzma_stream_buffer_bound(text.size()), '\0');
    std::size_t size = 0;
    EXPECT_EQ(lzma_easy_buffer_encode(6, LZMA_CHECK_CRC64, nullptr, reinterpret_cast<const uint8_t*>(text.data()),
                                      text.size(), reinterpret_cast<uint8_t*>(out.data()), &size, out.size()),
              LZMA_OK);
    out.resize(size);
    return out;
}

std::string zstd(const std::string& text) {
    std::string out(ZSTD_compressBound(text.size()), '\0');
    ZSTD_CCtx* c = ZSTD_createCCtx();
    ZSTD_CCtx_setParameter(c, ZSTD_c_checksumFlag, 1);
    out.resize(ZSTD_compress2(c, out.data(), out.size(), text.data(), text.size()));
    ZSTD_freeCCtx(c);
    return out;
}

struct Kind {
    const char* name;
    std::function<std::string(const std::string&)> pack;
    std::size_t trailer;  ///< bytes at the end that check the text
    std::size_t textLike; ///< cuts of so few bytes are indistinguishable from a text
};

const std::vector<Kind> Kinds = {{"gzip", gzip, 8, 0}, {"bzip2", bzip2, 0, 9}, {"xz", xz, 12, 0}, {"zstd", zstd, 4, 1}};

std::string sample(int lines) {
    std::string text;
    for (int i = 0; i < lines; ++i) text += "property int P" + std::to_string(i * 7919 % 1000) + ";\n";
    return text + std::string("\0end", 4);
}

class InputFile : public testing::Test {
protected:
    bool read(const std::string& bytes) {
        why.clear();
        return readInput(dir.write("input", bytes), limits, out, why);
    }
    TempDir dir;
    InputLimits limits;
    std::string out, why;
};

TEST_F(InputFile, GivesTheTextOfEveryStoredForm) {
    const std::string text = sample(40000); // several chunks
    ASSERT_TRUE(read(text));
    EXPECT_EQ(out, text);
    for (const Kind& kind : Kinds) {
        const std::string half = sample(30);
        for (const std::string& archive : {kind.pack(text), kind.pack(half) + kind.pack("") + kind.pack(text)}) {
            ASSERT_TRUE(read(archive)) << kind.name << ": " << why;
            EXPECT_TRUE(out == text || out == half + text) << kind.name;
        }
        ASSERT_TRUE(read(kind.pack(""))) << kind.name;
        EXPECT_EQ(out, "");
    }
    for (const char* plain : {"", "B", "BZ", "(", "x", "block"}) {
        ASSERT_TRUE(read(plain));
        EXPECT_EQ(out, plain);
    }
}

TEST_F(InputFile, RefusesEveryCut) {
    for (const Kind& kind : Kinds) {
        const std::string first = kind.pack(sample(20)), second = kind.pack("another member\n");
        for (std::size_t n = 1; n < first.size(); ++n)
            EXPECT_EQ(read(first.substr(0, n)), n <= kind.textLike) << kind.name << " cut at " << n;
        for (std::size_t n = 1; n < second.size(); ++n)
            EXPECT_FALSE(read(first + second.substr(0, n))) << kind.name << " second member cut at " << n;
        EXPECT_EQ(out, "");
        EXPECT_NE(why, "");
    }
}

TEST_F(InputFile, RefusesDamageAndTrailingBytes) {
    const std::string text = sample(20);
    for (const Kind& kind : Kinds) {
        const std::string archive = kind.pack(text);
        for (const std::string& tail :
             {std::string("\n"), std::string(4, '\0'), Kinds[0].pack("") + "x", std::string("trailing")})
            EXPECT_FALSE(read(archive + tail)) << kind.name;
        EXPECT_EQ(why, "bytes after the end of the archive");
        for (std::size_t i = 0; i < archive.size(); ++i) {
            std::string damaged = archive;
            damaged[i] = static_cast<char>(damaged[i] ^ 1);
            const bool good = read(damaged);
            // A bit without meaning may flip (padding, a time stamp), and a damaged magic number makes a plain text;
            // but no other text may come out as if it were whole.
            EXPECT_TRUE(!good || out == text || out == damaged) << kind.name << " byte " << i;
            EXPECT_FALSE(good && i >= archive.size() - kind.trailer) << kind.name << " byte " << i;
        }
    }
    std::string wrongSum = bzip2(text);
    wrongSum[10] = static_cast<char>(wrongSum[10] ^ 1); // the block's checksum follows its magic number
    EXPECT_FALSE(read(wrongSum));
    EXPECT_FALSE(read(gzip(text) + zstd(text)));
}

TEST_F(InputFile, ReadsZstdSkippableFrames) {
    const std::string skip("\x50\x2a\x4d\x18\x03\0\0\0abc", 11);
    ASSERT_TRUE(read(skip + zstd("text") + skip));
    EXPECT_EQ(out, "text");
    EXPECT_FALSE(read(zstd("text") + skip.substr(0, 9)));
}

// Whole headers decide, not the few letters at their front that a text may have too.
TEST_F(InputFile, TellsTextsFromArchives) {
    using namespace std::string_literals;
    const std::string texts[] = {"BZhOne(1);"s,
                                 "BZh9"s,
                                 "BZh91AY&S"s,
                                 "BZh91AY&SX, and so on"s,
                                 "BZh01AY&SY"s,
                                 "BZh:1AY&SY"s,
                                 "BZh9\x17rE8P\x91"s,
                                 "BZh\n"s,
                                 "P*M"s,
                                 "P*M;"s,
                                 "_*M\x19"s,
                                 "\xfd"
                                 "7zXY\0"s,
                                 "(\xb5/\xfc"s};
    for (const std::string& text : texts) {
        EXPECT_TRUE(read(text)) << text << ": " << why;
        EXPECT_EQ(out, text);
    }
    const std::string broken[] = {"BZh91AY&SY"s,
                                  "BZh11AY&SY, and so on"s,
                                  "BZh9\x17"s,
                                  "BZh9\x17rE8P\x90"s,
                                  "P*M\x18"s,
                                  "_*M\x18\xff\xff\xff\xff"s,
                                  "\x1f\x8b\x07\0"s,
                                  "\x1f\x8b\x08\x80 text"s,
                                  "\x1f\x8b\x08"s,
                                  "\x1f\x8b\x08\x1f"s,
                                  "\x1f\x8b\x08\0, and so on"s,
                                  "\xfd"
                                  "7z"s,
                                  "(\xb5/\xfd, and so on"s};
    for (const std::string& archive : broken) EXPECT_FALSE(read(archive)) << archive;
}

TEST_F(InputFile, NamesWhatCannotBeOpened) {
    EXPECT_FALSE(readInput(dir.path("missing"), limits, out, why));
    EXPECT_EQ(why, "No such file or directory");
    EXPECT_FALSE(readInput(dir.path(), limits, out, why));
    EXPECT_EQ(why, "Is a directory");
}

TEST_F(InputFile, HoldsItsLimits) {
    const std::string zeros(1000, '0');
    struct Case {
        InputLimits limits;
        bool plain, packed;
    };
    const Case cases[] = {{{1000, 200, 1 << 20}, true, true},
                          {{999, 200, 1 << 20}, false, false},
                          {{5000, 1, 1000}, true, true},
                          {{5000, 1, 999}, true, false}};
    for (const Case& c : cases) {
        limits = c.limits;
        EXPECT_EQ(read(zeros), c.plain) << why;
        for (const Kind& kind : Kinds) EXPECT_EQ(read(kind.pack(zeros)), c.packed) << kind.name << ": " << why;
    }
    std::string text(1000, '0'); // of a length that is a whole multiple of its archive's
    while (text.size() % gzip(text).size() != 0) text += '0';
    const auto ratio = static_cast<unsigned>(text.size() / gzip(text).size());
    limits = {1 << 20, ratio, 0};
    EXPECT_TRUE(read(gzip(text))) << why;
    limits.maxRatio = ratio - 1;
    EXPECT_FALSE(read(gzip(text)));
}

TEST_F(InputFile, StopsWhileExpanding) {
    const std::string part = gzip(std::string(std::size_t{32} << 20, '\0'));
    std::string bomb;
    for (int i = 0; i < 64; ++i) bomb += part; // 2 GiB
    limits = {std::size_t{4} << 30, 20, 1 << 20};
    EXPECT_FALSE(read(bomb));
    EXPECT_NE(why.find("20 times its size"), std::string::npos) << why;
    limits.maxRatio = 100000;
    limits.maxBytes = std::size_t{48} << 20;
    EXPECT_FALSE(read(bomb));
    EXPECT_NE(why.find("50331648 bytes"), std::string::npos) << why;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, 700 * 1024) << "KiB";
}

TEST_F(InputFile, EndlessDeviceMeetsTheLimit) {
    limits.maxBytes = 1 << 20;
    EXPECT_FALSE(readInput("/dev/zero", limits, out, why));
}

TEST_F(InputFile, StreamsSeekAndReport) {
    obr::iostreams::filtering_stream in(dir.write("a", bzip2("one\ntwo")), obr::iostreams::xp_autodetect);
    in.seekg(0, std::ios::end);
    EXPECT_EQ(in.tellg(), 7);
    in.seekg(0);
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "one");
    EXPECT_EQ(in.text(), "one\ntwo");
    EXPECT_FALSE(in.open(dir.path("missing"), obr::iostreams::xp_autodetect));
    EXPECT_TRUE(in.fail());
    EXPECT_EQ(in.reason(), "No such file or directory");
    EXPECT_TRUE(in.open(dir.write("b", ""), obr::iostreams::xp_autodetect));
    EXPECT_TRUE(in.good());
    EXPECT_EQ(in.reason(), "");
}

} // namespace
