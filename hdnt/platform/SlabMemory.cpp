#include "hdnt/platform/SlabMemory.internal.h"
#include "hdnt/platform/SpinLock.internal.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace hdnt::platform {

namespace {

constexpr std::size_t greatestSize = usesGeneralHeap ? 0 : 512;

// Slabs are aligned to their size, so that an object's address leads to its slab. Each size of objects has one that is
// partly used, and there are some forty sizes.
constexpr std::size_t slabBytes = std::size_t{1} << 16;
// Sizes are rounded up to this. What needs an alignment of 16, or wants a cache line of its own, has a size that is a
// multiple of that.
constexpr std::size_t granule = 8;

struct FreeObject {
    FreeObject* next;
};

struct alignas(64) Slab {
    Slab* next = nullptr;
    Slab* previous = nullptr;
    FreeObject* freed = nullptr;                      ///< objects that were used before
    char* unused = reinterpret_cast<char*>(this + 1); ///< from here on nothing was used so far
    char* untouched = reinterpret_cast<char*>(this);  ///< from here on the system may have given no pages so far
    std::size_t objects = 0;
    std::size_t objectSize;
    bool linked = false; ///< among those of its size that may have room

    Slab(std::size_t size, bool isThere) : objectSize(size) {
        if (isThere) untouched += slabBytes;
    }
    bool isFull(std::size_t size) const {
        return !freed && unused + size > reinterpret_cast<const char*>(this) + slabBytes;
    }
    bool hasFresh(std::size_t size) const { return !freed && unused + size <= untouched; }
    // It has a fresh one.
    void* takeFresh(std::size_t size) {
        ++objects;
        return std::exchange(unused, unused + size);
    }
    // The slab has room.
    void* take(std::size_t size) {
        if (!freed && unused + size > untouched) touchMore();
        if (!freed) return takeFresh(size);
        ++objects;
        return std::exchange(freed, freed->next);
    }
    // One page fault at a time costs more than a page's worth of objects; so pages come some at once.
    [[gnu::noinline]] void touchMore() {
        constexpr std::size_t step = slabBytes / 2;
#ifdef MADV_POPULATE_WRITE
        madvise(untouched, step, MADV_POPULATE_WRITE);
#endif
        untouched += step;
    }
    void put(void* object) {
        --objects;
        freed = new (object) FreeObject{freed};
    }
    static Slab* of(void* object) {
        return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(object) & ~(slabBytes - 1));
    }
};

/// Asks for large pages where they are cheap. A virtual machine's host may have taken their memory back, and to get it
/// again takes five times as long as small pages, which come from memory in use. So there is a pause when one was slow.
class LargePages {
public:
    /// Whether one was asked for at all: where texts are large, so is their model.
    bool wasAsked() const noexcept { return wasAsked_.load(relaxed); }
    /// Whether it is one page now, all of which is there.
    bool ask([[maybe_unused]] char* place) noexcept {
#ifdef MADV_HUGEPAGE
        wasAsked_.store(true, relaxed);
        if (pause_.load(relaxed) > 0) {
            pause_.fetch_sub(1, relaxed);
            return false;
        }
        madvise(place, largePageBytes, MADV_HUGEPAGE);
        const std::int64_t begin = processorTime();
        *static_cast<volatile char*>(place) = 0;
        if (processorTime() - begin > longest) pause_.store(pauseAfterSlow, relaxed);
        unsigned char isThere = 0;
        return mincore(place + largePageBytes - smallPageBytes, smallPageBytes, &isThere) == 0 && (isThere & 1) != 0;
#else
        return false;
#endif
    }

private:
    /// Of this thread, in nanoseconds: what others have the processor for meanwhile says nothing of the page.
    static std::int64_t processorTime() noexcept {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
    }
    static constexpr std::memory_order relaxed = std::memory_order_relaxed;
    static constexpr std::int64_t longest = 1000000; ///< that the small pages in its place would take
    static constexpr int pauseAfterSlow = 15;
    static constexpr std::size_t smallPageBytes = 4096;

