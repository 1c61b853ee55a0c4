#pragma once

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/frontend/Scanner.h"

#include <istream>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// One input: a text in memory, or a stream whose text is read piece by piece and kept.
struct yy_buffer_state {
    std::shared_ptr<hdnt::diagnostics::SourceText> text = std::make_shared<hdnt::diagnostics::SourceText>();
    std::istream* input = nullptr; ///< null: the text is complete
    size_t position = 0;           ///< of the next byte to scan, written back when another input becomes current
    bool ownedByScanner = false;   ///< made for an included file, or for a stream that was set without a buffer
};

namespace hdnt::frontend {

using diagnostics::LineStore;
using diagnostics::SourceText;

/// Prints the text to standard error and ends the process with status 2: for faults that no input can cause.
[[noreturn]] void fatal(const char* text);

/// The scanner behind HDNTParserlex. Internal; one instance, never destroyed.
///
/// It works line by line: LINE_CAPTURE finds the end of the coming line, stores the line, and the tokens of the line
/// are then read between two pointers. So each byte is looked at a fixed number of times, however long a line is, and
/// a stream never has to be refilled inside a token.
class Scanner {
public:
    static Scanner& instance() {
        static Scanner* const scanner =
            new Scanner; // never destroyed: its tables stay reachable until the process ends
        return *scanner;
    }

    int next();

    void init();
    void destroy();

    /// Lays a complete text over the current input; endText drops it with all that it opened. File names, line store
    /// and included names stay.
    void beginText(std::shared_ptr<SourceText> text);
    void endText();
    /// Replaces the input of the current buffer.
    void restart(std::istream* input);
    /// A stream for the current buffer if nothing was read from it yet or all of it was, else for the next one.
    void setInput(std::istream* input);
    std::istream* input() const { return input_; }

    void switchTo(yy_buffer_state* buffer);
    void push(yy_buffer_state* buffer);
    void pop();
    void forget(yy_buffer_state* buffer);
    void flush(yy_buffer_state* buffer);

    FILE* output() const { return output_ ? output_ : stdout; }
    void setOutput(FILE* output) { output_ = output; }
    int matchLength() const { return static_cast<int>(matchLength_); }
    char* matchText();
    bool debug() const { return debug_; }
    void setDebug(bool on) { debug_ = on; }

    /// While on, locations bear the number of lines stored before their text, and opened files accumulate: the texts
    /// of one folder make one library.
    void setFolderMode(bool on) {
        folderMode_ = on;
        if (on) files_.opened.clear();
    }
    /// What the locations of coming texts bear instead, when it is below 0: see FilteredText.
    void setFilteredText(int storeOffset) { filteredText_ = storeOffset; }

    /// What one scan leaves to the next: where files are searched, and which were opened.
    struct Files {
        std::unordered_set<std::string> included; ///< a name is brought in once
        std::vector<std::string> searchDirectories;
        std::vector<std::string> opened;
    };
    Files& files() { return files_; }

    /// What next() returns beside tokens while pieces are wanted.
    enum Piece : int { LineComment = -2, BlockComment = -3, FileStatement = -4 };
    /// While on, a text is taken apart instead of read: comments, and INCLUDE and INLINE statements with their newline,
    /// come out like tokens, no file is opened, nothing is printed, and no line is stored. To be set before init().
    void setPieces(bool on) { pieces_ = on; }
    /// Where the match behind the last token or piece begins in its text.
    size_t matchOffset() const { return matchStart_; }
    /// Where the last comment or statement began, and whether the text ended inside a statement.
    size_t pieceOffset() const { return pieceStart_; }
    bool endedInStatement() const { return state_ == State::IncludeFile || state_ == State::InlineFile; }

    std::string findFile(const std::string& name) const;
    void addSearchDirectory(const std::string& directory) { files_.searchDirectories.push_back(directory); }
    const std::vector<std::string>& openedFiles() const { return files_.opened; }

private:
    enum class State : unsigned char { Initial, Normal, LineCapture, Comment, IncludeFile, InlineFile };
    struct SavedInput {
        yy_buffer_state* buffer;
        const char* fileName;
        int line;
    };
    static constexpr int StateChanged = -1;

    // Scanner.cpp
    [[gnu::always_inline]] inline int scanText(); // the loop of next()
    int scanBesideText();
    int scanNumber(const char* start, bool negative);
    int scanLongInteger(const char* start, const char* end);
    void overflown(const char* start, const char* end, const std::string& readAs) const;
    int scanString(const char* start);
    int scanWord(const char* start);
    int acceptIdentifier(const char* start, const char* end);
    int scanOperator(const char* start);
    void captureLine();
    int skipComment();
    int accept(const char* start, const char* end, int token);
    int endPiece(Piece piece);
    void locate(ptrdiff_t offset, ptrdiff_t length);
    int column() const { return static_cast<int>(cursor_ - textBegin_ - columnZero_); }
    void setColumn(int column) { columnZero_ = cursor_ - textBegin_ - column; }
    void newline();
    void endLine();
    void tab();
    void pushState(State state);
    void popState();

    // ScannerInput.cpp
    void load();
    void unload();
    void closeIncludes();
    void dropSaved();
    void setInputOf(yy_buffer_state& buffer, std::istream* input);
    void findLineEnd();
    bool refill(size_t& scanned);
    bool atEnd() const { return cursor_ == textEnd_; }

    // ScannerInclude.cpp
    int beginFileStatement(int keyword);
    int fileStatement();
    void include(const std::string& name, bool once);
    bool open(const std::string& path, bool once);
    void passOver(bool once);
    void passedOver();
    void tellOfTrailingText(const char* nameEnd);
    void notifyAt(const char* start, HDNTNotice::Kind kind);
    void endStatement(bool once);
    bool endOfInput();
    void notify(HDNTNotice::Kind kind, std::string_view text, std::string_view detail = {}) const;
    bool prints() const { return !pieces_ && HDNTError::printsOutput(); }

    State state_ = State::Initial;
    std::vector<State> states_;
    yyltype commentStart_{};
    bool pendingCapture_ = false;
    bool debug_ = false;
    bool folderMode_ = false;
    bool pieces_ = false;
    int line_ = 1;
    int globalLine_ = 1;
    int column_ = 1; ///< of the next byte, while no buffer is loaded
    int storeOffset_ = 0;
    int filteredText_ = 0;
    const char* fileName_ = nullptr;

    const char* cursor_ = nullptr;  ///< next byte; null: the current buffer is not loaded
    const char* lineEnd_ = nullptr; ///< newline or end of text behind cursor_; null when not looked for yet
    const char* textBegin_ = nullptr;
    const char* textEnd_ = nullptr;
    ptrdiff_t columnZero_ = 0; ///< the column of a byte is its offset less this: nothing has to count along
    size_t matchStart_ = 0;
    size_t matchLength_ = 0;
    size_t pieceStart_ = 0;
    std::string matchText_;

    std::vector<yy_buffer_state*> buffers_; ///< the last one is current; null where a buffer was deleted
    std::vector<SavedInput> saved_;         ///< one for each open INCLUDE or INLINE
    Files files_;
    std::istream* input_ = nullptr;
    FILE* output_ = nullptr;
    LineStore& lines_ = LineStore::instance();
};

} // namespace hdnt::frontend
