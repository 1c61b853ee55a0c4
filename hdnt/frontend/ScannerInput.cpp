#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/platform/Bytes16.internal.h"
#include "hdnt/platform/HSTUniqString.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

namespace hdnt::frontend {

void fatal(const char* text) {
    std::fprintf(stderr, "%s\n", text);
    std::exit(2);
}

// cursor_, textBegin_ and textEnd_ point into the current buffer between load() and unload().
void Scanner::load() {
    if (buffers_.empty()) buffers_.push_back(nullptr);
    if (!buffers_.back()) {
        buffers_.back() = new yy_buffer_state;
        buffers_.back()->input = input_;
        buffers_.back()->ownedByScanner = true;
    }
    const yy_buffer_state& buffer = *buffers_.back();
    if (!buffer.text->shared) platform::makeRoom(buffer.text->bytes);
    const std::string_view text = buffer.text->view();
    textBegin_ = text.data();
    cursor_ = textBegin_ + buffer.position;
    textEnd_ = textBegin_ + text.size();
    wholeText_ = lineRead_ = !buffer.input;
    follows_ = false;
    setColumn(cursor_, column_);
}

// To be called before another input becomes current, and before position and column are read or set.
void Scanner::unload() {
    if (!cursor_) return;
    syncPlace();
    column_ = columnOf(cursor_);
    buffers_.back()->position = static_cast<size_t>(cursor_ - textBegin_);
    cursor_ = nullptr;
}

// Appends up to 8192 bytes of the stream; false at its end.
bool Scanner::refill(size_t& scanned) {
    yy_buffer_state& buffer = *buffers_.back();
    if (!buffer.input || !buffer.input->good()) return false;
    constexpr size_t chunk = 8192;
    std::string& bytes = buffer.text->bytes;
    const size_t position = static_cast<size_t>(cursor_ - textBegin_);
    const int column = columnOf(cursor_);
    scanned = bytes.size();
    grow(bytes, scanned + chunk + platform::bytes16Room);
    buffer.input->read(bytes.data() + scanned, chunk);
    bytes.resize(scanned + static_cast<size_t>(buffer.input->gcount()));
    if (buffer.input->bad()) fatal("input in flex scanner failed");
    textBegin_ = bytes.data();
    cursor_ = textBegin_ + position;
    textEnd_ = textBegin_ + bytes.size();
    setColumn(cursor_, column);
    return bytes.size() > scanned;
}

// What the text grows out of stays, for tokens may still be looked at there.
void Scanner::grow(std::string& bytes, size_t size) {
    if (bytes.capacity() < size) {
        std::string left;
        left.reserve(std::max(bytes.capacity() * 2, size));
        bytes.swap(left.assign(bytes));
        if (!left.empty()) kept_.push_back(std::make_shared<SourceText>(SourceText{std::move(left)}));
        lines_.textMoved();
    }
    bytes.resize(size);
}

// The newline behind a byte of a line that was read; the end of the text when there is none.
const char* Scanner::lineEnd(const char* from) const {
    const void* const found = std::memchr(from, '\n', static_cast<size_t>(textEnd_ - from));
    return found ? static_cast<const char*>(found) : textEnd_;
}

void Scanner::readLine() {
    size_t scanned = static_cast<size_t>(cursor_ - textBegin_);
    while (lineEnd(textBegin_ + scanned) == textEnd_ && refill(scanned)) continue;
    lineRead_ = true;
}

char* Scanner::matchText() {
    matchText_.assign(tokenText());
    return matchText_.data();
}

// So that each open text can be kept when it is left, which no exception may interrupt.
void Scanner::makeRoomToKeep() {
    const size_t needed = kept_.size() + buffers_.size() + saved_.size() + 1;
    if (kept_.capacity() < needed) kept_.reserve(2 * needed);
}

// The text of a buffer that is no longer scanned. A parse may still look at tokens in it.
void Scanner::release(std::shared_ptr<SourceText> text) {
    if (!keptBefore_.empty()) return kept_.push_back(std::move(text));
    const std::string_view bytes = text->view();
    const std::less<> before;
    if (!before(matchBegin_, bytes.data()) && !before(bytes.data() + bytes.size(), matchBegin_))
        matchBegin_ = matchEnd_ = nullptr;
}

void Scanner::discard(yy_buffer_state* buffer) {
    if (!buffer) return;
    release(std::move(buffer->text));
    delete buffer;
}

// Tokens of what was kept in the innermost open text, or outside of all, are no longer looked at.
void Scanner::letGo() {
    const size_t before = keptBefore_.empty() ? 0 : keptBefore_.back();
    if (kept_.size() > before) matchBegin_ = matchEnd_ = nullptr;
    kept_.resize(before);
}

void Scanner::init() {
    unload();
    if (keptBefore_.empty()) letGo();
    debug_ = !pieces_ && std::getenv("NTL_DEBUG") != nullptr;
    states_.clear();
    state_ = State::Normal;
    pushState(State::LineCapture);
    dropSaved();
    line_ = globalLine_ = column_ = 1;
    includedBytes_ = 0;
    if (HDNTLimits::get().seconds > 0) begin_ = std::chrono::steady_clock::now();
    pendingCapture_ = false;
    storeOffset_ = folderTexts_ ? static_cast<int>(lines_.size()) : filteredText_;
    const bool named = ntl_parse_top_level_file && !pieces_;
    fileName_ = named ? HSTUniqString::internCString(ntl_parse_top_level_file) : nullptr;
    if (!folderTexts_ && !pieces_) files_.opened.clear();
    if (fileName_) files_.opened.emplace_back(fileName_);
    HDNTParserlloc = {};
    HDNTParserlloc.fileName = fileName_;
    placed_ = true;
}

// Back to the input that the open INCLUDE and INLINE statements stand in.
void Scanner::closeIncludes() {
    if (saved_.empty()) return;
    unload();
    discard(buffers_.back());
    buffers_.back() = saved_.front().buffer;
    for (size_t i = 1; i < saved_.size(); ++i) discard(saved_[i].buffer);
    saved_.clear();
}

// Forgets the inputs around the current one, whose scan was given up. Those a host made are the host's to delete.
void Scanner::dropSaved() {
    for (const SavedInput& saved : saved_)
        if (saved.buffer && saved.buffer->ownedByScanner) discard(saved.buffer);
    saved_.clear();
}

void Scanner::beginText(std::shared_ptr<SourceText> text) {
    unload();
    dropSaved();
    makeRoomToKeep();
    auto buffer = std::make_unique<yy_buffer_state>();
    buffer->text = std::move(text);
    keptBefore_.reserve(keptBefore_.size() + 1);
    buffers_.reserve(buffers_.size() + 1);
    buffers_.push_back(buffer.release());
    keptBefore_.push_back(kept_.size());
}

void Scanner::endText() {
    closeIncludes();
    pop();
    letGo();
    keptBefore_.pop_back();
    states_.clear();
    state_ = State::Initial;
}

void Scanner::destroy() {
    closeIncludes();
    while (!buffers_.empty()) pop();
    states_.clear();
    state_ = State::Initial;
    line_ = globalLine_ = column_ = 1;
    storeOffset_ = 0;
    fileName_ = nullptr;
    input_ = nullptr;
    output_ = nullptr;
    if (keptBefore_.empty()) letGo();
    matchBegin_ = matchEnd_ = nullptr;
}

void Scanner::setInputOf(yy_buffer_state& buffer, std::istream* input) {
    unload();
    release(std::exchange(buffer.text, std::make_shared<SourceText>()));
    if (keptBefore_.empty()) letGo();
    buffer.position = 0;
    buffer.input = input;
}

void Scanner::restart(std::istream* input) {
    input_ = input;
    if (!buffers_.empty() && buffers_.back()) setInputOf(*buffers_.back(), input);
}

void Scanner::setInput(std::istream* input) {
    input_ = input;
    if (buffers_.empty() || !buffers_.back()) return;
    unload();
    yy_buffer_state& buffer = *buffers_.back();
    if (buffer.position == buffer.text->view().size()) setInputOf(buffer, input);
}

void Scanner::switchTo(yy_buffer_state* buffer) {
    unload();
    if (buffers_.empty()) buffers_.push_back(nullptr);
    if (buffers_.back() && buffers_.back()->ownedByScanner) discard(buffers_.back());
    buffers_.back() = buffer;
}

void Scanner::push(yy_buffer_state* buffer) {
    if (!buffer) return;
    unload();
    if (buffers_.empty() || buffers_.back()) buffers_.push_back(buffer);
    else buffers_.back() = buffer;
}

void Scanner::pop() {
    if (buffers_.empty()) return;
    unload();
    discard(buffers_.back());
    buffers_.pop_back();
}

void Scanner::forget(yy_buffer_state* buffer) {
    unload();
    std::replace(buffers_.begin(), buffers_.end(), buffer, static_cast<yy_buffer_state*>(nullptr));
    for (SavedInput& saved : saved_)
        if (saved.buffer == buffer) saved.buffer = nullptr;
    discard(buffer);
}

void Scanner::flush(yy_buffer_state* buffer) {
    if (!buffer) return;
    unload();
    buffer->position = buffer->text->view().size();
}

} // namespace hdnt::frontend
