#include "tests/oracle/StdoutCapture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace oracle {

static void require(bool ok, const char* what) {
    if (ok) return;
    std::perror(what);
    std::exit(3);
}

static void flush() {
    std::cout.flush();
    std::fflush(stdout);
}

static int memoryFile() {
    static const int file = memfd_create("standard output", MFD_CLOEXEC);
    require(file >= 0, "memfd_create");
    return file;
}

StdoutCapture::StdoutCapture() {
    flush();
    saved_ = dup(1);
    require(saved_ >= 0 && dup2(memoryFile(), 1) == 1, "redirecting standard output");
}

StdoutCapture::~StdoutCapture() {
    take();
    require(dup2(saved_, 1) == 1, "restoring standard output");
    close(saved_);
}

std::string StdoutCapture::take() {
    flush();
    const off_t size = lseek(memoryFile(), 0, SEEK_CUR);
    if (size == 0) return {};
    std::string text(static_cast<size_t>(size), '\0');
    require(pread(memoryFile(), text.data(), text.size(), 0) == size, "reading back standard output");
    require(ftruncate(memoryFile(), 0) == 0 && lseek(memoryFile(), 0, SEEK_SET) == 0, "emptying standard output");
    return text;
}

} // namespace oracle
