#include "hdnt/diagnostics/HDNTError.h"

#include "hdnt/diagnostics/LineStore.internal.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iostream>

using Code = hdnt::DiagnosticCode;

int HDNTError::numErrors = 0;

static HDNTErrorListener* listener = nullptr;

// Read for compatibility with hosts that set it; it has no effect.
[[maybe_unused]] static const char* const debugSetting = std::getenv("HDNTDEBUG");

HDNTErrorListener::~HDNTErrorListener() = default;
bool HDNTErrorListener::report(const HDNTReport&) { return false; }
void HDNTErrorListener::notice(const HDNTNotice&) {}
bool HDNTErrorListener::silencesOutput() const { return false; }

HDNTErrorListener* HDNTError::setListener(HDNTErrorListener* next) {
    HDNTErrorListener* const previous = listener;
    listener = next;
    return previous;
}

void HDNTError::notify(const HDNTNotice& notice) {
    if (listener) listener->notice(notice);
}

hdnt::DiagnosticCode codeOf(HDNTNotice::Kind kind) {
    using Code = hdnt::DiagnosticCode;
    // In the order of the enumeration.
    static constexpr std::array<Code, 17> codes = {
        Code::includeSkipped,      Code::includeNotFound,     Code::includeNotOpened, Code::unterminatedString,
        Code::unterminatedComment, Code::droppedMapping,      Code::includeText,      Code::mapLibraryRefused,
        Code::fileOpened,          Code::includeTrailingText, Code::numberOverflow,   Code::repeatedOption,
        Code::ignoredOption,       Code::functionRedeclared,  Code::mappingReplaced,  Code::statementDropped,
        Code::inversionDropped};
    return codes.at(static_cast<std::size_t>(kind));
}

bool HDNTError::printsOutput() { return !listener || !listener->silencesOutput(); }

static std::string underlined(std::string_view text, const yyltype* loc) {
    std::string lines(text);
    lines += '\n';
    for (int column = 1; loc && column <= loc->last_column; ++column) lines += column >= loc->first_column ? '^' : ' ';
    return lines += '\n';
}

// In one piece: the stream has no buffer, and a text may have a fault in each of its lines.
static void print(const yyltype* loc, std::string_view message) {
    std::cout.flush();
    std::fflush(stdout);
    std::string text = "\n";
    if (loc) {
        const std::string fileName = loc->fileName ? loc->fileName : "unknown file name";
        text += "*** Error line " + std::to_string(loc->first_line) + ".\nfile: " + fileName +
                " line: " + std::to_string(loc->fileLine) + ".\n";
        const int line = loc->first_line > 0 ? loc->first_line + std::max(loc->storeOffset, 0) : 0;
        const std::string_view source = hdnt::diagnostics::LineStore::instance().line(static_cast<size_t>(line));
        text += underlined(source.substr(0, source.find('\0')), loc);
    } else {
        text += "*** Error.\n";
    }
    text.append("*** ").append(message).append("\n\n");
    std::cerr << text;
}

bool HDNTError::report(const HDNTReport& report) {
    ++numErrors;
    if (listener && listener->report(report)) return false;
    print(report.location, report.message);
    return true;
}

void HDNTError::report(Code code, const yyltype* loc, std::initializer_list<std::string_view> arguments,
                       std::string_view detail, const yyltype* earlier) {
    const std::string message = hdnt::filledIn(hdnt::ruleOf(code).wording, arguments);
    report({loc, message, detail, code, earlier});
}

void HDNTError::OutputError(yyltype* loc, const std::string& message) { report({loc, message, {}}); }

void HDNTError::UnderlineErrorInLine(const char* text, yyltype* loc) {
    if (text) std::cerr << underlined(text, loc);
}

void HDNTError::ParserFailed(const std::string& message) { OutputError(nullptr, message); }

void HDNTError::Formatted(yyltype* loc, const char* format, ...) {
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    OutputError(loc, text);
}

void HDNTError::UntermComment() { report(Code::commentUnterminated, nullptr, {}); }
void HDNTError::MissingLibraries(yyltype* loc) { report(Code::missingLibraries, loc, {}); }
void HDNTError::NoValidSignalOnConnectStmt(yyltype* loc) { report(Code::connectWithoutSignal, loc, {}); }
void HDNTError::NameCannotBeEmptyString(yyltype* loc) { report(Code::emptyName, loc, {}); }
void HDNTError::BlockDefNeedsToHaveAtleastOnePin(yyltype* loc) { report(Code::blockWithoutPins, loc, {}); }
void HDNTError::InvalidNetlistEntity(yyltype* loc) { report(Code::invalidNetlistEntity, loc, {}); }
void HDNTError::InvalidOperandType(yyltype* loc) { report(Code::invalidOperands, loc, {}); }
void HDNTError::BadFileName(const std::string& fileName) { BadFileName(fileName, {}); }
void HDNTError::BadFileName(const std::string& fileName, std::string_view reason) {
    report(Code::cannotOpen, nullptr, {fileName}, reason);
}
void HDNTError::ArrayFormatDisallowed(yyltype* loc, const char* text) { report(Code::arrayName, loc, {text}); }
void HDNTError::UntermString(yyltype* loc, const char* text) { report(Code::stringUnterminated, loc, {text}); }
void HDNTError::FunctionNumArgsMismatch(yyltype* loc, const char* text) {
    report(Code::functionArgumentCount, loc, {text});
}
void HDNTError::PropertyDefaultNotInRange(yyltype* loc, const char* text) {
    report(Code::defaultNotInRange, loc, {text});
}
void HDNTError::PropertyDefaultNotInList(yyltype* loc, const char* text) {
    report(Code::defaultNotInList, loc, {text});
}
void HDNTError::InvalidName(yyltype* loc, const char* text) { report(Code::invalidName, loc, {text}); }
void HDNTError::UnrecogChar(yyltype* loc, char c) { report(Code::unrecognizedCharacter, loc, {{&c, 1}}); }
void HDNTError::InvalidArrayFormatName(yyltype* loc, const char* text) { report(Code::invalidArrayName, loc, {text}); }
void HDNTError::FunctionNotPresentInLibaray(yyltype* loc, const char* text) {
    report(Code::functionMissing, loc, {text});
}
void HDNTError::InvalidTieoff(yyltype* loc, const char* text) { report(Code::tieOfOutput, loc, {text}); }
void HDNTError::LongIdentifier(yyltype* loc, const char* text) { report(Code::longIdentifier, loc, {text}); }
void HDNTError::PinRedefinition(yyltype* loc, const char* pinName) { PinRedefinition(loc, nullptr, pinName); }
void HDNTError::PinRedefinition(yyltype* loc, const yyltype* earlier, const char* pinName) {
    report(Code::pinRedefined, loc, {pinName}, {}, earlier);
}
void HDNTError::PropertyRedefinition(yyltype* loc, const char* name) { PropertyRedefinition(loc, nullptr, name); }
void HDNTError::PropertyRedefinition(yyltype* loc, const yyltype* earlier, const char* name) {
    report(Code::propertyRedefined, loc, {name}, {}, earlier);
}
void HDNTError::BlockRedefinitionError(yyltype* loc, yyltype* previousLoc, const char* blockName) {
    const std::string line = std::to_string(previousLoc ? previousLoc->first_line : 0);
    report(Code::blockRedefined, loc, {blockName, line}, {}, previousLoc);
}
void HDNTError::MismatchedArgument(yyltype* loc, int argumentIndex) {
    report(Code::functionArgumentType, loc, {std::to_string(argumentIndex)});
}
