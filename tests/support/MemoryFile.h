#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace support {

/// Bytes as a file that is on no disk.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view bytes) : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
        require(descriptor_ >= 0, "memfd_create");
        require(write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write");
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string path() const { return std::string("/proc/self/fd/").append(std::to_string(descriptor_)); }

private:
    static void require(bool ok, const char* what) {
        if (ok) return;
        std::perror(what);
        std::exit(3);
    }
    int descriptor_;
};

} // namespace support
