#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/frontend/SearchPath.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <cstdio>
#include <iosfwd>
#include <string>

class HDNTLibrary;

// The scanner turns NTL text into tokens. All of its state is process-wide: one scan at a time, from one thread.
// A host needs nothing of this header to load libraries; it is for tools that work on tokens.

/// Token numbers. Single characters stand for themselves, 0 is the end of all input.
enum NtlToken : int {
    T_Library = 258,
    T_Block,
    T_Property,
    T_Pin,
    T_Int,
    T_String,
    T_Bool,
    T_End,
    T_Input,
    T_Output,
    T_Bidir,
    T_Null,
    T_Double,
    T_BitHex,
    T_PinList,
    T_Identifier,
    T_StringConstant,
    T_HexConstant,
    T_BinaryConstant,
    T_IntConstant,
    T_DoubleConstant,
    T_BoolConstant,
    T_Default,
    T_Min,
    T_Max,
    T_Precision,
    T_MapTo,
    T_Inst,
    T_Connect,
    T_Assign,
    T_Signal,
    T_Function,
    T_If,
    T_Else,
    T_GreaterEqual,
    T_LessEqual,
    T_EqualTo,
    T_NotEqual,
    T_AndAnd,
    T_OrOr,
    T_ModifiedBy,
    T_Description,
    T_Data,
    T_Clock,
    T_Enable,
    T_Reset,
    T_SetReset,
    T_Simulation,
    T_TieLow,
    T_TieHigh,
    T_TieSpecial,
    T_Untie,
    T_Units,
    T_Values,
    T_Internal,
    T_Test,
    T_PrimGroup,
    T_ConstraintsOnly,
    T_MaturityLevel,
    T_Early,
    T_Beta,
    T_Production,
    T_Deprecated,
    T_ExpandTo,
    T_Set,
    T_Clear,
    T_Preset,
    T_WriteEnable,
    T_RetargetTo,
    T_Mixed,
    T_MuxControl,
    T_MustConnect,
    T_Active,
    T_Abstract
};

/// The value of a token. Trivial: who takes `text` owns the string.
union NtlTokenValue {
    int intValue;        ///< T_IntConstant: the low 32 bits
    double doubleValue;  ///< T_DoubleConstant
    bool boolValue;      ///< T_BoolConstant
    char identifier[32]; ///< T_Identifier: at most 31 characters and the terminating zero
    std::string* text;   ///< T_StringConstant without its quotes; T_HexConstant, T_BinaryConstant as written
};

/// Value and place of the token that HDNTParserlex returned last. At the end of input the place is that of the last
/// match, which may be blank space, a comment or a newline.
extern HDNT_API NtlTokenValue HDNTParserlval;
extern HDNT_API yyltype HDNTParserlloc;
/// The parser's look-ahead token, count of syntax errors, and trace switch.
extern HDNT_API int HDNTParserchar;
extern HDNT_API int HDNTParsernerrs;
extern HDNT_API int HDNTParserdebug;
/// Kept for programs that link against it; the scanner counts with the lines of HDNTParserlloc.
extern HDNT_API int yylineno;
/// Name of the top-level input, which NtlInitScanner takes for the locations. Allocated with malloc, owned by the
/// parse entries; null when a text in memory is parsed.
extern HDNT_API char* ntl_parse_top_level_file;
/// The library that the parser builds into: the one constructed last, unless a parse entry chose another. Not owned.
extern HDNT_API HDNTLibrary* myTopLib;

/// The next token; 0 at the end of input. Throws HEXAlgException only for states that no input can bring about.
HDNT_API int HDNTParserlex();
/// Parses what the scanner delivers into myTopLib; 0 when the text was accepted. Prefer the members of HDNTLibrary,
/// which prepare the scanner, clean up after it and pass on exceptions.
HDNT_API int HDNTParserparse();
/// The parser's error hook: a report at the token the parser stopped on, then the last eleven source lines on standard
/// output (both silenced together). A null message counts as an empty one.
HDNT_API void HDNTParsererror(const char* message);

/// Prepares a scan: counters, start state, file name. Drops saved inputs and keeps the current one, so it may be
/// called before or after the input is set. The environment variable NTL_DEBUG switches a trace on.
HDNT_API void NtlInitScanner();
/// Parser trace on when the environment variable NTL_YY_DEBUG is set, else off.
HDNT_API void NtlInitParser();
/// Forgets all stored source lines.
HDNT_API void NtlFreeScannerMem();
/// Stored source line n, counted from 1 over all texts since the store was last emptied. "UNKNOWN LINE" for 0 or an
/// empty store, the last line for a number past the end.
HDNT_API std::string NtlGetLineNumbered(unsigned long n);
/// Prints the last eleven stored lines to standard output, each with its number.
HDNT_API void NtlPrintLines();

// The operations that scanners usually have, with their usual meaning. They are thin covers: nothing inside the
// library calls them, so a host that defines functions of the same names does not get in between. Streams are
// borrowed; buffers belong to the caller until yy_delete_buffer, except those on the scanner's stack.
struct yy_buffer_state;
using YY_BUFFER_STATE = yy_buffer_state*;

/// Replaces the input of the current buffer; start state and counters stay.
HDNT_API void yyrestart(std::istream* input);
/// `size` is a hint. The stream is read in pieces of at most 8192 bytes, one line ahead of the tokens.
HDNT_API YY_BUFFER_STATE yy_create_buffer(std::istream* input, int size);
HDNT_API void yy_delete_buffer(YY_BUFFER_STATE buffer);
HDNT_API void yy_switch_to_buffer(YY_BUFFER_STATE buffer);
HDNT_API void yy_flush_buffer(YY_BUFFER_STATE buffer);
HDNT_API void yypush_buffer_state(YY_BUFFER_STATE buffer);
HDNT_API void yypop_buffer_state();
/// Null unless the last two of the `size` bytes are zero. The text is copied.
HDNT_API YY_BUFFER_STATE yy_scan_buffer(char* base, size_t size);
HDNT_API YY_BUFFER_STATE yy_scan_bytes(const char* bytes, int length);
HDNT_API YY_BUFFER_STATE yy_scan_string(const char* text);
/// Frees all inputs and resets the scanner as if nothing had been scanned. The line store stays.
HDNT_API int yylex_destroy();
HDNT_API int yyget_lineno();
HDNT_API void yyset_lineno(int line);
HDNT_API std::istream* yyget_in();
HDNT_API void yyset_in(std::istream* input);
/// Where unmatched text of an INCLUDE or INLINE statement is echoed; standard output when nothing was set.
HDNT_API FILE* yyget_out();
HDNT_API void yyset_out(FILE* output);
/// Length and text of the match behind the last token; the text holds until the next operation of the scanner.
HDNT_API int yyget_leng();
HDNT_API char* yyget_text();
HDNT_API int yyget_debug();
HDNT_API void yyset_debug(int on);
HDNT_API void* yyalloc(size_t size);
HDNT_API void* yyrealloc(void* block, size_t size);
HDNT_API void yyfree(void* block);
