#pragma once

#include "hdnt/diagnostics/DiagnosticCode.h"
#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/platform/Export.h"

#include <string>
#include <string_view>

/// One report, as data. Everything in it is borrowed for the duration of the call.
struct HDNTReport {
    const yyltype* location; ///< null when the report has none
    std::string_view message;
    std::string_view detail; ///< what lies behind a fixed message, e.g. why a file could not be opened; often empty
    hdnt::DiagnosticCode code = hdnt::DiagnosticCode::other;
    const yyltype* earlier = nullptr; ///< the declaration that came first, where one is defined twice; often null
};

/// What the scanner and the builder pass over without an error, as data. Nothing here is counted.
struct HDNTNotice {
    enum class Kind {
        IncludeSkipped,      ///< INCLUDE of a name that was included before in this process
        IncludeNotFound,     ///< no file of that name in the search directories
        IncludeNotOpened,    ///< found, but unreadable, damaged, too deep or outside the root folder
        UnterminatedString,  ///< no closing quote on the line; the text is passed over
        UnterminatedComment, ///< the input ended inside the block comment that begins there
        MappingDropped,      ///< a separate mapping whose block is not registered or not declared
        IncludeText,         ///< a line without ";" between INCLUDE or INLINE and its file name
        MapLibraryRefused,   ///< a map library that the root folder or a limit keeps from being read
        FileOpened,          ///< an INCLUDE or INLINE file, before its text
        IncludeTrailingText, ///< something besides the file name and comments on the line of an INCLUDE or INLINE
        NumberOverflow,      ///< a number that is read as another one, since it does not fit
        RepeatedOption,      ///< an option of a property or an attribute of a block that was given before
        IgnoredOption,       ///< an option of a property that another one makes void
        FunctionRedeclared, ///< a function that the text, or otherwise a text before it, has declared; the first counts
        MappingReplaced,    ///< a mapping whose block, of the same library, has one
        StatementDropped,   ///< a statement block at the top of a mapping
        InversionDropped,   ///< "~" before a pin whose property is assigned
    };
    Kind kind;
    yyltype location;
    std::string_view text;            ///< the file name or the text concerned
    std::string_view detail;          ///< as in HDNTReport
    const yyltype* earlier = nullptr; ///< what came first, when it was read in the same load; often null
};

/// The code of a kind of notice.
HDNT_API hdnt::DiagnosticCode codeOf(HDNTNotice::Kind kind);

/// Takes reports and notices as data, beside or instead of the printed form. See HDNTError::setListener.
class HDNT_API HDNTErrorListener {
public:
    virtual ~HDNTErrorListener();
    /// Called for each report, after it was counted. True silences the printed form.
    virtual bool report(const HDNTReport& report);
    virtual void notice(const HDNTNotice& notice);
    /// True silences the lines that the scanner prints to standard output; each of them is a notice, too.
    virtual bool silencesOutput() const;
};

/// The one place where errors in NTL text are reported: printed to standard error and counted. Nothing is thrown and
/// nothing stops; whoever loads decides from the counter.
///
/// A location may be null: the report then says "*** Error." without file, line and quotation. Used by the loading
/// thread only. Each report flushes standard output first, so that both streams stay in order.
class HDNT_API HDNTError {
public:
    HDNTError() = delete;

    /// All reports since the process started. Goes up by one for each; the library never lowers it, and a loader takes
    /// any value above 0 for a failed load. So one report makes every later load of the process fail: a host that
    /// wants to go on after a bad file loads it in a process of its own.
    static int numErrors;

    /// Sets the listener (null: none) and returns the one before. Not owned; must outlive its use.
    static HDNTErrorListener* setListener(HDNTErrorListener* listener);
    /// Passes a notice to the listener, if there is one.
    static void notify(const HDNTNotice& notice);
    /// Whether the scanner's lines for standard output are to be printed.
    static bool printsOutput();

    /// Counts a report, tells the listener and prints it unless that silences it. Whether it was printed.
    static bool report(const HDNTReport& report);
    /// Counts and prints one report.
    static void OutputError(yyltype* loc, const std::string& message);
    /// A report of the table of codes: its wording with the arguments filled in.
    static void report(hdnt::DiagnosticCode code, const yyltype* loc, std::initializer_list<std::string_view> arguments,
                       std::string_view detail = {}, const yyltype* earlier = nullptr);
    /// Prints the line `text` (nothing at all when null) and below it carets from first_column to last_column.
    static void UnderlineErrorInLine(const char* text, yyltype* loc);
    static void ParserFailed(const std::string& message);
    /// printf-style; longer texts are cut after 4,095 bytes.
    static void Formatted(yyltype* loc, const char* format, ...) __attribute__((format(printf, 2, 3)));

    static void UntermComment();
    static void MissingLibraries(yyltype* loc);
    static void NoValidSignalOnConnectStmt(yyltype* loc);
    static void NameCannotBeEmptyString(yyltype* loc);
    static void BlockDefNeedsToHaveAtleastOnePin(yyltype* loc);
    static void InvalidNetlistEntity(yyltype* loc);
    static void InvalidOperandType(yyltype* loc);
    static void BadFileName(const std::string& fileName);
    /// `reason` goes to the listener only.
    static void BadFileName(const std::string& fileName, std::string_view reason);
    static void ArrayFormatDisallowed(yyltype* loc, const char* text);
    static void UntermString(yyltype* loc, const char* text);
    static void FunctionNumArgsMismatch(yyltype* loc, const char* functionName);
    static void PropertyDefaultNotInRange(yyltype* loc, const char* propertyName);
    static void PropertyDefaultNotInList(yyltype* loc, const char* propertyName);
    static void InvalidName(yyltype* loc, const char* text);
    static void UnrecogChar(yyltype* loc, char c);
    static void InvalidArrayFormatName(yyltype* loc, const char* text);
    static void FunctionNotPresentInLibaray(yyltype* loc, const char* functionName);
    static void InvalidTieoff(yyltype* loc, const char* pinName);
    // `earlier`, which may be null, is where it was declared first; the printed form does not say it.
    static void PinRedefinition(yyltype* loc, const char* pinName);
    static void PinRedefinition(yyltype* loc, const yyltype* earlier, const char* pinName);
    static void PropertyRedefinition(yyltype* loc, const char* propertyName);
    static void PropertyRedefinition(yyltype* loc, const yyltype* earlier, const char* propertyName);
    static void LongIdentifier(yyltype* loc, const char* text);
    /// `loc` is the later definition, `previousLoc` the earlier one, whose line is named (0 when null).
    static void BlockRedefinitionError(yyltype* loc, yyltype* previousLoc, const char* blockName);
    /// `argumentIndex` counts from 1.
    static void MismatchedArgument(yyltype* loc, int argumentIndex);
};
