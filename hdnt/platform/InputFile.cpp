#include "hdnt/platform/Bytes16.internal.h"
#include "hdnt/platform/Decoder.internal.h"
#include "hdnt/platform/InputFile.internal.h"
#include "hdnt/platform/SlabMemory.internal.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

namespace hdnt::platform {
namespace {

constexpr std::size_t ChunkBytes = std::size_t{256} << 10;
constexpr int readable = O_RDONLY | O_CLOEXEC | O_NOCTTY;

std::string systemReason(int code) { return std::generic_category().message(code); }
std::string sizeReason(std::size_t limit) { return "larger than " + std::to_string(limit) + " bytes"; }

struct Descriptor {
    explicit Descriptor(int fd) : value(fd) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (value >= 0) close(value);
    }
    const int value;
};

std::size_t upTo(const char* place, std::size_t pageBytes) {
    return -reinterpret_cast<std::uintptr_t>(place) & (pageBytes - 1);
}

// Gets the pages for what is read next behind a text at once: a page fault for each costs more than reading them. A
// system that cannot do that has the faults. Large pages begin in that part and are all in the text's memory.
void populate(std::string& text, std::size_t size) {
    char* const part = text.data() + text.size();
    const std::size_t room = text.capacity() - text.size();
    for (std::size_t at = upTo(part, largePageBytes); at < size && at + largePageBytes <= room; at += largePageBytes)
        askForLargePage(part + at);
#ifdef MADV_POPULATE_WRITE
    constexpr std::size_t page = 4096;
    constexpr std::size_t worthIt = 16 * page;
    const std::size_t begin = upTo(part, page);
    const std::size_t bytes = size > begin ? (size - begin) & ~(page - 1) : 0;
    if (bytes >= worthIt) madvise(part + begin, bytes, MADV_POPULATE_WRITE);
#endif
}

// Appends what `write` puts at the place that it is given, up to `room` bytes; it returns how many.
template <typename Write>
void appendWritten(std::string& text, std::size_t room, Write&& write) {
    const std::size_t size = text.size();
    const auto behind = [&](char* bytes, std::size_t) { return size + write(bytes + size); };
#ifdef __cpp_lib_string_resize_and_overwrite
    text.resize_and_overwrite(size + room, behind);
#else // clears what is written next
    text.resize(size + room);
    text.resize(behind(text.data(), room));
#endif
}

// Makes room for a part more, in pages that are there.
void makeRoomBehind(std::string& text, std::size_t room) {
    if (text.capacity() - text.size() < room) text.reserve(std::max(2 * text.capacity(), text.size() + room));
    populate(text, room);
}

// Reads as many bytes as expected: less at an earlier end, one more from a file that has grown. Negative for a fault,
// which errno tells.
ssize_t readFully(int file, char* to, std::size_t expected) {
    std::size_t done = 0;
    while (done < expected) {
        const ssize_t got = read(file, to + done, expected + 1 - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return got;
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(done);
}

// Reads what the file has where the place says, if that is all of a text; else leaves it in `out`. False for a fault.
bool readToPlace(int file, std::size_t expected, const TextPlace& place, std::string& out, std::string_view& text) {
    char* const begin = place.take(expected + bytes16Room);
    const ssize_t got = readFully(file, begin, expected);
    if (got < 0) return false;
    const std::string_view bytes(begin, static_cast<std::size_t>(got));
    if (bytes.size() <= expected && !Decoder::forArchive(bytes)) text = bytes;
    else out = bytes;
    return true;
}

bool readRaw(const std::string& path, std::size_t maxBytes, const TextPlace* place, std::string& out,
             std::string_view& text, std::string& why) {
    const Descriptor file(place ? place->folder.open(path) : open(path.c_str(), readable));
    struct stat status {};
    if (file.value < 0 || fstat(file.value, &status) != 0) return why = systemReason(errno), false;
    if (S_ISDIR(status.st_mode)) return why = systemReason(EISDIR), false;
    std::size_t expected = S_ISREG(status.st_mode) && status.st_size > 0 ? static_cast<std::size_t>(status.st_size) : 0;
    if (expected > maxBytes) return why = sizeReason(maxBytes), false;
    out.clear();
    if (place && expected > 0 && expected <= place->most) {
        if (!readToPlace(file.value, expected, *place, out, text)) return why = systemReason(errno), false;
        if (text.data()) return true;
    }
    // One byte more than expected, so that the end of an unchanged file shows without growing the buffer, and room for
    // the scanner.
    out.reserve(expected + 1 + bytes16Room);
    for (;;) {
        const std::size_t size = out.size();
        const std::size_t room = expected >= size ? std::min(expected + 1 - size, ChunkBytes) : ChunkBytes;
        if (size + room <= out.capacity()) populate(out, room);
        ssize_t got = 0;
        appendWritten(out, room, [&](char* part) {
            got = read(file.value, part, room);
            return static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        });
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return why = systemReason(errno), false;
        if (out.size() > maxBytes) return why = sizeReason(maxBytes), false;
        const bool isWhole = out.size() == expected && got < static_cast<ssize_t>(room);
        if (got == 0 || isWhole) return true; // a read may also give less than there is
    }
}

bool withinLimits(std::size_t textBytes, std::size_t fileBytes, const InputLimits& limits, std::string& why) {
    if (textBytes > limits.maxBytes)
        return why = "expands to more than " + std::to_string(limits.maxBytes) + " bytes", false;
    if (textBytes > limits.ratioFloor && textBytes > fileBytes * limits.maxRatio)
        return why = "expands to more than " + std::to_string(limits.maxRatio) + " times its size", false;
    return true;
}

bool expand(Decoder& decoder, std::string_view archive, const InputLimits& limits, std::string& out, std::string& why) {
    const std::size_t likely = 8 * archive.size(); // texts pack to a fifth
    const std::size_t usual = std::clamp(likely, std::size_t{4096}, ChunkBytes);
    const std::size_t said = decoder.saidSize(archive);
    // An archive that says its size is unpacked at once into what holds it; one that says too much gets no memory for
    // it.
    std::size_t room = said <= std::min(likely, limits.maxBytes) ? std::max(usual, said) : usual;
    if (room > usual) out.reserve(room + bytes16Room);
    std::string_view rest = archive;
    for (;;) {
        if (!decoder.recognises(rest)) return why = "bytes after the end of the archive", false;
        if (!decoder.begin()) throw std::bad_alloc();
        Decoder::Status status = Decoder::Status::More;
        while (status == Decoder::Status::More) {
            const std::size_t before = rest.size();
            const std::size_t size = out.size();
            makeRoomBehind(out, room);
            appendWritten(out, room, [&](char* part) {
                char* end = part;
                status = decoder.step(rest, end, part + room);
                return static_cast<std::size_t>(end - part);
            });
            room = usual;
            if (!withinLimits(out.size(), archive.size(), limits, why)) return false;
            if (status == Decoder::Status::More && rest.size() == before && out.size() == size)
                return why = "archive is cut short", false;
        }
        if (status == Decoder::Status::Damaged) return why = "archive is damaged", false;
        if (status == Decoder::Status::TooMuchMemory) return why = "archive needs too much memory", false;
        if (rest.empty()) return true;
    }
}

bool readText(const std::string& path, const InputLimits& limits, const TextPlace* place, std::string& out,
              std::string_view& text, std::string& why) {
    if (!readRaw(path, limits.maxBytes, place, out, text, why)) return false;
    if (text.data()) return true;
    const std::unique_ptr<Decoder> decoder = Decoder::forArchive(out);
    if (!decoder) return true;
    std::string expanded;
    if (!expand(*decoder, out, limits, expanded, why)) return false;
    out = std::move(expanded);
    return true;
}

} // namespace

OpenFolder::~OpenFolder() {
    if (folder_ >= 0) close(folder_);
}

// A folder that cannot be opened may still have files that can.
int OpenFolder::open(const std::string& path) {
    const std::string_view way = std::string_view(path).substr(0, path.rfind('/') + 1);
    if (way.empty()) return ::open(path.c_str(), readable);
    if (way != way_) {
        if (folder_ >= 0) close(std::exchange(folder_, -1));
        way_ = way;
        folder_ = ::open(way_.c_str(), readable | O_DIRECTORY);
    }
    return folder_ >= 0 ? openat(folder_, path.c_str() + way.size(), readable) : ::open(path.c_str(), readable);
}

bool readInput(const std::string& path, const InputLimits& limits, const TextPlace* place, std::string& out,
               std::string_view& text, std::string& why) {
    text = {};
    try {
        if (readText(path, limits, place, out, text, why)) return true;
    } catch (...) {
        out = std::string();
        throw;
    }
    out = std::string();
    return false;
}

bool readInput(const std::string& path, const InputLimits& limits, std::string& out, std::string& why) {
    std::string_view text;
    return readInput(path, limits, nullptr, out, text, why);
}

} // namespace hdnt::platform
