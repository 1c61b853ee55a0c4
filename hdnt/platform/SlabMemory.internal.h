#pragma once

#include <cstddef>

// Memory for many small objects of few sizes that are made together and deleted together: model objects, shared texts.
//
// Each size has slabs of its own, in which objects stand side by side without a header. A slab goes back to the system
// with its last object, so that a host which loads and drops libraries for days keeps nothing of them. Any thread may
// allocate and free. Under an address sanitizer the general heap is used, for it to see each object.
namespace hdnt::platform {

/// Aligned as for operator new. Throws std::bad_alloc.
void* allocateObject(std::size_t size);
/// The size must be that of the allocation.
void freeObject(void* object, std::size_t size) noexcept;
/// For those who do not know it; has to search. Null is nothing.
void freeObject(void* object) noexcept;

} // namespace hdnt::platform
