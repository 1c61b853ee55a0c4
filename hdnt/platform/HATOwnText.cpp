#include "hdnt/platform/HATOwnText.h"

#include "hdnt/platform/HSTUniqString.h"
#include "hdnt/platform/SlabMemory.internal.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <new>

using hdnt::platform::allocateObject;
using hdnt::platform::freeObject;

// The bytes follow. They stay when a string was made of them, since another thread may be making one, too.
struct HATOwnText::Kept {
    std::atomic<const std::string*> made = nullptr;
    std::size_t size;

    explicit Kept(std::size_t bytes) : size(bytes) {}
    char* bytes() { return reinterpret_cast<char*>(this + 1); }
    static std::size_t room(std::size_t size) { return sizeof(Kept) + size; }
};

HATOwnText::HATOwnText(std::string_view text) {
    if (text.empty()) return;
    kept_ = new (allocateObject(Kept::room(text.size()))) Kept(text.size());
    std::memcpy(kept_->bytes(), text.data(), text.size());
}

const std::string& HATOwnText::str() const {
    if (!kept_) return HSTUniqString().str();
    const std::string* made = kept_->made.load(std::memory_order_acquire);
    if (made) return *made;
    auto fresh = std::make_unique<const std::string>(kept_->bytes(), kept_->size);
    // Null still, unless another thread was faster.
    if (kept_->made.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel)) made = fresh.release();
    return *made;
}

void HATOwnText::drop(Kept* kept) noexcept {
    delete kept->made.load(std::memory_order_acquire);
    freeObject(kept, Kept::room(kept->size));
}
