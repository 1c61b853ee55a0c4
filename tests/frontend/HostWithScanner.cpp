// A host that has a scanner of its own, with the usual names, must not get in the library's way: none of these may be
// called, or read, while a library is loaded. What a generated scanner's header declares stands beside the library's.
#include "hdnt/hdnt.h"

#include <cstdio>
#include <cstdlib>
#include <istream>

struct yy_buffer_state;
enum HostToken { T_If = 1, T_Block, T_Identifier };
union HostTokenValue {
    int intValue;
};
FILE* yyget_in() { std::abort(); }
int yyget_lineno() { std::abort(); }
FILE* yyin = reinterpret_cast<FILE*>(1);
FILE* yyout = reinterpret_cast<FILE*>(1);
char* yytext = reinterpret_cast<char*>(1);
int yyleng = -1;
int yylineno = -1;

void yyrestart(std::istream*) { std::abort(); }
yy_buffer_state* yy_create_buffer(std::istream*, int) { std::abort(); }
void yy_delete_buffer(yy_buffer_state*) { std::abort(); }
void yy_switch_to_buffer(yy_buffer_state*) { std::abort(); }
void yy_flush_buffer(yy_buffer_state*) { std::abort(); }
void yypush_buffer_state(yy_buffer_state*) { std::abort(); }
void yypop_buffer_state() { std::abort(); }
yy_buffer_state* yy_scan_bytes(const char*, int) { std::abort(); }
yy_buffer_state* yy_scan_string(const char*) { std::abort(); }
int yylex_destroy() { std::abort(); }
void* yyalloc(size_t) { std::abort(); }
void* yyrealloc(void*, size_t) { std::abort(); }
void yyfree(void*) { std::abort(); }

int main() {
    const HDNTLibrary& library = *HDNTLibraryMgr::getCommonLibrary();
    std::printf("%zu blocks\n", library.getNumTypeBlocks(true));
    return library.getNumTypeBlocks(true) > 90 ? 0 : 1;
}
