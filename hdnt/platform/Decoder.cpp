#include "hdnt/platform/Decoder.internal.h"

#include <bzlib.h>
#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <climits>
#include <string>

namespace hdnt::platform {
namespace {

constexpr std::uint64_t XzMemoryLimit = std::uint64_t{256} << 20; // the largest preset takes 65 MiB

constexpr std::string_view GzipMagic("\x1f\x8b", 2); // no text begins with these two
constexpr std::string_view XzMagic("\xfd"
                                   "7zXZ\0",
                                   6);
constexpr std::string_view ZstdMagic("\x28\xb5\x2f\xfd", 4);
constexpr std::string_view ZstdSkippableMagic("\x2a\x4d\x18", 3); // after a byte 0x50 to 0x5f

// zlib and bzip2 count in unsigned int.
unsigned slice(std::size_t size) { return static_cast<unsigned>(std::min<std::size_t>(size, INT_MAX)); }

bool startsWithMagic(std::string_view text, std::string_view magic) {
    if (text.size() >= magic.size()) return text.substr(0, magic.size()) == magic;
    const bool couldBeText = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return !couldBeText && magic.substr(0, text.size()) == text;
}

// The letters at the front of a bzip2 file may begin a text as well; what follows the block size may not.
bool startsLikeBzip2(std::string_view text) {
    const bool sized = text.size() > 3 && text[3] >= '1' && text[3] <= '9';
    const std::string front = std::string("BZh") + (sized ? text[3] : '1');
    return startsWithMagic(text, front + "\x31\x41\x59\x26\x53\x59") || // a block
           startsWithMagic(text, front + "\x17\x72\x45\x38\x50\x90");   // the end of an empty one
}

class GzipDecoder final : public Decoder {
public:
    ~GzipDecoder() override { inflateEnd(&stream_); }
    bool begin() override {
        inflateEnd(&stream_);
        stream_ = {};
        return inflateInit2(&stream_, 16 + MAX_WBITS) == Z_OK; // 16: gzip framing, with CRC and length
    }
    Status step(std::string_view& in, char*& out, char* end) override {
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
        stream_.avail_in = slice(in.size());
        stream_.next_out = reinterpret_cast<Bytef*>(out);
        stream_.avail_out = slice(static_cast<std::size_t>(end - out));
        const int code = inflate(&stream_, Z_NO_FLUSH);
        in.remove_prefix(static_cast<std::size_t>(reinterpret_cast<char*>(stream_.next_in) - in.data()));
        out = reinterpret_cast<char*>(stream_.next_out);
        if (code == Z_STREAM_END) return Status::MemberEnd;
        if (code == Z_MEM_ERROR) return Status::TooMuchMemory;
        return code == Z_OK || code == Z_BUF_ERROR ? Status::More : Status::Damaged;
    }
    bool recognises(std::string_view text) const override { return startsWithMagic(text, GzipMagic); }
    std::size_t saidSize(std::string_view archive) const override { // its last four bytes, the lowest first
        std::size_t size = 0;
        for (std::size_t i = 1; i <= 4 && i < archive.size(); ++i)
            size = size << 8 | static_cast<unsigned char>(archive[archive.size() - i]);
        return size;
    }

private:
    z_stream stream_{};
};

class Bzip2Decoder final : public Decoder {
public:
    ~Bzip2Decoder() override { BZ2_bzDecompressEnd(&stream_); }
    bool begin() override {
        BZ2_bzDecompressEnd(&stream_);
        stream_ = {};
        return BZ2_bzDecompressInit(&stream_, 0, 0) == BZ_OK;
    }
    Status step(std::string_view& in, char*& out, char* end) override {
        stream_.next_in = const_cast<char*>(in.data());
        stream_.avail_in = slice(in.size());
        stream_.next_out = out;
        stream_.avail_out = slice(static_cast<std::size_t>(end - out));
        const int code = BZ2_bzDecompress(&stream_);
        in.remove_prefix(static_cast<std::size_t>(stream_.next_in - in.data()));
        out = stream_.next_out;
        if (code == BZ_STREAM_END) return Status::MemberEnd;
        if (code == BZ_MEM_ERROR) return Status::TooMuchMemory;
        return code == BZ_OK ? Status::More : Status::Damaged;
    }
    bool recognises(std::string_view text) const override { return startsLikeBzip2(text); }

private:
    bz_stream stream_{};
};

class XzDecoder final : public Decoder {
public:
    ~XzDecoder() override { lzma_end(&stream_); }
    bool begin() override {
        return lzma_stream_decoder(&stream_, XzMemoryLimit, LZMA_TELL_UNSUPPORTED_CHECK) == LZMA_OK;
    }
    Status step(std::string_view& in, char*& out, char* end) override {
        stream_.next_in = reinterpret_cast<const std::uint8_t*>(in.data());
        stream_.avail_in = in.size();
        stream_.next_out = reinterpret_cast<std::uint8_t*>(out);
        stream_.avail_out = static_cast<std::size_t>(end - out);
        const lzma_ret code = lzma_code(&stream_, LZMA_RUN);
        in.remove_prefix(in.size() - stream_.avail_in);
        out = reinterpret_cast<char*>(stream_.next_out);
        if (code == LZMA_STREAM_END) return Status::MemberEnd;
        if (code == LZMA_MEM_ERROR || code == LZMA_MEMLIMIT_ERROR) return Status::TooMuchMemory;
        return code == LZMA_OK || code == LZMA_BUF_ERROR ? Status::More : Status::Damaged;
    }
    bool recognises(std::string_view text) const override { return startsWithMagic(text, XzMagic); }

private:
    lzma_stream stream_ = LZMA_STREAM_INIT;
};

class ZstdDecoder final : public Decoder {
public:
    ~ZstdDecoder() override { ZSTD_freeDStream(stream_); }
    bool begin() override {
        if (!stream_) stream_ = ZSTD_createDStream();
        return stream_ && ZSTD_isError(ZSTD_initDStream(stream_)) == 0;
    }
    Status step(std::string_view& in, char*& out, char* end) override {
        ZSTD_inBuffer source{in.data(), in.size(), 0};
        ZSTD_outBuffer target{out, static_cast<std::size_t>(end - out), 0};
        const std::size_t code = ZSTD_decompressStream(stream_, &target, &source);
        in.remove_prefix(source.pos);
        out += target.pos;
        if (ZSTD_isError(code) != 0) return Status::Damaged;
        return code == 0 ? Status::MemberEnd : Status::More;
    }
    bool recognises(std::string_view text) const override {
        const bool skippable = text.size() > ZstdSkippableMagic.size() && (text[0] & 0xf0) == 0x50 &&
                               text.substr(1, ZstdSkippableMagic.size()) == ZstdSkippableMagic;
        return skippable || startsWithMagic(text, ZstdMagic);
    }
    std::size_t saidSize(std::string_view archive) const override {
        const unsigned long long size = ZSTD_getFrameContentSize(archive.data(), archive.size());
        return size == ZSTD_CONTENTSIZE_UNKNOWN || size == ZSTD_CONTENTSIZE_ERROR ? 0 : size;
    }

private:
    ZSTD_DStream* stream_ = nullptr;
};

} // namespace

std::unique_ptr<Decoder> Decoder::forArchive(std::string_view head) {
    constexpr std::string_view firstBytes("\x1f\xfd\x28"
                                          "BPQRSTUVWXYZ[\\]^_"); // of archives; of texts hardly ever
    if (head.empty() || firstBytes.find(head.front()) == head.npos) return nullptr;
    std::unique_ptr<Decoder> kinds[] = {std::make_unique<GzipDecoder>(), std::make_unique<Bzip2Decoder>(),
                                        std::make_unique<XzDecoder>(), std::make_unique<ZstdDecoder>()};
    for (std::unique_ptr<Decoder>& kind : kinds)
        if (kind->recognises(head)) return std::move(kind);
    return nullptr;
}

} // namespace hdnt::platform
