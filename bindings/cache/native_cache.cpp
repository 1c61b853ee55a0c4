#include "bindings/cache/native_cache.h"

namespace wpx::tcltasks {

native_handle* native_cache::find(const HDNTNode& node) const {
    const std::lock_guard lock(mutex_);
    const auto found = handles_.find(&node);
    return found == handles_.end() ? nullptr : found->second;
}

void native_cache::enter(HDNTNode& node, native_handle& handle) {
    const std::lock_guard lock(mutex_);
    handles_.emplace(&node, &handle);
    handle.node_.store(&node, std::memory_order_release);
    HDNTNodeWatch::watch(node);
}

void native_cache::drop(native_handle& handle) {
    const std::lock_guard lock(mutex_);
    handles_.erase(handle.node());
    handle.node_.store(nullptr, std::memory_order_release);
}

bool native_cache::forget(const HDNTNode& node) noexcept {
    const std::lock_guard lock(mutex_);
    const auto found = handles_.find(&node);
    if (found == handles_.end()) return false;
    found->second->node_.store(nullptr, std::memory_order_release);
    handles_.erase(found);
    return true;
}

void native_cache::clear() {
    const std::lock_guard lock(mutex_);
    for (const auto& [node, handle] : handles_) handle->node_.store(nullptr, std::memory_order_release);
    handles_.clear();
}

std::size_t native_cache::size() const {
    const std::lock_guard lock(mutex_);
    return handles_.size();
}

native_caches::native_caches() { HDNTNodeWatch::addObserver(*this); }
native_caches::~native_caches() { HDNTNodeWatch::removeObserver(*this); }

std::size_t native_caches::size() const {
    std::size_t sum = 0;
    for (const native_cache& cache : caches_) sum += cache.size();
    return sum;
}

void native_caches::clear() {
    for (native_cache& cache : caches_) cache.clear();
}

void native_caches::nodeDies(const HDNTNode& node) noexcept {
    if (of(node.getKind()).forget(node)) emptied_.fetch_add(1, std::memory_order_acq_rel);
}

} // namespace wpx::tcltasks
