// Opens a plugin, and with it the library, uses it and closes both, over and over.
//   reopen PLUGIN LIBRARY [TIMES]
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#ifdef HDNT_SANITIZED
static constexpr bool judgesMemory = false; // they keep it
#else
static constexpr bool judgesMemory = true;
#endif

static long residentKilobytes() {
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    file >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

static int use(const char* plugin, const char* library) {
    void* const opened = dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
    if (!opened) return std::fprintf(stderr, "reopen: %s\n", dlerror()), -1;
    const auto numBlocks = reinterpret_cast<int (*)(const char*)>(dlsym(opened, "numBlocks"));
    const int blocks = numBlocks ? numBlocks(library) : -1;
    return dlclose(opened) == 0 ? blocks : -1;
}

int main(int count, char** arguments) {
    if (count < 3) return 2;
    const int times = count > 3 ? std::atoi(arguments[3]) : 1000;
    const int blocks = use(arguments[1], arguments[2]);
    long settled = 0;
    for (int i = 1; i < times; ++i) {
        if (blocks < 1 || use(arguments[1], arguments[2]) != blocks) return std::puts("reopen: other blocks"), 1;
        if (i == times / 10) settled = residentKilobytes();
    }
    const long grown = residentKilobytes() - settled;
    std::printf("reopen: %d times, %d blocks each, %ld KB more than after a tenth\n", times, blocks, grown);
    return judgesMemory && grown > 1024 ? 1 : 0;
}
