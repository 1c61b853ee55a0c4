#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/frontend/Keywords.internal.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/platform/HSTUniqString.h"
#include "hdnt/platform/HUTFile.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace hdnt::frontend {

using diagnostics::isBelow;
using diagnostics::isInsideRoot;
using diagnostics::sourceExists;

static bool isBlank(char c) { return c == ' ' || c == '\t'; }

void Scanner::notify(HDNTNotice::Kind kind, std::string_view text, std::string_view detail) const {
    HDNTError::notify({kind, HDNTParserlloc, text, detail});
}

std::string Scanner::findFile(const std::string& name) const {
    if (name.find('\0') != name.npos) return {}; // no file has such a name, though one may have its beginning
    if (!name.empty() && name.front() == '/') return sourceExists(name) ? name : std::string();
    for (const std::string& directory : files_.searchDirectories) {
        std::string path = directory;
        path.append("/").append(name);
        if (debug_) std::printf("file element: %s\n", path.c_str());
        if (sourceExists(path)) return path;
    }
    return {};
}

// Behind INCLUDE or INLINE: what follows is read in a file-name state.
int Scanner::beginFileStatement(int keyword) {
    pieceBegin_ = matchBegin_;
    if (keyword == InlineKeyword) pushState(State::InlineFile);
    else state_ = State::IncludeFile;
    return StateChanged;
}

// In a file-name state: a line that holds a ";" is the file-name line and is taken with its newline. Of any other line,
// blank space is passed over and the rest echoed, and the next line is tried.
int Scanner::fileStatement() {
    if (!lineRead_) readLine();
    const char* const lineEnd = this->lineEnd(cursor_);
    const std::string_view line(cursor_, static_cast<size_t>(lineEnd - cursor_));
    if (lineEnd != textEnd_ && line.find(';') != line.npos) {
        takeFileName(lineEnd);
        return endPiece(FileStatement);
    }
    if (!pieces_) passedOver(line);
    while (cursor_ != lineEnd) {
        const char* end = cursor_;
        while (isBlank(*end)) ++end;
        if (end == cursor_) {
            if (prints() || (output_ && !pieces_)) std::fputc(*cursor_, output());
            acceptPlaced(cursor_, cursor_ + 1, 0);
        } else if (end == cursor_ + 1 && *cursor_ == '\t') {
            passTab(cursor_);
        } else {
            acceptPlaced(cursor_, end, 0);
        }
    }
    if (atEnd()) return endOfInput() ? StateChanged : 0;
    endLine();
    return StateChanged;
}

// The coming line has a ";".
void Scanner::takeFileName(const char* lineEnd) {
    const char* start = cursor_;
    while (isBlank(*start)) ++start;
    const char* end = start;
    while (!isBlank(*end) && *end != ';') ++end;
    const std::string name(start, end);
    const bool once = state_ == State::IncludeFile;
    if (!pieces_) tellOfTrailingText({end, static_cast<size_t>(lineEnd - end)});
    acceptPlaced(cursor_, lineEnd + 1, 0);
    lineRead_ = wholeText_;
    if (pieces_) passOver(once);
    else include(name, once);
}

// The coming line is no file-name line.
void Scanner::passedOver(std::string_view line) {
    const size_t first = line.find_first_not_of(" \t");
    if (first != line.npos) notifyAt(line.substr(first), HDNTNotice::Kind::IncludeText);
}

// How much of a text's beginning is blank space or a whole comment. One that goes on in the next line is none.
static size_t ignorable(std::string_view text) {
    if (isBlank(text.front()) || text.front() == '\r') return 1;
    if (text.starts_with("//")) return text.size();
    const size_t end = text.starts_with("/*") ? text.find("*/", 2) : text.npos;
    return end == text.npos ? 0 : end + 2;
}

// The line goes with the statement, whatever stands on it.
void Scanner::tellOfTrailingText(std::string_view rest) {
    for (bool ended = false; !rest.empty();) {
        const bool ends = !ended && rest.front() == ';';
        const size_t skipped = ends ? 1 : ignorable(rest);
        if (skipped == 0) return notifyAt(rest, HDNTNotice::Kind::IncludeTrailingText);
        rest.remove_prefix(skipped);
        ended |= ends;
    }
}

// Of the rest of the line from there on, which is no token.
void Scanner::notifyAt(std::string_view restOfLine, HDNTNotice::Kind kind) {
    const yyltype before = HDNTParserlloc;
    HDNTParserlloc = placeOf(restOfLine.data(), restOfLine.data() + restOfLine.size());
    notify(kind, restOfLine);
    HDNTParserlloc = before;
}

void Scanner::passOver(bool once) {
    ++line_;
    endStatement(once);
}

