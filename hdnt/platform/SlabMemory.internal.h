#pragma once

#include <cstddef>
#include <memory>

#if defined(__has_feature)
#define HDNT_HAS_FEATURE(name) __has_feature(name)
#else
#define HDNT_HAS_FEATURE(name) 0
#endif

// Memory for many small objects of few sizes that are made together and deleted together: model objects, shared texts.
//
// Each size has slabs of its own, in which objects stand side by side without a header. A slab goes back to the system
// with its last object, so that a host which loads and drops libraries for days keeps nothing of them. Any thread may
// allocate and free. Under an address sanitizer the general heap is used, for it to see each object.
namespace hdnt::platform {

#if defined(__SANITIZE_ADDRESS__) || HDNT_HAS_FEATURE(address_sanitizer)
inline constexpr bool usesGeneralHeap = true;
#else
inline constexpr bool usesGeneralHeap = false;
#endif

/// Aligned as for operator new. Throws std::bad_alloc.
void* allocateObject(std::size_t size);
/// The size must be that of the allocation.
void freeObject(void* object, std::size_t size) noexcept;
/// For those who do not know it; has to search. Null is nothing.
void freeObject(void* object) noexcept;

/// Calls for the objects of a list side by side, for a walk that finds them no more in the caches.
template <typename List>
void fetch(const List& list) {
    for (const auto* const object : list) __builtin_prefetch(object);
}

inline constexpr std::size_t largePageBytes = std::size_t{1} << 21;
/// That fresh memory of that size, at such an address, be one page where the system has such, and has it at hand.
void askForLargePage(char* place) noexcept;
/// Memory of that size, in one page where the system has such; up to 16 MB of it are kept for the next to ask. Its
/// contents are unknown. Throws std::bad_alloc.
std::shared_ptr<char[]> largePage();

} // namespace hdnt::platform
