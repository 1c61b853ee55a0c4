#include "tools/ntl/Progress.h"

#include "tools/ntl/Output.h"

#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace ntl {

Progress::Progress(std::uintmax_t total)
    : enabled_(isatty(STDERR_FILENO) == 1 && !isDumbTerminal()), total_(std::max<std::uintmax_t>(total, 1)) {}

// A line that is longer than the terminal is wide would not be drawn over. Names are cut at their beginning, between
// characters.
static std::string fitting(std::string text, std::size_t used) {
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    const std::size_t columns = known ? size.ws_col : 80;
    const std::size_t room = columns > used ? columns - used - 1 : 0;
    if (text.size() <= room) return text;
    constexpr std::size_t little = 10;
    if (room < little) return {};
    const std::string dots = "...";
    std::size_t begin = text.size() - room + dots.size();
    while (begin < text.size() && (static_cast<unsigned char>(text[begin]) & 0xc0U) == 0x80U) ++begin;
    return dots + text.substr(begin);
}

void Progress::show(std::uintmax_t done, const std::string& what) {
    if (!enabled_) return;
    const double passed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    // Until something is done nothing is known; work that took a second may well take another.
    const double left = part > 0 ? passed * (1 - part) / part : passed;
    if (passed < 0.3 || left <= 1.0) return clear();
    constexpr size_t width = 40;
    const auto filled = static_cast<size_t>(part * width);
    const std::string bar = "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] " +
                            std::to_string(static_cast<int>(part * 100)) + "% ";
    writeError("\r" + bar + fitting(what, bar.size()) + "\033[K");
    drawn_ = true;
}

void Progress::clear() {
    if (drawn_) writeError("\r\033[K");
    drawn_ = false;
}

struct BlocksDone::Shared {
    std::atomic<std::uint32_t> done;
    std::atomic<std::uint32_t> all;
};

BlocksDone::BlocksDone(std::size_t inputs) : bytes_(std::max<std::size_t>(inputs, 1) * sizeof(Shared)) {
    static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
    void* const memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    shared_ = memory == MAP_FAILED ? nullptr : static_cast<Shared*>(memory);
}

BlocksDone::~BlocksDone() {
    if (shared_) munmap(shared_, bytes_);
}

void BlocksDone::set(std::size_t input, Count count) {
    if (!shared_) return;
    shared_[input].done = static_cast<std::uint32_t>(count.done);
    shared_[input].all = static_cast<std::uint32_t>(count.all);
}

BlocksDone::Count BlocksDone::of(std::size_t input) const {
    if (!shared_) return {0, 0};
    const std::size_t all = shared_[input].all;
    return {std::min<std::size_t>(shared_[input].done, all), all};
}

} // namespace ntl
