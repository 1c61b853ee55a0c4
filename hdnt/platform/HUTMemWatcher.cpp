#include "hdnt/platform/HUTMemWatcher.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

long residentKiB() {
    long pages = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(file, "%*d %ld", &pages) != 1) pages = 0;
        std::fclose(file);
    }
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace

HUTMemWatcher::HUTMemWatcher(const std::string& label, const std::string& detail)
    : active_(std::getenv("HDNT_MEMWATCH") != nullptr) {
    if (!active_) return;
    label_ = detail.empty() ? label : label + " (" + detail + ")";
    start_ = std::chrono::steady_clock::now();
    residentKiB_ = residentKiB();
}

HUTMemWatcher::~HUTMemWatcher() {
    if (!active_) return;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    const long now = residentKiB();
    std::fprintf(stderr, "%s: %.3f s, %ld KiB resident, %+ld KiB\n", label_.c_str(), seconds, now, now - residentKiB_);
}
