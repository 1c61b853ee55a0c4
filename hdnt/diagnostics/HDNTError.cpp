#include "hdnt/diagnostics/HDNTError.h"

#include "hdnt/diagnostics/LineStore.internal.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iostream>

int HDNTError::numErrors = 0;

static HDNTErrorListener* listener = nullptr;

// Read for compatibility with hosts that set it; it has no effect.
[[maybe_unused]] static const char* const debugSetting = std::getenv("HDNTDEBUG");

HDNTErrorListener::~HDNTErrorListener() = default;
bool HDNTErrorListener::report(const HDNTReport&) { return false; }
void HDNTErrorListener::notice(const HDNTNotice&) {}

HDNTErrorListener* HDNTError::setListener(HDNTErrorListener* next) {
    HDNTErrorListener* const previous = listener;
    listener = next;
    return previous;
}

void HDNTError::notify(const HDNTNotice& notice) {
    if (listener) listener->notice(notice);
}

static void print(yyltype* loc, const std::string& message) {
    std::cout.flush();
    std::fflush(stdout);
    std::cerr << std::endl;
    if (loc) {
        std::cerr << "*** Error line " << loc->first_line << "." << std::endl
                  << "file: " << (loc->fileName ? loc->fileName : "unknown file name") << " line: " << loc->fileLine
                  << "." << std::endl;
        const int line = loc->first_line > 0 ? loc->first_line + loc->storeOffset : 0;
        const std::string text(hdnt::diagnostics::LineStore::instance().line(static_cast<size_t>(line)));
        HDNTError::UnderlineErrorInLine(text.c_str(), loc);
    } else {
        std::cerr << "*** Error." << std::endl;
    }
    std::cerr << "*** " << message << std::endl << std::endl;
}

bool HDNTError::OutputErrorDetail(yyltype* loc, const std::string& message, std::string_view detail) {
    ++numErrors;
    if (listener && listener->report({loc, message, detail})) return false;
    print(loc, message);
    return true;
}

void HDNTError::OutputError(yyltype* loc, const std::string& message) { OutputErrorDetail(loc, message, {}); }

void HDNTError::UnderlineErrorInLine(const char* text, yyltype* loc) {
    if (!text) return;
    std::cerr << text << std::endl;
    std::string carets;
    for (int column = 1; loc && column <= loc->last_column; ++column) carets += column >= loc->first_column ? '^' : ' ';
    std::cerr << carets << std::endl;
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

void HDNTError::UntermComment() { OutputError(nullptr, "Input ends with unterminated comment"); }
void HDNTError::MissingLibraries(yyltype* loc) { OutputError(loc, "Libraries are missing in map"); }
void HDNTError::NoValidSignalOnConnectStmt(yyltype* loc) {
    OutputError(loc, "No valid signal found in connect statement");
}
void HDNTError::NameCannotBeEmptyString(yyltype* loc) { OutputError(loc, "Name cannot be empty string."); }
void HDNTError::BlockDefNeedsToHaveAtleastOnePin(yyltype* loc) {
    OutputError(loc, "Block Definition needs to have at least 1 pin.");
}
void HDNTError::InvalidNetlistEntity(yyltype* loc) {
    OutputError(loc, "Invalid netlist entry. Please refer to NTL grammar.");
}
void HDNTError::InvalidOperandType(yyltype* loc) { OutputError(loc, "Invalid operands"); }
void HDNTError::BadFileName(const std::string& fileName, std::string_view reason) {
    OutputErrorDetail(nullptr, "Could not open file: " + fileName, reason);
}
void HDNTError::ArrayFormatDisallowed(yyltype* loc, const char* text) {
    OutputError(loc, std::string("Array Format is disallowed here in string: ") + text);
}
void HDNTError::UntermString(yyltype* loc, const char* text) {
    OutputError(loc, std::string("Unterminated string constant: ") + text);
}
void HDNTError::FunctionNumArgsMismatch(yyltype* loc, const char* functionName) {
    OutputError(loc, std::string("Function call has mismatched number of args in function ") + functionName);
}
void HDNTError::PropertyDefaultNotInRange(yyltype* loc, const char* propertyName) {
    OutputError(loc, std::string("Property ") + propertyName + " default value not within allowed min/max range.");
}
void HDNTError::PropertyDefaultNotInList(yyltype* loc, const char* propertyName) {
    OutputError(loc, std::string("Property ") + propertyName + " default value not one of allowed values.");
}
void HDNTError::InvalidName(yyltype* loc, const char* text) {
    OutputError(loc, std::string("Invalid name format in string \"") + text + "\" . Valid name is [a-z0-9_A-Z]+ .");
}
void HDNTError::UnrecogChar(yyltype* loc, char c) { OutputError(loc, std::string("Unrecognized char: '") + c + "'"); }
void HDNTError::InvalidArrayFormatName(yyltype* loc, const char* text) {
    OutputError(loc, std::string("Invalid name format in string \"") + text +
                         "\" . Valid name is name[+veinteger:+veinteger].");
}
void HDNTError::FunctionNotPresentInLibaray(yyltype* loc, const char* functionName) {
    OutputError(loc, std::string("Function ") + functionName + " is missing from library");
}
void HDNTError::InvalidTieoff(yyltype* loc, const char* pinName) {
    OutputError(loc, std::string("Invalid tieoff of output pin \"") + pinName + "\"");
}
void HDNTError::PinRedefinition(yyltype* loc, const char* pinName) {
    OutputError(loc, std::string("Pin ") + pinName + " is being redefined.");
}
void HDNTError::PropertyRedefinition(yyltype* loc, const char* propertyName) {
    OutputError(loc, std::string("Property ") + propertyName + " is being redefined.");
}
void HDNTError::LongIdentifier(yyltype* loc, const char* text) {
    OutputError(loc, std::string("Identifier too long: \"") + text + "\"");
}
void HDNTError::BlockRedefinitionError(yyltype* loc, yyltype* previousLoc, const char* blockName) {
    OutputError(loc, std::string("Block ") + blockName + " has already been defined at location " +
                         std::to_string(previousLoc ? previousLoc->first_line : 0));
}
void HDNTError::MismatchedArgument(yyltype* loc, int argumentIndex) {
    OutputError(loc, "Argument type mismatch at argument " + std::to_string(argumentIndex));
}
