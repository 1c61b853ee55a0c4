#pragma once

#include "hdnt/model/HDNTLibrary.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace support {

/// What an action writes to the stream it is given.
inline std::string writtenBy(const std::function<void(FILE*)>& action) {
    char* bytes = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&bytes, &size);
    action(stream);
    std::fclose(stream);
    std::string text(bytes, size);
    std::free(bytes);
    return text;
}

inline std::string printed(HDNTLibrary& library) {
    return writtenBy([&](FILE* stream) { library.print(stream); });
}

/// Fails with the first problem as the text.
inline std::string source(HDNTLibrary& library) {
    std::vector<std::string> problems;
    std::string text = writtenBy([&](FILE* stream) { library.printSource(stream, &problems); });
    return problems.empty() ? text : "cannot be written: " + problems.front();
}

} // namespace support
