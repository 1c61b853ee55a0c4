#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Runs one text through the library's scanner or through the generated one and records all that can be seen from
/// outside, so that both records can be held against each other.
namespace oracle {

struct Place {
    std::optional<std::string> file; ///< empty when the location has no file name
    int fileLine = 0;
    int line = 0;
    int firstColumn = 0;
    int lastColumn = 0;
    bool operator==(const Place&) const = default;
};

struct Token {
    int number = 0;
    std::string match;      ///< the text behind the token; empty at the end of input
    std::string text;       ///< value of identifiers, strings, hex and binary constants
    std::uint64_t bits = 0; ///< value of the other constants, as its bit pattern
    Place place;
    bool operator==(const Token&) const = default;
};

struct Report {
    Place place;
    std::string message;
    bool operator==(const Report&) const = default;
};

struct ScanResult {
    std::vector<Token> tokens; ///< the last one is the end of input
    std::vector<Report> reports;
    std::vector<std::string> lines;  ///< the line store
    std::vector<std::string> opened; ///< files opened, in order
    std::vector<int> notices;        ///< kinds of what was passed over, as HDNTNotice numbers them
    std::string printed;             ///< standard output, with the echo in its place when that goes there
    std::string echoed;              ///< the scanner's output file, when the echo is caught apart
    std::string failure;             ///< a contract broken that is not part of any record
};

struct ScanInput {
    std::string text;
    std::optional<std::string> fileName; ///< name of the top-level input
};

/// How the library gets its text.
enum class Feed {
    Bytes,       ///< yy_scan_bytes
    Stream,      ///< yyrestart with a string stream
    SmallPieces, ///< yyrestart with a stream that hands out 1 to 7 bytes at a time
    SetIn,       ///< yyset_in on a scanner that was reset before
};
constexpr int NumFeeds = 4;

/// `echoToStdout`: the echo goes to standard output, as when no output file was set; else it is caught apart.
///
/// Both sides keep the names that INCLUDE found for the life of the process, as they must: a text that includes files
/// by name is to be scanned equally often by both.
ScanResult scanWithOracle(const ScanInput& input, bool echoToStdout);
ScanResult scanWithLibrary(const ScanInput& input, Feed feed, bool echoToStdout);

/// Adds a directory on both sides.
void addSearchDirectory(const std::string& directory);

/// What differs first, for people; empty when nothing does.
std::string firstDifference(const ScanResult& expected, const ScanResult& actual);
/// Scans with both sides, the library once by each feed of the mask, and describes the first difference.
std::string compareScanners(const ScanInput& input, unsigned feeds, bool echoToStdout);

/// The text as printf's %s takes it.
std::string untilNul(const std::string& text);
/// Control and high bytes as escapes, cut in the middle when long.
std::string readable(std::string_view text);

} // namespace oracle
