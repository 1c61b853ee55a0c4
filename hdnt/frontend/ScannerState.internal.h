#pragma once

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/platform/Bytes16.internal.h"

#include <chrono>
#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
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
/// Of a stream, whole lines are read before their tokens are, so that it never has to be refilled inside a token.
/// Texts have room behind their end, for words, strings and blanks are looked at sixteen bytes at a time.
class Scanner {
public:
    static Scanner& instance() {
        static Scanner* const scanner =
            new Scanner; // never destroyed: its tables stay reachable until the process ends
        return *scanner;
    }

    /// The next token with its value in HDNTParserlval and its place in HDNTParserlloc; 0 at the end.
    int next();

    // For the parser, which reads tokens where they stand: nothing is copied, and only places that count are made.

    /// The next token; 0 at the end, where HDNTParserlloc is the place of the last match. Of other tokens it need not
    /// be, and HDNTParserlval stays as it was. Listeners that are called meanwhile find HDNTParserlloc as after next().
    int scan();
    /// Takes the coming token if it is that mark, one of $%()*+,.:;[]{} or =, with at most blanks before it. Else it is
    /// false and nothing has happened, though the mark may be the next token.
    bool scanExpected(char mark) {
        if (!cursor_) return false;
        const char* const start = behindFewBlanks();
        if (*start != mark || (mark == '=' && start[1] == '=')) return false;
        accept(start, start + 1, mark);
        return true;
    }
    /// The same for a T_StringConstant, which it need not see when it is long.
    bool scanExpectedString() {
        if (!cursor_) return false;
        const char* const start = behindFewBlanks();
        const char* const end = *start == '"' ? shortStringEnd(start) : nullptr;
        if (!end) return false;
        accept(start, end, T_StringConstant);
        return true;
    }
    /// The last token as written: with its quotes, and an identifier in full. It holds until endText(), also when it
    /// came from an included file; without beginText(), as long as its input or until the next init().
    std::string_view tokenText() const { return {matchBegin_, static_cast<size_t>(matchEnd_ - matchBegin_)}; }
    /// The same of a T_StringConstant, without its quotes.
    std::string_view stringText() const { return {matchBegin_ + 1, static_cast<size_t>(matchEnd_ - matchBegin_ - 2)}; }
    union Number {
        int asInt;
        double asDouble;
    };
    /// The value of a T_IntConstant or T_DoubleConstant; of other tokens it is that of a number before.
    Number tokenNumber() const { return number_; }
    /// The place of the last token; at the end that of the last match. The others are of its members, of tokens only.
    yyltype tokenPlace() const { return placed_ ? HDNTParserlloc : placeOf(matchBegin_, matchEnd_); }
    int tokenLine() const { return globalLine_; }
    int tokenLastColumn() const { return columnOf(matchEnd_) - 1; }
    const char* fileName() const { return fileName_; }
    /// Makes HDNTParserlloc what next() would have left in it.
    void syncPlace() {
        if (!placed_) locate(matchBegin_, matchEnd_);
    }

    void init();
    void destroy();

    /// Lays a complete text over the current input; endText drops it with all that it opened, and what tokenText()
    /// gave. File names, line store and included names stay.
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
    int matchLength() const { return static_cast<int>(matchEnd_ - matchBegin_); }
    char* matchText();
    bool debug() const { return debug_; }
    void setDebug(bool on) { debug_ = on; }

