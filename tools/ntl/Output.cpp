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

using hdnt::platform::characters;
using hdnt::platform::continuesCharacter;

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

// Length of the UTF-8 character at the start of the text; 0 when there is none, or it is a control character.
static size_t printableLength(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return first >= 0x20 && first != 0x7f ? 1 : 0;
    const size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
    for (size_t i = 1; i < length; ++i)
        if (!continuesCharacter(text[i])) return 0;
    const unsigned char second = byte(1);
    const bool overlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool outside = (first == 0xed && second > 0x9f) || (first == 0xf4 && second > 0x8f);
    const bool control = first == 0xc2 && second < 0xa0;
    return overlong || outside || control ? 0 : length;
}

static bool isPlain(char c) { return c >= ' ' && c <= '~'; }

static void addPrintable(std::string& result, std::string_view text) {
    while (!text.empty()) {
        const auto plain = static_cast<size_t>(std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
        const size_t length = plain > 0 ? plain : printableLength(text);
        if (length > 0) {
            result += text.substr(0, length);
        } else if (text[0] == '\n' || text[0] == '\t') {
            result += text[0] == '\n' ? "\\n" : "\\t";
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02x",
                          static_cast<unsigned>(static_cast<unsigned char>(text[0])));
            result += escaped;
        }
        text.remove_prefix(std::max<size_t>(length, 1));
    }
}

std::string printable(std::string_view text) {
    std::string result;
    addPrintable(result, text);
    return result;
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

std::string joined(const std::vector<std::string>& items, const std::string& separator) {
    std::string result;
    for (const std::string& item : items) result += (&item == &items.front() ? "" : separator) + item;
    return result;
}

} // namespace ntl
