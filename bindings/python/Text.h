#pragma once

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace hdnt::python {

/// What something writes to a stream.
template <typename Write>
std::string written(Write&& write) {
    struct Memory {
        char* bytes = nullptr;
        size_t size = 0;
        FILE* stream = open_memstream(&bytes, &size);
        ~Memory() {
            if (stream) std::fclose(stream);
            std::free(bytes);
        }
    } memory;
    if (!memory.stream) throw std::bad_alloc();
    write(memory.stream);
    if (std::fflush(memory.stream) != 0) throw std::bad_alloc();
    return {memory.bytes, memory.size};
}

} // namespace hdnt::python
