#pragma once

#include "hdnt/diagnostics/DiagnosticCode.h"
#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct HDNTNotice;
struct HDNTReport;

namespace hdnt {

/// Where something stands, as people and their editors count: lines of the file and characters of the line, from 1; a
/// tab is one character, and so is a byte that is no UTF-8. For a map library these are the lines of its file, whatever
/// "#ifArch" left out.
struct Place {
    static constexpr std::size_t unknown = static_cast<std::size_t>(-1);

    std::string file;  ///< empty for a text in memory, and when not known
    int line = 0;      ///< 0 when not known
    int column = 0;    ///< of the first character; 0 when not known
    int endColumn = 0; ///< of the character behind the last one; 0 when not known
    /// Bytes of the file, or what a compressed one expands to, before the first character and up to behind the last
    /// one; `unknown` when not known.
    std::size_t offset = unknown;
    std::size_t endOffset = unknown;
    int textLine = 0; ///< line of the whole text, INCLUDE and INLINE files spliced in: what printed reports call it
    int order = 0;    ///< line among all that one load read; places of one load compare by it
    std::string text; ///< the line without its newline; empty when not known, or longer than 4,096 bytes

    bool isKnown() const { return line > 0; }
};

/// "file:line:column", as far as it is known; "(unknown file)" when nothing is.
HDNT_API std::string describe(const Place& place);

/// Another place that a diagnostic speaks of.
struct RelatedPlace {
    Place place;
    std::string message; ///< "first declared here"
};

/// One thing that was said of a text, in users' units.
struct Diagnostic {
    Severity severity = Severity::error;
    std::string code; ///< a name of the table of codes: of DiagnosticRule, or of the rules of hdnt_author
    Place place;
    std::string message;
    std::string detail; ///< what lies behind a fixed message, e.g. why a file could not be opened; often empty
    std::vector<RelatedPlace> related;
    /// What the place is part of, such as "block GATE/pin I"; empty where nobody found out.
    std::string element = {};
};

/// "message: detail", or the message alone.
HDNT_API std::string textOf(const Diagnostic& diagnostic);

// To be called while the report or notice is being told: places are found in the text that is being read.
HDNT_API Diagnostic diagnosticOf(const HDNTReport& report);
HDNT_API Diagnostic diagnosticOf(const HDNTNotice& notice);

/// Places of what was read at some time, such as of model objects: reads each file again, once, compressed or not and
/// within the limits in force, to count characters. When a file is gone, or the text was one in memory, the columns
/// are not known; when it is there and cannot be read, HEXDataException. Any thread, one at a time.
class HDNT_API SourcePlaces {
public:
    SourcePlaces();
    /// Counts in these texts instead of the files at their paths, as LoadOptions::texts has them. Copies them.
    explicit SourcePlaces(std::map<std::string, std::string> texts);
    ~SourcePlaces();
    SourcePlaces(const SourcePlaces&) = delete;
    SourcePlaces& operator=(const SourcePlaces&) = delete;

    Place placeOf(const yyltype& location);

private:
    struct File;
    HDNT_LOCAL File& fileAt(const std::string& path);

    std::map<std::string, std::string> texts_;
    std::map<std::string, std::unique_ptr<File>> files_;
};

} // namespace hdnt
