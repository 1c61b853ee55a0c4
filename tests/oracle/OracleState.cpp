#include "tests/oracle/OracleState.h"

#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace oracle {

constexpr size_t DeepestFile = 256;

// The kinds in the order of HDNTNotice::Kind.
enum Notice {
    IncludeSkipped,
    IncludeNotFound,
    IncludeNotOpened,
    UnterminatedString,
    UnterminatedComment,
    IncludeText = 6,
    FileOpened = 8,
    IncludeTrailingText = 9,
    NumberOverflow = 10
};

OracleState& OracleState::instance() {
    static OracleState state;
    return state;
}

void OracleState::start(const ScanInput& input, bool echoToStdout) {
    result = {};
    source_ = {input.text, 0};
    file_ = input.fileName;
    outer_.clear();
    place_ = {file_, 0, 0, 0, 0};
    fileLine_ = globalLine_ = column_ = 1;
    echoedLine_ = 0;
    pending_ = ended = false;
    echoToStdout_ = echoToStdout;
    debug_ = std::getenv("NTL_DEBUG") != nullptr;
    token_ = {};
    if (file_) result.opened.push_back(*file_);
}

int OracleState::read(char* buffer, int size) {
    const size_t count = std::min(source_.bytes.size() - source_.position, static_cast<size_t>(size));
    std::memcpy(buffer, source_.bytes.data() + source_.position, count);
    source_.position += count;
    return static_cast<int>(count);
}

void OracleState::beforeAction(const char*, int length) {
    place_.file = file_;
    place_.fileLine = fileLine_;
    place_.line = globalLine_;
    place_.firstColumn = column_;
    place_.lastColumn = column_ + length - 1;
    column_ += length;
}

void OracleState::print(std::initializer_list<std::string_view> texts) {
    for (const std::string_view text : texts) result.printed += text;
}

void OracleState::line(int nextLine) {
    fileLine_ = nextLine;
    ++globalLine_;
    column_ = 1;
}

void OracleState::newline() {
    line(fileLine_ + 1);
    pending_ = true;
}

void OracleState::tab() { column_ = column_ - column_ % 8 + 9; }

void OracleState::captureLine(const char* text, int length) {
    pending_ = false;
    result.lines.emplace_back(text, static_cast<size_t>(length));
    column_ = 1;
}

void OracleState::captureEmptyLine() {
    line(fileLine_ + 1);
    result.lines.emplace_back();
}

std::string OracleState::find(const std::string& name) {
    struct stat status;
    if (name.find('\0') != std::string::npos) return {};
    if (name[0] == '/') return stat(name.c_str(), &status) == 0 ? name : std::string();
    for (const std::string& directory : directories_) {
        std::string candidate = directory;
        candidate.append("/").append(name);
        if (debug_) print({"file element: ", candidate, "\n"});
        if (stat(candidate.c_str(), &status) == 0) return candidate;
    }
    return {};
}

bool OracleState::readFile(const std::string& path, std::string& bytes) const {
    if (outer_.size() >= DeepestFile) return false;
    struct stat status;
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return false;
    bytes.assign(std::istreambuf_iterator<char>(stream), {});
    return true;
}

static std::string withoutComments(std::string text) {
    for (size_t at = text.find('/'); at != text.npos; at = text.find('/', at + 1)) {
        if (text.compare(at, 2, "//") == 0) text.erase(at);
        const size_t end = text.compare(at, 2, "/*") == 0 ? text.find("*/", at + 2) : text.npos;
        if (end != text.npos) text.replace(at, end + 2 - at, " ");
        if (at >= text.size()) break;
    }
    return text;
}

// Whether the line of a name has more than what is lost without harm.
static bool losesText(const std::string& behindName) {
    std::string rest = withoutComments(behindName);
    if (const size_t semicolon = rest.find(';'); semicolon != rest.npos) rest[semicolon] = ' ';
    return rest.find_first_not_of(" \t\r\n") != rest.npos;
}

