// The exported names of the scanner: thin covers, never called from inside the library.
#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.internal.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

using hdnt::diagnostics::LineStore;
using hdnt::frontend::Scanner;

NtlTokenValue HDNTParserlval;
int yylineno = 1;
char* ntl_parse_top_level_file = nullptr;

int HDNTParserlex() { return Scanner::instance().next(); }
void NtlInitScanner() { Scanner::instance().init(); }
void NtlFreeScannerMem() { LineStore::instance().clear(); }
std::string NtlGetLineNumbered(unsigned long n) { return std::string(LineStore::instance().line(n)); }
std::string NtlFindFile(const std::string& name) { return Scanner::instance().findFile(name); }
void NtlAddSearchDirectory(const std::string& directory) { Scanner::instance().addSearchDirectory(directory); }
const std::vector<std::string>& NtlOpenedFiles() { return Scanner::instance().openedFiles(); }

void NtlPrintLines() {
    const size_t count = LineStore::instance().size();
    for (size_t n = std::max<size_t>(count, 11) - 10; n <= count; ++n)
        std::printf("%d: %s\n", static_cast<int>(n), std::string(LineStore::instance().line(n)).c_str());
}

void HDNTParsererror(const char* message) {
    using hdnt::DiagnosticCode;
    const std::string_view text = message ? message : "";
    const bool tooDeep = text == hdnt::ruleOf(DiagnosticCode::parserDepth).wording;
    const DiagnosticCode code = tooDeep ? DiagnosticCode::parserDepth : DiagnosticCode::syntaxError;
    if (HDNTError::report({&HDNTParserlloc, text, {}, code})) NtlPrintLines();
}

static YY_BUFFER_STATE newBuffer(const char* failure) {
    auto* const buffer = new (std::nothrow) yy_buffer_state;
    if (!buffer) hdnt::frontend::fatal(failure);
    return buffer;
}

static YY_BUFFER_STATE scanText(const char* bytes, size_t length) {
    YY_BUFFER_STATE const buffer = newBuffer("out of dynamic memory in yy_scan_buffer()");
    hdnt::diagnostics::copySource({bytes, length}, buffer->text->bytes);
    Scanner::instance().switchTo(buffer);
    return buffer;
}

void yyrestart(std::istream* input) { Scanner::instance().restart(input); }

YY_BUFFER_STATE yy_create_buffer(std::istream* input, int) {
    YY_BUFFER_STATE const buffer = newBuffer("out of dynamic memory in yy_create_buffer()");
    buffer->input = input;
    return buffer;
}

void yy_delete_buffer(YY_BUFFER_STATE buffer) { Scanner::instance().forget(buffer); }
void yy_switch_to_buffer(YY_BUFFER_STATE buffer) { Scanner::instance().switchTo(buffer); }
void yy_flush_buffer(YY_BUFFER_STATE buffer) { Scanner::instance().flush(buffer); }
void yypush_buffer_state(YY_BUFFER_STATE buffer) { Scanner::instance().push(buffer); }
void yypop_buffer_state() { Scanner::instance().pop(); }

YY_BUFFER_STATE yy_scan_buffer(char* base, size_t size) {
    if (size < 2 || base[size - 2] != '\0' || base[size - 1] != '\0') return nullptr;
    return scanText(base, size - 2);
}

YY_BUFFER_STATE yy_scan_bytes(const char* bytes, int length) {
    if (length < 0) hdnt::frontend::fatal("bad buffer in yy_scan_bytes()");
    return scanText(bytes, static_cast<size_t>(length));
}

YY_BUFFER_STATE yy_scan_string(const char* text) { return scanText(text, std::strlen(text)); }

int yylex_destroy() {
    Scanner::instance().destroy();
    yylineno = 1;
    return 0;
}

int yyget_lineno() { return yylineno; }
void yyset_lineno(int line) { yylineno = line; }
std::istream* yyget_in() { return Scanner::instance().input(); }
void yyset_in(std::istream* input) { Scanner::instance().setInput(input); }
FILE* yyget_out() { return Scanner::instance().output(); }
void yyset_out(FILE* output) { Scanner::instance().setOutput(output); }
int yyget_leng() { return Scanner::instance().matchLength(); }
char* yyget_text() { return Scanner::instance().matchText(); }
int yyget_debug() { return Scanner::instance().debug(); }
void yyset_debug(int on) { Scanner::instance().setDebug(on != 0); }
void* yyalloc(size_t size) { return std::malloc(size); }
void* yyrealloc(void* block, size_t size) { return std::realloc(block, size); }
void yyfree(void* block) { std::free(block); }
