#include "tools/ntl/Progress.h"

#include "tools/ntl/Output.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace ntl {

Progress::Progress(std::uintmax_t total)
    : enabled_(isatty(STDERR_FILENO) == 1 && !isDumbTerminal()), total_(std::max<std::uintmax_t>(total, 1)) {}

void Progress::show(std::uintmax_t done) {
    if (!enabled_) return;
    const double passed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    // Until something is done nothing is known; work that took a second may well take another.
    const double left = part > 0 ? passed * (1 - part) / part : passed;
    if (passed < 0.3 || left <= 1.0) return clear();
    constexpr size_t width = 40;
    const auto filled = static_cast<size_t>(part * width);
    writeError("\r[" + std::string(filled, '#') + std::string(width - filled, '.') + "] " +
               std::to_string(static_cast<int>(part * 100)) + "% ");
    drawn_ = true;
}

void Progress::clear() {
    if (drawn_) writeError("\r\033[K");
    drawn_ = false;
}

} // namespace ntl