void OracleState::lookForFile(const std::string& statement, bool once) {
    const size_t begin = statement.find_first_not_of(" \t");
    const size_t end = statement.find_first_of(" \t;", begin);
    const std::string name = statement.substr(begin, end - begin);
    if (losesText(statement.substr(end))) result.notices.push_back(IncludeTrailingText);
    const char* const keyword = once ? "INCLUDE" : "INLINE";
    pending_ = true;
    if (once && included_.count(name)) {
        splice_ = Splice::Skipped;
        result.notices.push_back(IncludeSkipped);
        return line(fileLine_ + 1);
    }
    const std::string path = find(name);
    if (path.empty()) {
        splice_ = Splice::NotFound;
        result.notices.push_back(IncludeNotFound);
        print({"Could not find ", keyword, " file: ", untilNul(name), " . check NTL_PATH\n"});
        return line(fileLine_ + 1);
    }
    if (debug_) print({"CURRENT FILE IS ", path, "\n"});
    std::string bytes;
    const bool opened = readFile(path, bytes);
    print({"\t Loading File : ", path, "\n"});
    if (once) included_.insert(name);
    if (!opened) {
        splice_ = Splice::NotOpened;
        result.notices.push_back(IncludeNotOpened);
        print({"file ", path, " could not be opened\n"});
        return line(fileLine_ + 1);
    }
    splice_ = Splice::Opened;
    outer_.push_back({std::move(source_), file_, fileLine_});
    source_ = {std::move(bytes), 0};
    file_ = path;
    result.notices.push_back(FileOpened);
    result.opened.push_back(path);
    line(1);
}

void OracleState::traceEndOfInput() {
    if (debug_) print({"FILE ENDED\n"});
}

bool OracleState::returnFromFile() {
    if (outer_.empty()) return false;
    source_ = std::move(outer_.back().source);
    file_ = outer_.back().file;
    fileLine_ = outer_.back().line + 1;
    outer_.pop_back();
    if (!pending_) {
        ++globalLine_;
        column_ = 1;
    }
    pending_ = true;
    return true;
}

int OracleState::identifier(const char* text, int length) {
    if (length >= 32) result.reports.push_back({place_, "Identifier too long: \"" + std::string(text) + "\""});
    token_.text.assign(text, static_cast<size_t>(std::min(length, 31)));
    return 273;
}

int OracleState::integer(const char* text) {
    const long value = std::strtol(text, nullptr, 10);
    token_.bits = static_cast<std::uint32_t>(value);
    if (value != static_cast<std::int32_t>(value)) result.notices.push_back(NumberOverflow);
    return 277;
}

int OracleState::real(const char* text) {
    const double value = std::strtod(text, nullptr);
    token_.bits = std::bit_cast<std::uint64_t>(value);
    if (std::isinf(value)) result.notices.push_back(NumberOverflow);
    return 278;
}

int OracleState::boolean(bool value) {
    token_.bits = value;
    return 279;
}

int OracleState::text(int token, const char* begin, int length) {
    token_.text.assign(begin, static_cast<size_t>(length));
    return token;
}

void OracleState::unrecognised(char c) {
    result.reports.push_back({place_, std::string("Unrecognized char: '") + c + "'"});
}

void OracleState::unterminatedString(const char* text) {
    result.notices.push_back(UnterminatedString);
    print({text, "\nUnterminated string constant\n"});
}

void OracleState::unterminatedComment() {
    result.notices.push_back(UnterminatedComment);
    print({"Unterminated comment\n"});
}

void OracleState::echo(char c) {
    if (echoedLine_ != globalLine_) result.notices.push_back(IncludeText); // once a line
    echoedLine_ = globalLine_;
    (echoToStdout_ ? result.printed : result.echoed) += c;
}

void OracleState::finishToken(int number, const char* text, int length) {
    token_.number = number;
    token_.match.assign(text ? text : "", text ? static_cast<size_t>(length) : 0);
    token_.place = place_;
    result.tokens.push_back(std::move(token_));
    token_ = {};
}

} // namespace oracle
