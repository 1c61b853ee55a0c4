#include "hdnt/model/NodePlace.h"

#include "hdnt/platform/SlabMemory.internal.h"

#include <array>
#include <map>
#include <mutex>
#include <new>
#include <tuple>

namespace hdnt::model {
namespace {

// A packed word: from the lowest bit on the mark, the section, the first column, and how far the last one is from it.
constexpr unsigned sectionBits = 18;
constexpr unsigned columnBits = 24;
constexpr unsigned lengthBits = 21;
constexpr unsigned sectionFrom = 1;
constexpr unsigned columnFrom = sectionFrom + sectionBits;
constexpr unsigned lengthFrom = columnFrom + columnBits;
static_assert(lengthFrom + lengthBits == 64);
constexpr int lengthBias = 1 << (lengthBits - 1);

constexpr std::uint64_t ones(unsigned bits) { return (std::uint64_t{1} << bits) - 1; }
constexpr std::uint64_t fieldOf(std::uint64_t word, unsigned from, unsigned bits) { return word >> from & ones(bits); }

// Wraps around, so that it is undone for any two numbers.
constexpr int difference(int a, int b) { return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b)); }

/// What the locations of many lines have in common.
struct Section {
    const char* fileName;
    int lineOffset; ///< of first_line over fileLine
    int storeOffset;
    std::uint64_t bits; ///< the number where a packed word has it, and the mark

    bool isSame(const char* file, int line, int store) const {
        return fileName == file && lineOffset == line && storeOffset == store;
    }
};

// All sections, by number; they stay where they are. A process that reads for days sees few: they differ by file, by
// included stretch of a text and by what stood in the line store before. Past the limit locations are not packed.
constexpr std::uint32_t sectionLimit = std::uint32_t{1} << sectionBits;
constexpr std::uint32_t pieceSize = 256;
constinit std::array<Section*, sectionLimit / pieceSize> pieces{};
constinit std::atomic<const Section*> latest = nullptr;

const Section& sectionAt(std::uint64_t number) { return pieces[number / pieceSize][number % pieceSize]; }

// The one behind the latest, where texts are read in the order that they were read in before; else null.
const Section* sectionAhead(std::size_t count) {
    const Section* const last = latest.load(std::memory_order_acquire);
    const std::uint64_t next = last ? fieldOf(last->bits, sectionFrom, sectionBits) + 1 : 0;
    return next < count ? &sectionAt(next) : nullptr;
}

// Zero when there is no number left.
[[gnu::noinline]] std::uint64_t searchBits(const char* fileName, int lineOffset, int storeOffset) {
    using Numbers = std::map<std::tuple<std::uintptr_t, int, int>, std::uint32_t>;
    static auto* const numbers = new Numbers; // never destroyed: objects may be made while the process exits
    static auto* const mutex = new std::mutex;
    const std::lock_guard lock(*mutex);
    if (const Section* const ahead = sectionAhead(numbers->size());
        ahead && ahead->isSame(fileName, lineOffset, storeOffset)) {
        latest.store(ahead, std::memory_order_release);
        return ahead->bits;
    }
    const Numbers::key_type key(reinterpret_cast<std::uintptr_t>(fileName), lineOffset, storeOffset);
    auto found = numbers->find(key);
    if (found == numbers->end()) {
        const auto next = static_cast<std::uint32_t>(numbers->size());
        if (next == sectionLimit) return 0;
        Section*& piece = pieces[next / pieceSize];
        if (!piece) piece = new Section[pieceSize];
        found = numbers->emplace(key, next).first;
        piece[next % pieceSize] = {fileName, lineOffset, storeOffset,
                                   std::uint64_t{1} | std::uint64_t{next} << sectionFrom};
    }
    const Section& section = sectionAt(found->second);
    latest.store(&section, std::memory_order_release);
    return section.bits;
}

// What belongs behind the bits of a section; `isPossible` becomes false when it cannot be packed.
std::uint64_t columnsOf(const yyltype& location, bool& isPossible) {
    const auto column = static_cast<unsigned>(location.first_column); // of one below 0 it is too large
    const unsigned length = static_cast<unsigned>(location.last_column) - column + lengthBias;
    isPossible = location.last_line == 0 && column <= ones(columnBits) && length <= ones(lengthBits);
    return std::uint64_t{column} << columnFrom | std::uint64_t{length} << lengthFrom;
}

// Zero when it cannot be done.
std::uint64_t packed(const yyltype& location) {
    bool isPossible = false;
    const std::uint64_t columns = columnsOf(location, isPossible);
    if (!isPossible) return 0;
    const std::uint64_t bits =
        searchBits(location.fileName, difference(location.first_line, location.fileLine), location.storeOffset);
    return bits == 0 ? 0 : bits | columns;
}

[[gnu::noinline]] yyltype* newRecord(const yyltype& location) {
    return new (platform::allocateObject(sizeof(yyltype))) yyltype(location);
}

std::uint64_t wordOf(const yyltype* record) { return reinterpret_cast<std::uintptr_t>(record); }

} // namespace

yyltype NodePlace::unpacked(std::uint64_t word) const {
    const Section& section = sectionAt(fieldOf(word, sectionFrom, sectionBits));
    const auto column = static_cast<int>(fieldOf(word, columnFrom, columnBits));
    const int length = static_cast<int>(fieldOf(word, lengthFrom, lengthBits)) - lengthBias;
    return {section.fileName,   difference(line_, section.lineOffset), line_, column, 0, column + length,
            section.storeOffset};
}

yyltype* NodePlace::makeRecord(std::uint64_t word) const {
    yyltype* const record = newRecord(unpacked(word));
    if (word_.compare_exchange_strong(word, wordOf(record), std::memory_order_acq_rel, std::memory_order_acquire))
        return record;
    drop(record); // another thread was faster
    return recordIn(word);
}

void NodePlace::drop(yyltype* record) noexcept { platform::freeObject(record, sizeof *record); }

std::optional<yyltype> NodePlace::read() const {
    const std::uint64_t word = word_.load(std::memory_order_acquire);
    if (word == 0) return std::nullopt;
    return word & packedBit ? unpacked(word) : *recordIn(word);
}

// Most are in the section of the one before.
void NodePlace::set(const yyltype& location) {
    const Section* const last = latest.load(std::memory_order_acquire);
    bool isPossible = false;
    const std::uint64_t columns = columnsOf(location, isPossible);
    if (!isPossible || !last || isSet() ||
        !last->isSame(location.fileName, difference(location.first_line, location.fileLine), location.storeOffset))
        return setAnew(location);
    line_ = location.first_line;
    word_.store(last->bits | columns, std::memory_order_release);
}

[[gnu::noinline]] void NodePlace::setAnew(const yyltype& location) {
    if (yyltype* const record = recordIn(word_.load(std::memory_order_relaxed))) {
        *record = location;
        return;
    }
    std::uint64_t word = packed(location);
    if (word == 0) word = wordOf(newRecord(location));
    line_ = location.first_line;
    word_.store(word, std::memory_order_release);
}

void NodePlace::take(const NodePlace& other) {
    const std::uint64_t word = other.word_.load(std::memory_order_acquire);
    if (word == 0) return;
    if (const yyltype* const record = recordIn(word)) return set(*record);
    if (recordIn(word_.load(std::memory_order_relaxed))) return set(other.unpacked(word));
    line_ = other.line_;
    word_.store(word, std::memory_order_release);
}

} // namespace hdnt::model
