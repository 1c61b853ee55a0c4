// Reading of possibly compressed files: a text within its limits, or a reason.
#include "hdnt/platform/InputFile.h"
#include "tests/support/MemoryFile.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

bool looksPacked(std::string_view bytes) {
    using namespace std::literals;
    const auto beginsWith = [](std::string_view text, std::string_view magic) { // or ends within it
        return text.substr(0, magic.size()) == magic.substr(0, text.size());
    };
    for (const std::string_view magic : {"\x1f\x8b"sv, "\xfd\x37zXZ\0"sv, "\x28\xb5\x2f\xfd"sv})
        if (beginsWith(bytes, magic)) return true;
    const bool sized = bytes.size() > 3 && bytes[3] >= '1' && bytes[3] <= '9';
    if (beginsWith(bytes, "BZh") && (sized || bytes.size() <= 3))
        for (const std::string_view magic : {"1AY&SY"sv, "\x17rE8P\x90"sv})
            if (!sized || beginsWith(bytes.substr(4), magic)) return true;
    return bytes.size() > 3 && (bytes[0] & 0xf0) == 0x50 && bytes.substr(1, 3) == "\x2a\x4d\x18"sv;
}

void require(bool ok, const char* what) {
    if (ok) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const support::MemoryFile file(bytes);
    hdnt::platform::InputLimits limits;
    limits.maxBytes = std::size_t{1} << 20;
    limits.ratioFloor = std::size_t{1} << 16;
    std::string text = "left over";
    std::string reason;
    if (hdnt::platform::readInput(file.path(), limits, text, reason)) {
        require(text.size() <= limits.maxBytes, "more text than the limit");
        require(text.size() <= limits.ratioFloor || text.size() <= size * limits.maxRatio,
                "more expansion than the limit");
        require(looksPacked(bytes) || text == bytes, "a plain text was changed");
    } else {
        require(text.empty(), "a failed reading left text behind");
        require(!reason.empty(), "a failed reading gave no reason");
        require(looksPacked(bytes) || size > limits.maxBytes, "a plain text was refused");
    }
    return 0;
}
