#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/platform/HSTUniqString.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace hdnt::frontend {

void fatal(const char* text) {
    std::fprintf(stderr, "%s\n", text);
    std::exit(2);
}

// cursor_, lineEnd_, textBegin_ and textEnd_ point into the current buffer between load() and unload().
void Scanner::load() {
    if (buffers_.empty()) buffers_.push_back(nullptr);
    if (!buffers_.back()) {
        buffers_.back() = new yy_buffer_state;
        buffers_.back()->input = input_;
        buffers_.back()->ownedByScanner = true;
    }
    const yy_buffer_state& buffer = *buffers_.back();
    const std::string& bytes = buffer.text->bytes;
    textBegin_ = bytes.data();
    cursor_ = textBegin_ + buffer.position;
    textEnd_ = bytes.data() + bytes.size();
    lineEnd_ = nullptr;
    setColumn(column_);
}

// To be called before another input becomes current, and before position and column are read or set.
void Scanner::unload() {
    if (!cursor_) return;
    column_ = column();
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
    scanned = bytes.size();
    if (bytes.capacity() < scanned + chunk) bytes.reserve(std::max(bytes.capacity() * 2, scanned + chunk));
    bytes.resize(scanned + chunk);
    buffer.input->read(bytes.data() + scanned, chunk);
    bytes.resize(scanned + static_cast<size_t>(buffer.input->gcount()));
    if (buffer.input->bad()) fatal("input in flex scanner failed");
    if (textBegin_ != bytes.data()) lines_.textMoved();
    textBegin_ = bytes.data();
    cursor_ = textBegin_ + position;
    textEnd_ = textBegin_ + bytes.size();
    return bytes.size() > scanned;
}

void Scanner::findLineEnd() {
    size_t scanned = static_cast<size_t>(cursor_ - textBegin_);
    do {
        const char* const from = textBegin_ + scanned;
        if (const void* found = std::memchr(from, '\n', static_cast<size_t>(textEnd_ - from))) {
            lineEnd_ = static_cast<const char*>(found);
            return;
        }
    } while (refill(scanned));
    lineEnd_ = textEnd_;
}

char* Scanner::matchText() {
    const yy_buffer_state* const buffer = buffers_.empty() ? nullptr : buffers_.back();
    matchText_.clear();
    if (buffer && matchStart_ + matchLength_ <= buffer->text->bytes.size())
        matchText_.assign(buffer->text->bytes, matchStart_, matchLength_);
    return matchText_.data();
}

void Scanner::init() {
    unload();
    debug_ = !pieces_ && std::getenv("NTL_DEBUG") != nullptr;
    states_.clear();
    state_ = State::Normal;
    pushState(State::LineCapture);
    dropSaved();
    line_ = globalLine_ = column_ = 1;
    pendingCapture_ = false;
    storeOffset_ = folderMode_ ? static_cast<int>(lines_.size()) : filteredText_;
    const bool named = ntl_parse_top_level_file && !pieces_;
    fileName_ = named ? HSTUniqString::internCString(ntl_parse_top_level_file) : nullptr;
    if (!folderMode_ && !pieces_) files_.opened.clear();
    if (fileName_) files_.opened.emplace_back(fileName_);
    HDNTParserlloc = {};
    HDNTParserlloc.fileName = fileName_;
}

// Back to the input that the open INCLUDE and INLINE statements stand in.
void Scanner::closeIncludes() {
    if (saved_.empty()) return;
    unload();
    delete buffers_.back();
    buffers_.back() = saved_.front().buffer;
    for (size_t i = 1; i < saved_.size(); ++i) delete saved_[i].buffer;
    saved_.clear();
}

// Forgets the inputs around the current one, whose scan was given up. Those a host made are the host's to delete.
void Scanner::dropSaved() {
    for (const SavedInput& saved : saved_)
        if (saved.buffer && saved.buffer->ownedByScanner) delete saved.buffer;
    saved_.clear();
}

void Scanner::beginText(std::shared_ptr<SourceText> text) {
    unload();
    dropSaved();
    buffers_.push_back(new yy_buffer_state);
    buffers_.back()->text = std::move(text);
}

void Scanner::endText() {
    closeIncludes();
    pop();
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
    matchStart_ = matchLength_ = 0;
}

void Scanner::setInputOf(yy_buffer_state& buffer, std::istream* input) {
    unload();
    buffer.text = std::make_shared<SourceText>();
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
    if (buffer.position == buffer.text->bytes.size()) setInputOf(buffer, input);
}

void Scanner::switchTo(yy_buffer_state* buffer) {
    unload();
    if (buffers_.empty()) buffers_.push_back(nullptr);
    if (buffers_.back() && buffers_.back()->ownedByScanner) delete buffers_.back();
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
    delete buffers_.back();
    buffers_.pop_back();
}

void Scanner::forget(yy_buffer_state* buffer) {
    unload();
    std::replace(buffers_.begin(), buffers_.end(), buffer, static_cast<yy_buffer_state*>(nullptr));
    for (SavedInput& saved : saved_)
        if (saved.buffer == buffer) saved.buffer = nullptr;
    delete buffer;
}

void Scanner::flush(yy_buffer_state* buffer) {
    if (!buffer) return;
    unload();
    buffer->position = buffer->text->bytes.size();
}

} // namespace hdnt::frontend
