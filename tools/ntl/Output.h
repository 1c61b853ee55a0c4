#pragma once

#include "hdnt/platform/Text.h"

#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ntl {

/// Makes sure that descriptors 0 to 2 are taken, so that no file of ours gets one of their numbers. A closed standard
/// output stays one that cannot be written.
void openStandardStreams();

/// Writes to a descriptor. 0, or the errno of the first failure.
int writeAll(int descriptor, std::string_view text);

/// Writes a result to standard output, at once. Throws Failure(Unusable) when that is not possible.
void writeOutput(std::string_view text);

/// Writes to standard error, at once. What cannot be written is lost.
void writeError(std::string_view text);

/// "ntl: text" on standard error, with what is not printable escaped.
void complain(const std::string& text);

using hdnt::platform::joined, hdnt::platform::printable;

enum class Color { Plain, Bold, Faint, Red, Yellow };

/// "auto", "always" or "never".
void setColors(const std::string& when);
/// The text in that colour, if the stream of that descriptor is to be coloured.
std::string colored(Color color, const std::string& text, int descriptor);

/// Writes what the C and C++ streams of standard output hold.
void flushOutput();

/// Standard output goes where standard error goes for the lifetime of the object. What the C and C++ streams hold is
/// written before the switch and before the switch back.
class OutputToError {
public:
    OutputToError();
    ~OutputToError();
    OutputToError(const OutputToError&) = delete;
    OutputToError& operator=(const OutputToError&) = delete;

private:
    int saved_;
};

/// Standard error of the C and C++ streams, which writes each piece at once. From gather() on and for the lifetime of
/// the object it writes many at a time, which a process that is killed may lose.
class ErrorStream {
public:
    ErrorStream() = default;
    ~ErrorStream();
    ErrorStream(const ErrorStream&) = delete;
    ErrorStream& operator=(const ErrorStream&) = delete;

    void gather();

private:
    std::vector<char> buffer_;
};

/// A stream for a long result on standard output. While it lives, whatever else is printed there goes to standard
/// error, as with OutputToError.
class ResultStream {
public:
    /// Throws Failure(Unusable) when there is no standard output.
    ResultStream();
    ~ResultStream();
    ResultStream(const ResultStream&) = delete;
    ResultStream& operator=(const ResultStream&) = delete;

    FILE* get() { return stream_; }
    /// Writes what is left. Throws Failure(Unusable) when anything could not be written.
    void finish();

private:
    FILE* stream_;
    OutputToError redirect_;
};

/// Lines of cells in aligned columns. The last cell of a line is not padded.
class Table {
public:
    explicit Table(std::initializer_list<std::string_view> header, std::string indent = "");
    /// As many cells as the header has. They are made printable.
    void add(std::initializer_list<std::string_view> cells);
    /// A line of its own below the last row, not aligned.
    void addNote(const std::string& text);
    /// The header is in bold where standard output has colours; empty when nothing was added.
    std::string text() const;

private:
    struct Cell {
        size_t end;   ///< of its text, which begins where that of the cell before ends
        size_t width; ///< in characters
    };
    void addRow(std::string& text, size_t firstCell) const;

    std::string indent_;
    std::string texts_;
    std::vector<Cell> cells_;                           ///< line by line, the header first
    std::vector<size_t> widths_;                        ///< of the columns
    std::vector<std::pair<size_t, std::string>> notes_; ///< each with the cells before it
};

/// "1 error", "3 errors"
std::string counted(size_t count, const std::string& noun);

/// "12,345"
std::string grouped(size_t count);

/// Whether the terminal takes no control sequences: TERM is "dumb".
bool isDumbTerminal();

} // namespace ntl
