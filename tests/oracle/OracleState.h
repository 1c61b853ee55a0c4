#pragma once

#include "tests/oracle/ScanRun.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace oracle {

/// What the generated scanner works on beside its tables: counters, line store, file stack, reports. It shares no code
/// and no data with the library, not even the token numbers: a mistake made there must not be made here as well.
class OracleState {
public:
    enum class Splice { Skipped, NotFound, NotOpened, Opened };

    static OracleState& instance();
    void start(const ScanInput& input, bool echoToStdout);
    /// Bytes of the current input for the generated scanner's buffer.
    int read(char* buffer, int size);

    void beforeAction(const char* text, int length);
    void newline();
    void tab();
    void captureLine(const char* text, int length);
    void captureEmptyLine();

    void lookForFile(const std::string& statement, bool once);
    Splice splice() const { return splice_; }
    /// False when there is no file to return to.
    bool returnFromFile();
    void traceEndOfInput();

    int identifier(const char* text, int length);
    int integer(const char* text);
    int real(const char* text);
    int boolean(bool value);
    int text(int token, const char* begin, int length);
    void unrecognised(char c);
    void unterminatedString(const char* text);
    void unterminatedComment();
    void echo(char c);

    void addSearchDirectory(const std::string& directory) { directories_.push_back(directory); }
    void finishToken(int number, const char* text, int length);

    /// Names that INCLUDE found so far, in all scans.
    size_t includedNames() const { return included_.size(); }

    ScanResult result;
    bool ended = false;

private:
    struct Source {
        std::string bytes;
        size_t position = 0;
    };
    struct Open {
        Source source;
        std::optional<std::string> file;
        int line;
    };

    void line(int nextLine);
    void print(std::initializer_list<std::string_view> texts);
    std::string find(const std::string& name);
    bool readFile(const std::string& path, std::string& bytes) const;

    Source source_;
    std::optional<std::string> file_;
    std::vector<Open> outer_;
    std::vector<std::string> directories_;
    std::unordered_set<std::string> included_;
    Place place_;
    Token token_;
    Splice splice_ = Splice::Skipped;
    int fileLine_ = 1;
    int globalLine_ = 1;
    int echoedLine_ = 0;
    int column_ = 1;
    bool pending_ = false;
    bool debug_ = false;
    bool echoToStdout_ = false;
};

// The generated scanner.
int ntloracleNext();
void ntloracleStart();
void ntloracleStop();

} // namespace oracle