    /// Until endFolder(), locations bear the number of lines stored before their text, and opened files accumulate: the
    /// texts of one folder make one library.
    void beginFolder(std::size_t files) {
        folderTexts_.emplace(files);
        files_.opened.clear();
    }
    void endFolder() { folderTexts_.reset(); }
    /// As readSource(); the texts of a folder share memory.
    bool read(const std::string& path, SourceText& text, std::string& reason) {
        return folderTexts_ ? folderTexts_->read(path, text, reason)
                            : diagnostics::readSource(path, text.bytes, reason);
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

    /// What scan() returns beside tokens while pieces are wanted.
    enum Piece : int { LineComment = -2, BlockComment = -3, FileStatement = -4 };
    /// While on, a text is taken apart instead of read: comments, and INCLUDE and INLINE statements with their newline,
    /// come out like tokens, no file is opened, nothing is printed, and no line is stored. To be set before init().
    void setPieces(bool on) { pieces_ = on; }
    /// Where the match behind the last token or piece begins in its text.
    size_t matchOffset() const { return static_cast<size_t>(matchBegin_ - textBegin_); }
    /// Where the last comment or statement began, and whether the text ended inside a statement.
    size_t pieceOffset() const { return static_cast<size_t>(pieceBegin_ - textBegin_); }
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
    template <typename Otherwise>
    [[gnu::always_inline]] inline int scanHere(const char* start, Otherwise otherwise); // the way of most tokens
    int scanNextLine(const char* newline);
    [[gnu::noinline]] int scanOn();
    int scanText();
    int scanBesideText();
    int scanNumber(const char* start, bool negative);
    int scanFraction(bool negative);
    int scanLongInteger();
    void overflown(const std::string& readAs);
    int scanString(const char* start);
    int scanWord(const char* start);
    int scanOperator(const char* start);
    int unrecognized(const char* start);
    void giveValue(int token);
    int endOfText(const char* gap, const char* end);
    void storeLine(const char* start);
    void captureLine();
    int skipComment();
    const char* behindFewBlanks() const {
        const char* start = cursor_;
        while (*start == ' ') ++start;
        return start;
    }
    /// Where a string ends that begins at the quote; null when it is long, or ends at its line.
    static const char* shortStringEnd(const char* quote) {
        const platform::Bytes16 bytes(quote + 1);
        const unsigned length = (bytes.equal('"') | bytes.equal('\n')).first();
        return length < 16 && quote[1 + length] == '"' ? quote + length + 2 : nullptr;
    }
    int accept(const char* start, const char* end, int token) {
        matchBegin_ = start;
        matchEnd_ = cursor_ = end;
        placed_ = false;
        return token;
    }
    int acceptPlaced(const char* start, const char* end, int token);
    int endPiece(Piece piece);
    yyltype placeOf(const char* begin, const char* end) const {
        return {fileName_, line_, globalLine_, columnOf(begin), 0, columnOf(end) - 1, storeOffset_};
    }
    void locate(const char* begin, const char* end);
    int columnOf(const char* byte) const {
        return static_cast<int>(reinterpret_cast<std::intptr_t>(byte) - columnZero_);
    }
    void setColumn(const char* byte, int column) { columnZero_ = reinterpret_cast<std::intptr_t>(byte) - column; }
    void newline();
    void endLine();
    const char* passNewline(const char* newline);
    const char* passTab(const char* tab);
    void pushState(State state);
    void popState();

    // ScannerInput.cpp
    void load();
    void unload();
    void closeIncludes();
    void dropSaved();
    void setInputOf(yy_buffer_state& buffer, std::istream* input);
    void discard(yy_buffer_state* buffer);
    void release(std::shared_ptr<SourceText> text);
    void makeRoomToKeep();
    void letGo();
    void readLine();
    bool refill(size_t& scanned);
    void grow(std::string& bytes, size_t size);
    const char* lineEnd(const char* from) const;
    bool atEnd() const { return cursor_ == textEnd_; }

    // ScannerInclude.cpp
    int beginFileStatement(int keyword);
    int fileStatement();
    void include(const std::string& name, bool once);
    bool open(const std::string& name, const std::string& path, bool once);
    bool mayOpen(const std::string& name, const std::string& path, std::string& reason) const;
    bool isInOwnFolder(const std::string& path, std::string& reason) const;
    bool countIncluded(const SourceText& text, std::string& reason);
    void passOver(bool once);
    void takeFileName(const char* lineEnd);
    void passedOver(std::string_view line);
    void tellOfTrailingText(std::string_view rest);
    void notifyAt(std::string_view restOfLine, HDNTNotice::Kind kind);
    void endStatement(bool once);
    bool endOfInput();
    void notify(HDNTNotice::Kind kind, std::string_view text, std::string_view detail = {}) const;
    bool prints() const { return !pieces_ && HDNTError::printsOutput(); }

    State state_ = State::Initial;
    std::vector<State> states_;
    yyltype commentStart_{};
    bool pendingCapture_ = false;
    bool placed_ = true;     ///< HDNTParserlloc is the place of the last match
    bool wholeText_ = false; ///< nothing of the current text is still to be read
    bool lineRead_ = false;  ///< nor of the line at the cursor
    bool follows_ = false;   ///< the next line to store is behind the one that was stored last
    bool debug_ = false;
    bool pieces_ = false;
    int line_ = 1;
    int globalLine_ = 1;
    int column_ = 1; ///< of the next byte, while no buffer is loaded
    int storeOffset_ = 0;
    int filteredText_ = 0;
    const char* fileName_ = nullptr;

    const char* cursor_ = nullptr; ///< next byte; null: the current buffer is not loaded
    const char* textBegin_ = nullptr;
    const char* textEnd_ = nullptr;
    std::intptr_t columnZero_ = 0; ///< the column of a byte is its address less this: nothing has to count along
    const char* matchBegin_ = nullptr;
    const char* matchEnd_ = nullptr;
    const char* pieceBegin_ = nullptr;
    Number number_{};
    std::string matchText_;

    std::vector<yy_buffer_state*> buffers_;         ///< the last one is current; null where a buffer was deleted
    std::vector<SavedInput> saved_;                 ///< one for each open INCLUDE or INLINE
    std::vector<std::shared_ptr<SourceText>> kept_; ///< texts that were left, and may still be looked at
    std::vector<size_t> keptBefore_;                ///< how many there were when each open text began
    Files files_;
    size_t includedBytes_ = 0; ///< since init()
    std::chrono::steady_clock::time_point begin_{};
    std::istream* input_ = nullptr;
    FILE* output_ = nullptr;
    std::optional<diagnostics::SharedTexts> folderTexts_; ///< within a folder
    LineStore& lines_ = LineStore::instance();
};

} // namespace hdnt::frontend