// The statement's line is done with: back to the state around it, and on to the next line.
void Scanner::endStatement(bool once) {
    ++globalLine_;
    setColumn(cursor_, 1);
    if (once) state_ = State::Normal;
    else popState();
    pendingCapture_ = true;
    pushState(State::LineCapture);
}

void Scanner::include(const std::string& name, bool once) {
    if (once && files_.included.contains(name)) {
        notify(HDNTNotice::Kind::IncludeSkipped, name);
    } else if (const std::string path = findFile(name); path.empty()) {
        if (prints()) {
            std::printf("Could not find %s file: %s . ", once ? "INCLUDE" : "INLINE", name.c_str());
            std::puts("check NTL_PATH");
        }
        notify(HDNTNotice::Kind::IncludeNotFound, name);
    } else {
        if (debug_) std::printf("CURRENT FILE IS %s\n", path.c_str());
        if (once) files_.included.insert(name);
        if (open(name, path, once)) return;
    }
    passOver(once);
}

// Whether the limits in force let a file be opened that was found by a name. False with a reason.
bool Scanner::mayOpen(const std::string& name, const std::string& path, std::string& reason) const {
    const HDNTLimits& limits = HDNTLimits::get();
    if (saved_.size() >= static_cast<size_t>(std::max(limits.includeDepth, 0)))
        reason = "more than " + std::to_string(limits.includeDepth) + " files open at once (limit includeDepth)";
    else if (limits.seconds > 0 && std::chrono::steady_clock::now() - begin_ > std::chrono::seconds(limits.seconds))
        reason = "more than " + std::to_string(limits.seconds) + " s have passed (limit seconds)";
    else if (limits.ownFolderOnly && name.starts_with('/')) reason = "an absolute name (limit ownFolderOnly)";
    else if (limits.ownFolderOnly) return isInOwnFolder(path, reason) && isInsideRoot(path, reason);
    else return isInsideRoot(path, reason);
    return false;
}

bool Scanner::isInOwnFolder(const std::string& path, std::string& reason) const {
    const char* const top = saved_.empty() ? fileName_ : saved_.front().fileName;
    const std::string folder = top ? HUTPathUtils::directoryOf(top) : "";
    if (top && isBelow(folder.empty() ? "." : folder, path)) return true;
    reason = top ? "not below the folder of " + std::string(top) : "a text that is no file has no folder";
    reason += " (limit ownFolderOnly)";
    return false;
}

// What was read into `text` counts, whatever becomes of it.
bool Scanner::countIncluded(const SourceText& text, std::string& reason) {
    const size_t limit = HDNTLimits::get().includedBytes;
    includedBytes_ += text.view().size();
    if (includedBytes_ <= limit) return true;
    reason = "more than " + std::to_string(limit) + " bytes of included files (limit includedBytes)";
    return false;
}

// Opens a file that was found by a name and makes it the input; false, with a line on standard output, when that fails.
bool Scanner::open(const std::string& name, const std::string& path, bool once) {
    auto text = std::make_shared<SourceText>();
    std::string reason;
    const bool opened = mayOpen(name, path, reason) && read(path, *text, reason) && countIncluded(*text, reason);
    if (prints()) std::printf("\t Loading File : %s\n", path.c_str());
    if (!opened) {
        if (prints()) std::printf("file %s could not be opened\n", path.c_str());
        notify(HDNTNotice::Kind::IncludeNotOpened, path, reason);
        return false;
    }
    notify(HDNTNotice::Kind::FileOpened, path);
    auto buffer = std::make_unique<yy_buffer_state>();
    buffer->ownedByScanner = true;
    buffer->text = std::move(text);
    const char* const fileName = HSTUniqString::internCString(path);
    files_.opened.push_back(path);
    makeRoomToKeep();
    unload();
    saved_.push_back({buffers_.back(), fileName_, line_});
    buffers_.back() = buffer.release();
    load();
    fileName_ = fileName;
    line_ = 1;
    endStatement(once);
    return true;
}

// True when an including file goes on. Tokens of the one that ended may still be looked at.
bool Scanner::endOfInput() {
    if (debug_) std::puts("FILE ENDED");
    if (saved_.empty()) return false;
    unload();
    if (buffers_.back()) kept_.push_back(buffers_.back()->text);
    delete buffers_.back();
    const SavedInput saved = saved_.back();
    saved_.pop_back();
    buffers_.back() = saved.buffer;
    load();
    fileName_ = saved.fileName;
    line_ = saved.line + 1;
    pushState(State::LineCapture);
    if (!pendingCapture_) {
        ++globalLine_;
        setColumn(cursor_, 1);
    }
    pendingCapture_ = true;
    return true;
}

} // namespace hdnt::frontend
