#pragma once

#include "hdnt/platform/Export.h"

#include <string>
#include <string_view>
#include <utility>

/// A text that is kept by itself, in the library's own memory, and hardly ever looked at: the string is made when
/// somebody first asks for it. Any number of threads may ask.
class HDNT_API HATOwnText {
public:
    HATOwnText() = default;
    /// An empty text takes nothing. Throws std::bad_alloc.
    HDNT_LOCAL explicit HATOwnText(std::string_view text);
    HATOwnText(HATOwnText&& other) noexcept : kept_(std::exchange(other.kept_, nullptr)) {}
    HATOwnText& operator=(HATOwnText&& other) noexcept {
        std::swap(kept_, other.kept_);
        return *this;
    }
    ~HATOwnText() {
        if (kept_) drop(kept_);
    }

    bool empty() const { return !kept_; }
    /// One object as long as the text is kept, here or where it was moved to. Throws std::bad_alloc.
    const std::string& str() const;

private:
    struct Kept;
    HDNT_API static void drop(Kept* kept) noexcept;

    Kept* kept_ = nullptr; ///< null for an empty text
};
