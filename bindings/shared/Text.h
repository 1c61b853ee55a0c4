#pragma once

#include "bindings/shared/LoadSection.h"
#include "hdnt/compare/HDNTComparison.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

class HDNTExpr;
class HDNTNode;

namespace hdnt::scripts {

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

// Of a library or a block, in a section.

std::string printedForm(HDNTNode& node);
/// NTL that reads back to the same. Throws when there is no such text.
std::string sourceForm(HDNTNode& node);

/// What changed from one library or block to another one, in a section of its own.
std::vector<HDNTDifference> differencesOf(ScriptLock& lock, const HDNTNode& before, const HDNTNode& after);

/// An expression as it is printed.
std::string textOf(HDNTExpr& expression);

} // namespace hdnt::scripts
