#include "tests/oracle/ScanRun.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/Scanner.h"
#include "tests/oracle/OracleState.h"
#include "tests/oracle/StdoutCapture.h"

#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>

namespace oracle {

namespace {

/// Hands out 1 to 7 bytes at a time, as a pipe or a decompressor may.
class SmallPieces : public std::streambuf {
public:
    explicit SmallPieces(const std::string& text) : text_(text) {}
    std::streamsize largestRead = 0;

protected:
    int_type underflow() override {
        if (position_ == text_.size()) return traits_type::eof();
        const size_t size = std::min(1 + position_ % 7, text_.size() - position_);
        char* begin = const_cast<char*>(text_.data()) + position_;
        setg(begin, begin, begin + size);
        position_ += size;
        return traits_type::to_int_type(*begin);
    }
    std::streamsize xsgetn(char* to, std::streamsize count) override {
        largestRead = std::max(largestRead, count);
        return std::streambuf::xsgetn(to, count);
    }

private:
    const std::string& text_;
    size_t position_ = 0;
};

Place placeOf(const yyltype& location) {
    Place place{std::nullopt, location.fileLine, location.first_line, location.first_column, location.last_column};
    if (location.fileName) place.file = location.fileName;
    return place;
}

class Collector : public HDNTErrorListener {
public:
    explicit Collector(ScanResult& result) : result_(result), previous_(HDNTError::setListener(this)) {}
    ~Collector() override { HDNTError::setListener(previous_); }
    bool report(const HDNTReport& report) override {
        result_.reports.push_back({report.location ? placeOf(*report.location) : Place{}, std::string(report.message)});
        return true;
    }
    void notice(const HDNTNotice& notice) override { result_.notices.push_back(static_cast<int>(notice.kind)); }

private:
    ScanResult& result_;
    HDNTErrorListener* previous_;
};

/// A memory file for the echo.
class EchoFile {
public:
    EchoFile() : file_(open_memstream(&text_, &size_)) {}
    ~EchoFile() {
        std::fclose(file_);
        std::free(text_);
    }
    FILE* file() { return file_; }
    std::string text() {
        std::fflush(file_);
        return {text_, size_};
    }

private:
    char* text_ = nullptr;
    size_t size_ = 0;
    FILE* file_;
};

/// The library's input for one scan; taken back at the end.
class LibraryInput {
public:
    LibraryInput(const std::string& text, Feed feed) : feed_(feed), pieces_(text), stream_(text), small_(&pieces_) {
        if (feed == Feed::SetIn) yylex_destroy();
        if (feed == Feed::Bytes) buffer_ = yy_scan_bytes(text.data(), static_cast<int>(text.size()));
        if (feed == Feed::Stream) yyrestart(&stream_);
        if (feed == Feed::SmallPieces) yyrestart(&small_);
        if (feed == Feed::SetIn) yyset_in(&stream_);
    }
    ~LibraryInput() {
        if (buffer_) yy_delete_buffer(buffer_);
        if (feed_ != Feed::Bytes) yyrestart(nullptr);
    }
    LibraryInput(const LibraryInput&) = delete;
    LibraryInput& operator=(const LibraryInput&) = delete;
    bool readTooMuch() const { return pieces_.largestRead > 8192; }

private:
    Feed feed_;
    SmallPieces pieces_;
    std::istringstream stream_;
    std::istream small_;
    YY_BUFFER_STATE buffer_ = nullptr;
};

void setTopLevelName(const ScanInput& input) {
    std::free(ntl_parse_top_level_file);
    ntl_parse_top_level_file = input.fileName ? strdup(input.fileName->c_str()) : nullptr;
}

Token libraryToken(int number) {
    Token token;
    token.number = number;
    token.place = placeOf(HDNTParserlloc);
    if (number == 0) return token;
    token.match.assign(yyget_text(), static_cast<size_t>(yyget_leng()));
    switch (number) {
    case T_Identifier: token.text = HDNTParserlval.identifier; break;
    case T_StringConstant:
    case T_HexConstant:
    case T_BinaryConstant:
        token.text = *HDNTParserlval.text;
        delete HDNTParserlval.text;
        break;
    case T_IntConstant: token.bits = static_cast<std::uint32_t>(HDNTParserlval.intValue); break;
    case T_DoubleConstant: token.bits = std::bit_cast<std::uint64_t>(HDNTParserlval.doubleValue); break;
    case T_BoolConstant: token.bits = HDNTParserlval.boolValue; break;
    default: break;
    }
    return token;
}

bool hasValue(int number) { return (number >= T_Identifier && number <= T_BoolConstant); }

std::string describe(const std::string& text) { return std::string("\"").append(readable(text)).append("\""); }

using ValueBytes = std::array<unsigned char, sizeof(NtlTokenValue)>;
constexpr size_t MostTokens = 2000000; // of a text within the limits, whatever it includes

/// Pulls the tokens; also watches that a token without a value leaves the value alone.
void pullTokens(ScanResult& result) {
    for (;;) {
        const auto before = std::bit_cast<ValueBytes>(HDNTParserlval);
        const int number = HDNTParserlex();
        if (!hasValue(number) && before != std::bit_cast<ValueBytes>(HDNTParserlval))
            result.failure = "token " + std::to_string(number) + " changed the value";
        result.tokens.push_back(libraryToken(number));
        if (number == 0) return;
        if (result.tokens.size() > MostTokens) {
            result.failure = "no end of input";
            return;
        }
    }
}

/// Reads the line store back. Nothing exported tells its size but the number before the last line printed.
void readLines(ScanResult& result, StdoutCapture& out) {
    NtlPrintLines();
    const std::string printed = out.take();
    const size_t last = printed.empty() ? 0 : printed.rfind('\n', printed.size() - 2) + 1;
    const size_t count = std::strtoul(printed.c_str() + last, nullptr, 10);
    for (size_t n = 1; n <= count; ++n) result.lines.push_back(NtlGetLineNumbered(n));

    std::string expected;
    for (size_t n = count > 11 ? count - 10 : 1; n <= count; ++n)
        expected.append(std::to_string(n)).append(": ").append(untilNul(result.lines[n - 1])).append("\n");
    if (printed != expected) result.failure = "NtlPrintLines printed " + describe(printed);
}

void describe(std::ostream& to, const Place& place) {
    to << (place.file ? *place.file : "(none)") << ":" << place.fileLine << " line " << place.line << " columns "
       << place.firstColumn << "-" << place.lastColumn;
}

std::string describe(const Token& token) {
    std::ostringstream text;
    text << token.number << " \"" << readable(token.match) << "\" value \"" << readable(token.text) << "\" " << std::hex
         << token.bits << std::dec << " at ";
    describe(text, token.place);
    return text.str();
}

std::string describe(const Report& report) {
    std::ostringstream text;
    text << readable(report.message) << " at ";
    describe(text, report.place);
    return text.str();
}

std::string describe(int number) { return std::to_string(number); }

template <typename T>
std::string firstDifference(const char* what, const std::vector<T>& expected, const std::vector<T>& actual) {
    if (expected == actual) return {};
    size_t i = 0;
    while (i < expected.size() && i < actual.size() && expected[i] == actual[i]) ++i;
    std::ostringstream text;
    text << what << " " << i + 1 << " of " << expected.size() << " expected, " << actual.size()
         << " found\n  expected: " << (i < expected.size() ? describe(expected[i]) : "none")
         << "\n  found:    " << (i < actual.size() ? describe(actual[i]) : "none") << "\n";
    return text.str();
}

/// Starts a scan and gives it up after some tokens: the next one must not notice.
void giveUpScan(const ScanInput& input, Feed feed, size_t tokens) {
    ScanResult ignored;
    StdoutCapture out;
    Collector collector(ignored);
    setTopLevelName(input);
    LibraryInput source(input.text, feed);
    NtlInitScanner();
    for (int number = 1; number != 0 && tokens > 0; --tokens) {
        number = HDNTParserlex();
        libraryToken(number);
    }
}

} // namespace

ScanResult scanWithOracle(const ScanInput& input, bool echoToStdout) {
    OracleState& state = OracleState::instance();
    state.start(input, echoToStdout);
    ntloracleStart();
    while (ntloracleNext() != 0) {
    }
    ntloracleStop();
    return std::move(state.result);
}

ScanResult scanWithLibrary(const ScanInput& input, Feed feed, bool echoToStdout) {
    ScanResult result;
    EchoFile echo;
    StdoutCapture out;
    Collector collector(result);
    const int errorsBefore = HDNTError::numErrors;

    NtlFreeScannerMem();
    setTopLevelName(input);
    const bool initFirst = input.text.size() % 2 == 1;
    if (initFirst && feed != Feed::SetIn) NtlInitScanner();
    {
        LibraryInput source(input.text, feed);
        yyset_out(echoToStdout ? nullptr : echo.file());
        if (!initFirst || feed == Feed::SetIn) NtlInitScanner();
        pullTokens(result);
        if (source.readTooMuch()) result.failure = "a stream was read in pieces of more than 8192 bytes";
        result.printed = out.take();
        result.echoed = echo.text();
        const size_t notices = result.notices.size();
        if (HDNTParserlex() != 0) result.failure = "a token after the end of input";
        result.notices.resize(notices);
    }
    out.take();
    yyset_out(nullptr);
    if (HDNTError::numErrors - errorsBefore != static_cast<int>(result.reports.size()))
        result.failure = "the error counter does not agree with the reports";
    result.opened = NtlOpenedFiles();
    readLines(result, out);
    return result;
}

void addSearchDirectory(const std::string& directory) {
    OracleState::instance().addSearchDirectory(directory);
    NtlAddSearchDirectory(directory);
}

std::string firstDifference(const ScanResult& expected, const ScanResult& actual) {
    std::string text = firstDifference("token", expected.tokens, actual.tokens);
    text += firstDifference("report", expected.reports, actual.reports);
    text += firstDifference("stored line", expected.lines, actual.lines);
    text += firstDifference("opened file", expected.opened, actual.opened);
    text += firstDifference("notice", expected.notices, actual.notices);
    if (expected.printed != actual.printed)
        text +=
            "printed\n  expected: " + describe(expected.printed) + "\n  found:    " + describe(actual.printed) + "\n";
    if (expected.echoed != actual.echoed)
        text += "echoed\n  expected: " + describe(expected.echoed) + "\n  found:    " + describe(actual.echoed) + "\n";
    if (!actual.failure.empty()) text += actual.failure + "\n";
    return text;
}

std::string compareScanners(const ScanInput& input, unsigned feeds, bool echoToStdout) {
    static const char* const names[NumFeeds] = {"yy_scan_bytes", "yyrestart", "yyrestart in small pieces", "yyset_in"};
    const size_t namesBefore = OracleState::instance().includedNames();
    ScanResult expected = scanWithOracle(input, echoToStdout);
    const bool repeatable = OracleState::instance().includedNames() == namesBefore;
    bool fresh = true;
    for (int number = 0; number < NumFeeds; ++number) {
        if (!(feeds >> number & 1)) continue;
        const Feed feed = static_cast<Feed>(number);
        if (!fresh && !repeatable) expected = scanWithOracle(input, echoToStdout);
        fresh = false;
        if (repeatable) giveUpScan(input, feed, expected.tokens.size() / 2);
        const ScanResult actual = scanWithLibrary(input, feed, echoToStdout);
        const std::string difference = firstDifference(expected, actual);
        if (!difference.empty()) return std::string("input by ") + names[number] + "\n" + difference;
    }
    return {};
}

std::string untilNul(const std::string& text) { return text.substr(0, text.find('\0')); }

std::string readable(std::string_view text) {
    constexpr size_t Longest = 2000;
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.size() > Longest && i == Longest / 2) {
            result += " ... " + std::to_string(text.size() - Longest) + " bytes ... ";
            i = text.size() - Longest / 2;
        }
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '\n') result += "\\n";
        else if (c == '\t') result += "\\t";
        else if (c == '\\') result += "\\\\";
        else if (c >= ' ' && c < 127) result += text[i];
        else {
            static const char digits[] = "0123456789abcdef";
            result += {'\\', 'x', digits[c >> 4], digits[c & 15]};
        }
    }
    return result;
}

} // namespace oracle
