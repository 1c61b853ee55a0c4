#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/platform/Bytes16.internal.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/InputFile.internal.h"
#include "hdnt/platform/SlabMemory.internal.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <utility>

namespace hdnt::diagnostics {

static thread_local const TextsInPlace* inPlace = nullptr;

static std::string plainPath(const std::string& path) {
    std::error_code error;
    return std::filesystem::absolute(path, error).lexically_normal().string();
}

TextsInPlace::TextsInPlace(const std::map<std::string, std::string>& texts) : before_(inPlace) {
    for (const auto& [path, text] : texts) byPath_.emplace(plainPath(path), &text);
    inPlace = byPath_.empty() ? nullptr : this;
}

TextsInPlace::~TextsInPlace() { inPlace = before_; }

const std::string* TextsInPlace::find(const std::string& path) {
    if (!inPlace) return nullptr;
    const auto found = inPlace->byPath_.find(plainPath(path));
    return found == inPlace->byPath_.end() ? nullptr : found->second;
}

bool sourceExists(const std::string& path) { return TextsInPlace::find(path) || HUTPathUtils::exists(path); }

static platform::InputLimits inputLimits() {
    const HDNTLimits& limits = HDNTLimits::get();
    return {limits.inputBytes, limits.expansionRatio, limits.expansionFloor};
}

bool readSource(const std::string& path, std::string& out, std::string& reason) {
    if (const std::string* const text = TextsInPlace::find(path)) {
        copySource(*text, out);
        return true;
    }
    return platform::readInput(path, inputLimits(), out, reason);
}

char* SharedTexts::take(std::size_t size) {
    if (size_ - used_ < size) {
        constexpr std::size_t little = std::size_t{256} << 10; // most folders are small
        const bool isSmall = size_ == 0 && size * files_ < platform::largePageBytes;
        block_ = isSmall ? std::shared_ptr<char[]>(new char[little]) : platform::largePage();
        size_ = isSmall ? little : platform::largePageBytes;
        used_ = 0;
    }
    return block_.get() + std::exchange(used_, used_ + size);
}

bool SharedTexts::read(const std::string& path, SourceText& text, std::string& reason) {
    constexpr std::size_t largest = std::size_t{64} << 10;
    if (platform::usesGeneralHeap || TextsInPlace::find(path)) return readSource(path, text.bytes, reason);
    const platform::TextPlace place = {folder_, largest, [this](std::size_t size) { return take(size); }};
    if (!platform::readInput(path, inputLimits(), &place, text.bytes, text.part, reason)) return false;
    if (!text.part.data()) return true;
    std::memset(block_.get() + (text.part.end() - block_.get()), 0, platform::bytes16Room);
    text.shared = block_;
    return true;
}

// Memory that is new to the process comes a page at a time. For a text of a hundred megabytes in small pages that takes
// a quarter of the time of scanning it, in large ones next to none. Where the system has none, the advice is void.
void copySource(std::string_view text, std::string& out) {
    out.clear();
    out.reserve(text.size() + platform::bytes16Room);
    if (text.size() >= 4 * platform::largePageBytes) {
        const auto begin = reinterpret_cast<std::uintptr_t>(out.data());
        const size_t toLargePage =
            (platform::largePageBytes - begin % platform::largePageBytes) % platform::largePageBytes;
        madvise(out.data() + toLargePage, text.size() - toLargePage, MADV_HUGEPAGE);
    }
    out.assign(text);
}

bool isBelow(const std::string& folder, const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path root = fs::canonical(folder, error);
    const fs::path file = error ? fs::path() : fs::canonical(path, error);
    return !error && std::mismatch(root.begin(), root.end(), file.begin(), file.end()).first == root.end();
}

bool isInsideRoot(const std::string& path, std::string& reason) {
    const std::string& rootFolder = HDNTLimits::get().rootFolder;
    if (rootFolder.empty() || isBelow(rootFolder, path)) return true;
    reason = "not below the root folder " + rootFolder + " (limit rootFolder)";
    return false;
}

} // namespace hdnt::diagnostics
