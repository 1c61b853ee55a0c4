#pragma once

#include <unistd.h>

#include <cstdio>
#include <functional>
#include <iostream>
#include <string>

namespace support {

struct Printed {
    std::string out;
    std::string err;
};

inline std::string slurp(FILE* file) {
    std::string text(static_cast<size_t>(lseek(fileno(file), 0, SEEK_END)), '\0');
    const ssize_t length = pread(fileno(file), text.data(), text.size(), 0);
    text.resize(length < 0 ? 0 : static_cast<size_t>(length));
    return text;
}

/// What an action prints to the two standard descriptors, whoever writes there.
inline Printed printedBy(const std::function<void()>& action) {
    FILE* const files[] = {std::tmpfile(), std::tmpfile()};
    const auto flush = [] {
        std::cout.flush();
        std::cerr.flush();
        std::fflush(nullptr);
    };
    flush();
    int saved[2];
    for (int i = 0; i < 2; ++i) {
        saved[i] = dup(i + 1);
        dup2(fileno(files[i]), i + 1);
    }
    action();
    flush();
    for (int i = 0; i < 2; ++i) {
        dup2(saved[i], i + 1);
        close(saved[i]);
    }
    Printed printed{slurp(files[0]), slurp(files[1])};
    for (FILE* file : files) std::fclose(file);
    return printed;
}

} // namespace support