    std::atomic<int> pause_ = 0; ///< how many not to ask for
    std::atomic<bool> wasAsked_ = false;
};

constinit LargePages largePages;

/// Of the size of a large page, and at such an address. The system gives pages, so a range of twice the size is asked
/// for and what stands over at both ends given back.
char* mapRange() {
    void* const range = mmap(nullptr, 2 * largePageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (range == MAP_FAILED) throw std::bad_alloc();
    char* const begin = static_cast<char*>(range);
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(begin) & (largePageBytes - 1);
    if (before > 0) munmap(begin, before);
    char* const place = begin + before;
    munmap(place + largePageBytes, largePageBytes - before);
    return place;
}

/// Some pages that were given back, for the next that are wanted: a heap keeps as much of one text of their size. The
/// system may have their memory meanwhile.
class SparePages {
public:
    /// Null when there is none.
    char* take() noexcept {
        const std::lock_guard lock(lock_);
        return count_ > 0 ? pages_[--count_] : nullptr;
    }
    /// False when there are enough.
    bool put(char* page) noexcept {
        const std::lock_guard lock(lock_);
        if (count_ == pages_.size()) return false;
#ifdef MADV_FREE
        madvise(page, largePageBytes, MADV_FREE);
#endif
        pages_[count_++] = page;
        return true;
    }

private:
    SpinLock lock_;
    std::array<char*, 8> pages_{};
    std::size_t count_ = 0;
};

constinit SparePages sparePages;

/// Where slabs come from: regions of the size of a large page, which stand at such addresses.
class Regions {
public:
    Slab* takeSlab(std::size_t objectSize) {
        const std::lock_guard lock(lock_);
        Region& region = regionWithRoom();
        const auto at = static_cast<unsigned>(std::countr_one(region.slabs));
        region.slabs |= 1U << at;
        --free_;
        return new (region.place + at * slabBytes) Slab(objectSize, region.isThere);
    }

    // Its memory goes back to the system, with the region when that was its last slab.
    void giveBack(void* slab) noexcept {
        const std::lock_guard lock(lock_);
        Region& region = *find(slab);
        region.slabs &= ~bitOf(slab);
        ++free_;
        if (region.slabs != 0) {
            region.isThere = false;
#ifdef MADV_NOHUGEPAGE
            // Or the system makes the region a large page again, unasked. All at once: each part that differs costs.
            if (!std::exchange(region.isSmall, true)) madvise(region.place, regionBytes, MADV_NOHUGEPAGE);
#endif
            madvise(slab, slabBytes, MADV_DONTNEED);
            return;
        }
        munmap(region.place, regionBytes);
        free_ -= slabsInRegion;
        regions_.erase(regions_.begin() + (&region - regions_.data()));
    }

    bool isSlab(const void* place) noexcept {
        const std::lock_guard lock(lock_);
        const Region* const region = find(place);
        return region && (region->slabs & bitOf(place)) != 0;
    }

private:
    static constexpr std::size_t regionBytes = largePageBytes;
    static constexpr std::size_t slabsInRegion = regionBytes / slabBytes;
    // Small libraries get small pages: slabs of each size begin with little in them. A large text asks for large ones.
    static constexpr std::size_t mostOfSmallPages = 3;

    struct Region {
        char* place;
        std::uint32_t slabs;  ///< a bit for each that is in use
        bool isThere;         ///< the system has given all of its pages
        bool isSmall = false; ///< the system was told that it gets small pages
    };
    static_assert(slabsInRegion == 32);

    static std::uint32_t bitOf(const void* slab) {
        return 1U << (reinterpret_cast<std::uintptr_t>(slab) % regionBytes / slabBytes);
    }

    /// Null when it is in none.
    Region* find(const void* place) noexcept {
        const auto found = std::upper_bound(regions_.begin(), regions_.end(), place,
                                            [](const void* p, const Region& region) { return p < region.place; });
        if (found == regions_.begin()) return nullptr;
        Region& region = *std::prev(found);
        return static_cast<std::size_t>(static_cast<const char*>(place) - region.place) < regionBytes ? &region
                                                                                                      : nullptr;
    }

    Region& regionWithRoom() {
        if (free_ == 0) return addRegion();
        return *std::find_if(regions_.begin(), regions_.end(),
                             [](const Region& region) { return region.slabs != ~std::uint32_t{0}; });
    }

    Region& addRegion() {
        regions_.reserve(regions_.size() + 1);
        char* const place = mapRange();
        const bool isLarge = regions_.size() >= mostOfSmallPages || largePages.wasAsked();
        const bool isThere = isLarge && largePages.ask(place);
        free_ += slabsInRegion;
        const auto behind =
            std::find_if(regions_.begin(), regions_.end(), [&](const Region& region) { return region.place > place; });
        return *regions_.insert(behind, {place, 0, isThere});
    }

    SpinLock lock_;
    std::vector<Region> regions_; ///< by address
    std::size_t free_ = 0;        ///< slabs in them
};

// Never destroyed, as slabs are not.
Regions& regions() {
    static auto* const all = new Regions;
    return *all;
}

/// The slabs of one size that may have room.
class Slabs {
public:
    void* allocate(std::size_t size) {
        if (isOnlyThread() && first_ && first_->hasFresh(size)) [[likely]]
            return first_->takeFresh(size);
        return allocateLocked(size);
    }

    void free(void* object) noexcept {
        const std::lock_guard lock(lock_);
        Slab* const slab = Slab::of(object);
        if (!slab->linked) link(slab);
        slab->put(object);
        if (slab->objects > 0 || (slab == first_ && !slab->next)) return;
        unlink(slab);
        regions().giveBack(slab);
    }

private:
    [[gnu::noinline]] void* allocateLocked(std::size_t size) {
        const std::lock_guard lock(lock_);
        if (!first_ || first_->isFull(size)) findRoom(size);
        return first_->take(size);
    }
    void findRoom(std::size_t size) {
        while (first_ && first_->isFull(size)) unlink(first_);
        if (!first_) link(regions().takeSlab(size));
    }
    void link(Slab* slab) noexcept {
        slab->linked = true;
        slab->previous = nullptr;
        slab->next = std::exchange(first_, slab);
        if (slab->next) slab->next->previous = slab;
    }
    void unlink(Slab* slab) noexcept {
        slab->linked = false;
        (slab->previous ? slab->previous->next : first_) = slab->next;
        if (slab->next) slab->next->previous = slab->previous;
    }

    SpinLock lock_;
    Slab* first_ = nullptr;
};

// Constant-initialised and never destroyed: objects may be deleted while the process exits.
constinit std::array<Slabs, greatestSize / granule + 1> slabsBySize;

std::size_t roundedUp(std::size_t size) { return (size + granule - 1) & ~(granule - 1); }

} // namespace

void* allocateObject(std::size_t size) {
    if (size > greatestSize) return ::operator new(size);
    const std::size_t rounded = roundedUp(size);
    return slabsBySize[rounded / granule].allocate(rounded);
}

void freeObject(void* object, std::size_t size) noexcept {
    if (size > greatestSize) return ::operator delete(object);
    slabsBySize[roundedUp(size) / granule].free(object);
}

void freeObject(void* object) noexcept {
    if (!object) return;
    const Slab* const slab = Slab::of(object);
    if (greatestSize == 0 || !regions().isSlab(slab)) return ::operator delete(object);
    freeObject(object, slab->objectSize);
}

void askForLargePage(char* place) noexcept { largePages.ask(place); }

std::shared_ptr<char[]> largePage() {
    char* range = sparePages.take();
    if (!range) {
        range = mapRange();
        largePages.ask(range);
    }
    return {range, [](char* page) {
                if (!sparePages.put(page)) munmap(page, largePageBytes);
            }};
}

} // namespace hdnt::platform
