// What a host does for days, in a hurry: libraries are loaded and released over and over in flat memory, while threads
// read one that is finished, and the process forks.
//   lifetimes LIBRARY [--seconds S]     S for each of the two; sanitizers keep memory, so that it is not judged there
#include "hdnt/hdnt.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#ifdef HDNT_SANITIZED
static constexpr bool judgesMemory = false;
#else
static constexpr bool judgesMemory = true;
#endif

namespace {

using Clock = std::chrono::steady_clock;

long residentKilobytes() {
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    file >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

hdnt::Loaded loadChecked(const std::string& path) {
    hdnt::LoadOptions options;
    options.check = true;
    return hdnt::load(path, options);
}

/// The number of faults found.
int loadFor(const std::string& path, Clock::duration time) {
    const auto end = Clock::now() + time;
    int loads = 0;
    long settled = 0; // what is kept for the next time is there after a few
    for (; loads < 200 || (loads < 5000 && Clock::now() < end); ++loads) {
        if (!loadChecked(path)) return std::puts("lifetimes: a load failed"), 1;
        if (loads == 100) settled = residentKilobytes();
    }
    const long grown = residentKilobytes() - settled;
    std::printf("lifetimes: %d loads, %ld KB more than after the first hundred\n", loads, grown);
    return judgesMemory && grown > 1024 ? 1 : 0;
}

/// Each reader walks the whole finished library again and again; all walks have to see the same.
int readBesideLoads(const std::string& path, Clock::duration time) {
    const hdnt::Loaded finished = loadChecked(path);
    const std::string expected = HDNTModelTree(*finished.library).toBytes();
    const auto end = Clock::now() + time;
    std::atomic<int> walks{0};
    std::atomic<int> faults{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 16; ++i)
        readers.emplace_back([&] {
            do {
                if (HDNTModelTree(*finished.library).toBytes() != expected) ++faults;
                ++walks;
            } while (Clock::now() < end);
        });
    int loads = 0;
    for (; loads == 0 || Clock::now() < end; ++loads) {
        if (!loadChecked(path)) ++faults;
        int status = 0;
        const pid_t child = fork();
        if (child == 0) _exit(0);
        if (waitpid(child, &status, 0) != child || status != 0) ++faults;
    }
    for (std::thread& reader : readers) reader.join();
    std::printf("lifetimes: %d walks by 16 threads beside %d loads and forks, %d faults\n", walks.load(), loads,
                faults.load());
    return faults;
}

} // namespace

int main(int count, char** arguments) {
    if (count < 2) return 2;
    const std::chrono::duration<double> seconds(count > 3 ? std::strtod(arguments[3], nullptr) : 5);
    const auto time = std::chrono::duration_cast<Clock::duration>(seconds);
    const int faults = loadFor(arguments[1], time) + readBesideLoads(arguments[1], time);
    return faults > 0 ? 1 : 0;
}
