#include "tools/ntl/Output.h"

#include "hdnt/platform/Text.h"
#include "tools/ntl/Status.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <utility>

namespace ntl {

using hdnt::platform::addPrintable;
using hdnt::platform::characters;

static bool colorByDescriptor[3] = {};

void openStandardStreams() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1) continue;
        const int opened = open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
        if (opened != -1 && opened != descriptor) close(opened);
    }
}

int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written > 0) text.remove_prefix(static_cast<size_t>(written));
        else if (written == 0 || errno != EINTR) return written == 0 ? EIO : errno;
    }
    return 0;
}

[[noreturn]] static void failOutput(int error) {
    throw Failure(Unusable, std::string("cannot write to standard output: ") + std::strerror(error));
}

void writeOutput(std::string_view text) {
    if (const int error = writeAll(STDOUT_FILENO, text)) failOutput(error);
}

static FILE* copyOfOutput() {
    if (write(STDOUT_FILENO, "", 0) == -1) failOutput(errno); // of a closed one, fdopen has only a vague reason
    const int descriptor = dup(STDOUT_FILENO);
    FILE* const stream = descriptor == -1 ? nullptr : fdopen(descriptor, "w");
    if (!stream) failOutput(errno);
    return stream;
}

ResultStream::ResultStream() : stream_(copyOfOutput()) {}

ResultStream::~ResultStream() {
    if (stream_) std::fclose(stream_);
}

void ResultStream::finish() {
    const bool failed = std::ferror(stream_) != 0;
    errno = 0;
    if (std::fclose(std::exchange(stream_, nullptr)) != 0 || failed) failOutput(errno != 0 ? errno : EIO);
}

void writeError(std::string_view text) { writeAll(STDERR_FILENO, text); }

void complain(const std::string& text) {
    writeError(colored(Color::Bold, "ntl:", STDERR_FILENO) + " " + printable(text) + "\n");
}

bool isDumbTerminal() {
    const char* const terminal = std::getenv("TERM");
    return terminal && std::strcmp(terminal, "dumb") == 0;
}

void setColors(const std::string& when) {
    const char* const noColor = std::getenv("NO_COLOR");
    const bool isWanted = when == "auto" && !(noColor && *noColor) && !isDumbTerminal();
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO})
        colorByDescriptor[descriptor] = when == "always" || (isWanted && isatty(descriptor) == 1);
}

std::string colored(Color color, const std::string& text, int descriptor) {
    static const char* const codes[] = {"", "\033[1m", "\033[2m", "\033[1;31m", "\033[1;33m"};
    if (color == Color::Plain || !colorByDescriptor[descriptor]) return text;
    return codes[static_cast<size_t>(color)] + text + "\033[0m";
}

void flushOutput() {
    std::cout.flush();
    std::fflush(stdout);
}

OutputToError::OutputToError() {
    flushOutput();
    saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (saved_ == -1 || dup2(STDERR_FILENO, STDOUT_FILENO) == -1)
        throw Failure(Unusable, std::string("cannot redirect standard output: ") + std::strerror(errno));
}

OutputToError::~OutputToError() {
    flushOutput();
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
}

void ErrorStream::gather() {
    constexpr size_t bufferSize = 65536;
    buffer_.resize(bufferSize);
    std::setvbuf(stderr, buffer_.data(), _IOFBF, buffer_.size());
    std::cerr.unsetf(std::ios::unitbuf);
}

ErrorStream::~ErrorStream() {
    if (buffer_.empty()) return;
    std::fflush(stderr);
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    std::cerr.setf(std::ios::unitbuf);
}

Table::Table(std::initializer_list<std::string_view> header, std::string indent)
    : indent_(std::move(indent)), widths_(header.size()) {
    add(header);
}

void Table::add(std::initializer_list<std::string_view> cells) {
    auto width = widths_.begin();
    for (const std::string_view cell : cells) {
        const size_t begin = texts_.size();
        addPrintable(texts_, cell);
        cells_.push_back({texts_.size(), characters(std::string_view(texts_).substr(begin))});
        *width = std::max(*width, cells_.back().width);
        ++width;
    }
}

void Table::addNote(const std::string& text) { notes_.emplace_back(cells_.size(), printable(text)); }

void Table::addRow(std::string& text, size_t cell) const {
    size_t gap = 0;
    for (const size_t width : widths_) {
        const size_t begin = cell == 0 ? 0 : cells_[cell - 1].end;
        const size_t length = cells_[cell].end - begin;
        if (length > 0) text.append(std::exchange(gap, 0), ' ').append(texts_, begin, length);
        gap += width + 2 - cells_[cell].width;
        ++cell;
    }
}

std::string Table::text() const {
    if (cells_.size() == widths_.size()) return {};
    std::string header;
    addRow(header, 0);
    std::string result = indent_ + colored(Color::Bold, header, STDOUT_FILENO) + "\n";
    auto note = notes_.begin();
    for (size_t cell = widths_.size(); cell < cells_.size();) {
        result.append(indent_);
        addRow(result, cell);
        result.append("\n");
        cell += widths_.size();
        for (; note != notes_.end() && note->first == cell; ++note)
            result.append(indent_).append(note->second).append("\n");
    }
    return result;
}

std::string counted(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string grouped(size_t count) {
    std::string digits = std::to_string(count);
    for (size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
    return digits;
}

} // namespace ntl
