#include "hdnt/platform/SlabMemory.internal.h"
#include "hdnt/platform/SpinLock.internal.h"

#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <new>
#include <set>
#include <utility>

#if defined(__has_feature)
#define HDNT_HAS_FEATURE(name) __has_feature(name)
#else
#define HDNT_HAS_FEATURE(name) 0
#endif

namespace hdnt::platform {

namespace {

#if defined(__SANITIZE_ADDRESS__) || HDNT_HAS_FEATURE(address_sanitizer)
constexpr std::size_t greatestSize = 0;
#else
constexpr std::size_t greatestSize = 512;
#endif

// Slabs are aligned to their size, so that an object's address leads to its slab.
constexpr std::size_t slabBytes = std::size_t{1} << 18;
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
    char* untouched = reinterpret_cast<char*>(this);  ///< from here on the system has given no pages so far
    std::size_t objects = 0;
    std::size_t objectSize;

    explicit Slab(std::size_t size) : objectSize(size) {}
    bool isFull(std::size_t size) const {
        return !freed && unused + size > reinterpret_cast<const char*>(this) + slabBytes;
    }
    void* take(std::size_t size) {
        ++objects;
        if (freed) return std::exchange(freed, freed->next);
        if (unused + size > untouched) touchMore();
        return std::exchange(unused, unused + size);
    }
    // One page fault at a time costs more than a page's worth of objects; so pages come some at once.
    void touchMore() {
        constexpr std::size_t step = slabBytes / 8;
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

// Where slabs are, for an object of unknown size. Never destroyed, as they.
struct AllSlabs {
    SpinLock lock;
    std::set<const Slab*> places;
};
AllSlabs& allSlabs() {
    static auto* const all = new AllSlabs;
    return *all;
}
void enter(const Slab* slab) {
    const std::lock_guard lock(allSlabs().lock);
    allSlabs().places.insert(slab);
}
void leave(const Slab* slab) noexcept {
    const std::lock_guard lock(allSlabs().lock);
    allSlabs().places.erase(slab);
}
bool isSlab(const Slab* place) noexcept {
    const std::lock_guard lock(allSlabs().lock);
    return allSlabs().places.contains(place);
}

// The system gives pages, so a range of twice the size is asked for and what stands over at both ends given back.
Slab* newSlab(std::size_t objectSize) {
    void* const range = mmap(nullptr, 2 * slabBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (range == MAP_FAILED) throw std::bad_alloc();
    char* const begin = static_cast<char*>(range);
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(begin) & (slabBytes - 1);
    if (before > 0) munmap(begin, before);
    munmap(begin + before + slabBytes, slabBytes - before);
    auto* const slab = reinterpret_cast<Slab*>(begin + before);
    try {
        enter(slab);
    } catch (...) {
        munmap(slab, slabBytes);
        throw;
    }
    return new (slab) Slab(objectSize);
}

/// The slabs of one size that are not full.
class Slabs {
public:
    void* allocate(std::size_t size) {
        const std::lock_guard lock(lock_);
        if (!first_) link(newSlab(size));
        Slab* const slab = first_;
        void* const object = slab->take(size);
        if (slab->isFull(size)) unlink(slab);
        return object;
    }

    void free(void* object, std::size_t size) noexcept {
        const std::lock_guard lock(lock_);
        Slab* const slab = Slab::of(object);
        if (slab->isFull(size)) link(slab);
        slab->put(object);
        if (slab->objects > 0 || (slab == first_ && !slab->next)) return;
        unlink(slab);
        leave(slab);
        munmap(slab, slabBytes);
    }

private:
    void link(Slab* slab) noexcept {
        slab->previous = nullptr;
        slab->next = std::exchange(first_, slab);
        if (slab->next) slab->next->previous = slab;
    }
    void unlink(Slab* slab) noexcept {
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
    const std::size_t rounded = roundedUp(size);
    slabsBySize[rounded / granule].free(object, rounded);
}

void freeObject(void* object) noexcept {
    if (!object) return;
    const Slab* const slab = Slab::of(object);
    if (greatestSize == 0 || !isSlab(slab)) return ::operator delete(object);
    freeObject(object, slab->objectSize);
}

} // namespace hdnt::platform
