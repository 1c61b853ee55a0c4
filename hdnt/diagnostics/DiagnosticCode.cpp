#include "hdnt/diagnostics/DiagnosticCode.h"

#include <array>

namespace hdnt {

std::string_view nameOf(Severity severity) {
    static constexpr std::array<std::string_view, 3> names = {"error", "warning", "note"};
    return names.at(static_cast<size_t>(severity));
}

namespace {

using C = DiagnosticCode;
constexpr Severity E = Severity::error;
constexpr Severity W = Severity::warning;

struct Row {
    DiagnosticCode code;
    DiagnosticRule rule;
};

// The one place for what the library says. Hosts and their tests compare the wordings: they stay as they are.
constexpr Row rows[] = {
    {C::other, {"error", E, "%", "An error that the program around the library reports."}},
    {C::syntaxError,
     {"syntax-error", E, "syntax error",
      "The text cannot go on like this. Look at the place and just before it: a missing semicolon, comma, quote or "
      "brace "
      "shows at the next word."}},
    {C::parserDepth,
     {"parser-depth", E, "memory exhausted",
      "Parentheses or else branches are nested deeper than the limit parserDepth allows."}},
    {C::unrecognizedCharacter,
     {"unrecognized-character", E, "Unrecognized char: '%'",
      "The language has no such character outside strings and comments. Carriage returns and byte order marks "
      "count."}},
    {C::longIdentifier,
     {"long-identifier", E, "Identifier too long: \"%\"",
      "An identifier has at most 31 characters; write longer names in quotes."}},
    {C::emptyName, {"empty-name", E, "Name cannot be empty string.", "Give the declaration a name."}},
    {C::invalidName,
     {"invalid-name", E, "Invalid name format in string \"%\" . Valid name is [a-z0-9_A-Z]+ .",
      "Names consist of letters, digits and underscores."}},
    {C::arrayName,
     {"array-name", E, "Array Format is disallowed here in string: %",
      "Only pins and signals may be declared with a range in brackets."}},
    {C::invalidArrayName,
     {"invalid-array-name", E, "Invalid name format in string \"%\" . Valid name is name[+veinteger:+veinteger].",
      "A range is written as in \"D[7:0]\", a single bit as in \"D[3]\"."}},
    {C::rangeElements,
     {"range-elements", E, "Range \"%\" has % elements, more than % (limit rangeElements).",
      "The range is longer than the limit rangeElements allows."}},
    {C::pinBit, {"pin-bit", E, "Pin \"%\" has bit %, above %.", "A pin's bit has 15 bits."}},
    {C::pinCount,
     {"pin-count", E, "Pin \"%\" makes % pins of its block, more than %.", "A block has at most 65,536 pins."}},
    {C::pinRedefined,
     {"pin-redefined", E, "Pin % is being redefined.",
      "A bit of that name was declared before in the block; remove or rename one of them."}},
    {C::propertyRedefined,
     {"property-redefined", E, "Property % is being redefined.",
      "A property of that name, case aside, was declared before in the block; remove or rename one of them."}},
    {C::blockRedefined,
     {"block-redefined", E, "Block % has already been defined at location %",
      "A block of that name, case aside, was declared before in the library; remove or rename one of them."}},
    {C::tieOfOutput,
     {"tie-of-output", E, "Invalid tieoff of output pin \"%\"",
      "An output drives its net and cannot be tied; remove the required value."}},
    {C::defaultNotInList,
     {"default-not-in-list", E, "Property % default value not one of allowed values.",
      "List the default among the values, exactly as it is written, or choose another."}},
    {C::defaultNotInRange,
     {"default-not-in-range", E, "Property % default value not within allowed min/max range.",
      "Choose a default between minimum and maximum."}},
    {C::bitWidth,
     {"bit-width", E, "Bit width % is not within 0 and % (limit bitWidth).",
      "The property is wider than the limit bitWidth allows."}},
    {C::precision,
     {"precision", E, "Precision % is not within 0 and % (limit precision).",
      "The precision is greater than the limit precision allows."}},
    {C::connectWithoutSignal,
     {"connect-without-signal", E, "No valid signal found in connect statement",
      "No signal of that name is declared in the mapping."}},
    {C::invalidOperands,
     {"invalid-operands", E, "Invalid operands",
      "Both operands must have one type, and one that the operator takes; there are no conversions."}},
    {C::functionMissing,
     {"function-missing", E, "Function % is missing from library", "Declare the function in the library or a parent."}},
    {C::functionArgumentCount,
     {"function-argument-count", E, "Function call has mismatched number of args in function %",
      "The declaration has another number of parameters."}},
    {C::functionArgumentType,
     {"function-argument-type", E, "Argument type mismatch at argument %",
      "The declaration has another type at that position, counted from 1."}},
    {C::cannotOpen, {"cannot-open", E, "Could not open file: %", "The file is missing, unreadable or damaged."}},
    {C::missingLibraries, {"missing-libraries", E, "Libraries are missing in map", "A map names no libraries."}},
    {C::blockWithoutPins,
     {"block-without-pins", E, "Block Definition needs to have at least 1 pin.", "Declare a pin in the block."}},
    {C::invalidNetlistEntity,
     {"invalid-netlist-entity", E, "Invalid netlist entry. Please refer to NTL grammar.",
      "A mapping holds something that mappings cannot hold."}},
    {C::stringUnterminated,
     {"string-unterminated", E, "Unterminated string constant: %", "Close the quote on its line."}},
    {C::commentUnterminated,
     {"comment-unterminated", E, "Input ends with unterminated comment", "Close the comment with */."}},
    {C::folderEntry,
     {"folder-entry", E, "%: the name is too short for a folder of libraries",
      "Programs that load the folder by the library manager fail at an entry whose path has fewer than four "
      "characters. "
      "Rename or remove it, or name the folder by a longer path."}},
    {C::configuration, {"configuration", E, "%", "A configuration file cannot be read; without it nothing is loaded."}},
    {C::refused, {"refused", E, "%", "The model refuses what the text declares; the load ends there."}},
    {C::tooManyDiagnostics,
     {"too-many-diagnostics", E, "% more are not kept (limit diagnostics)",
      "More was said of one load than the limit diagnostics allows. It is a warning when the rest are."}},
    {C::includeSkipped,
     {"include-skipped", W, "file \"%\" was included before and is skipped",
      "An INCLUDE names a file that was included before; use INLINE to bring a text in more than once."}},
    {C::includeNotFound,
     {"include-not-found", W, "file \"%\" is not found",
      "The file of an INCLUDE or INLINE is not found in the search directories, and the statement is passed over."}},
    {C::includeNotOpened,
     {"include-not-opened", W, "file \"%\" cannot be opened",
      "The file of an INCLUDE or INLINE cannot be opened, and the statement is passed over."}},
    {C::includeText,
     {"include-text", W, "text between a file statement and its file name is passed over: %",
      "Behind INCLUDE or INLINE the line with the file name ends in a semicolon; lines without one are passed "
      "over."}},
    {C::unterminatedString,
     {"unterminated-string", W, "string is not closed on its line: %",
      "The text from the quote to the end of the line is passed over."}},
    {C::unterminatedComment,
     {"unterminated-comment", W, "comment is not closed",
      "Everything behind the beginning of the comment is passed over."}},
    {C::droppedMapping,
     {"dropped-mapping", W, "mapping of block \"%\" is dropped",
      "A mapping that stands by itself finds no block that was declared before it."}},
    {C::mapLibraryRefused,
     {"map-library-refused", W, "map library \"%\" is not loaded",
      "A limit or the root folder keeps the map library from being read: the block has no mapping from it."}},
    {C::includeTrailingText,
     {"include-trailing-text", W, "text on the line of a file statement is lost: %",
      "A line that names a file for INCLUDE or INLINE is taken whole: only comments may stand beside the name.",
      "library \"L\" { INCLUDE part.inc; block \"FLOP_RISE\" { } }\n}\n",
      "library \"L\" { INCLUDE part.inc;\nblock \"FLOP_RISE\" { } }\n"}},
    {C::numberOverflow,
     {"number-overflow", W, "number % does not fit",
      "Whole numbers have 32 bits: of a greater one only the lower 32 are read. A bit of a signal ends at 2147483647.",
      "library \"L\" { block \"FLOP_RISE\" { property int \"N\" { min = 4294967296, default = 1 } } }",
      "library \"L\" { block \"FLOP_RISE\" { property int \"N\" { min = 0, default = 1 } } }"}},
    {C::repeatedOption,
     {"repeated-option", W, "% was given before, and the later one counts",
      "An option of a property, or a flag, level or group of a block, is given twice.",
      "library \"L\" { block \"FLOP_RISE\" { property int \"N\" { default = 1, default = 2 } } }",
      "library \"L\" { block \"FLOP_RISE\" { property int \"N\" { default = 2 } } }"}},
    {C::ignoredOption,
     {"ignored-option", W, "% has no effect on a property that lists its values",
      "A property has a range or a list of values, never both.",
      "library \"L\" { block \"FLOP_RISE\" { property int \"N\" { values { 1, 2 }, max = 1 } } }",
      "library \"L\" { block \"FLOP_RISE\" { property int \"N\" { values { 1, 2 } } } }"}},
    {C::functionRedeclared,
     {"function-redeclared", W, "function \"%\" was declared before, and that declaration counts",
      "Calls find the first declaration of a function. Texts of one library may each declare it, as long as they "
      "agree.",
      "library \"L\" { function int f(int); function int f(string); }", "library \"L\" { function int f(int); }"}},
    {C::mappingReplaced,
     {"mapping-replaced", W, "mapping of block \"%\" replaces the one it had",
      "A block has one mapping: a later one takes its place.",
      "library \"L\" { block \"FLOP_RISE\" { } mapsto { } block \"FLOP_RISE\" expandsto { } }",
      "library \"L\" { block \"FLOP_RISE\" { } expandsto { } }"}},
    {C::statementDropped,
     {"statement-dropped", W, "statements in braces are dropped at the top of a mapping",
      "Braces group statements behind if and else only.",
      "library \"L\" { block \"FLOP_RISE\" { } mapsto { { signal \"s\"; } } }",
      "library \"L\" { block \"FLOP_RISE\" { } mapsto { signal \"s\"; } }"}},
    {C::inversionDropped,
     {"inversion-dropped", W, "inversion of pin \"%\" has no effect here",
      "A pin is inverted where it is connected; the properties of a pin are those of the pin itself.",
      "library \"L\" { block \"FLOP_RISE\" { pin \"D\" input { property bool \"P\" true; } }\n"
      "mapsto { assign pin property \"~D\", \"P\" true; } }",
      "library \"L\" { block \"FLOP_RISE\" { pin \"D\" input { property bool \"P\" true; } }\n"
      "mapsto { assign pin property \"D\", \"P\" true; } }"}},
    {C::fileOpened, {"file-opened", Severity::note, "file \"%\" is read", "An INCLUDE or INLINE brings a file in."}},
};

constexpr bool inOrder() {
    int code = 0;
    for (const Row& row : rows)
        if (static_cast<int>(row.code) != code++) return false;
    return code == static_cast<int>(C::fileOpened) + 1;
}
static_assert(inOrder());

} // namespace

const std::vector<DiagnosticRule>& diagnosticRules() {
    static const auto* const rules = [] {
        auto* const list = new std::vector<DiagnosticRule>;
        for (const Row& row : rows) list->push_back(row.rule);
        return list;
    }();
    return *rules;
}

const DiagnosticRule& ruleOf(DiagnosticCode code) { return rows[static_cast<size_t>(code)].rule; }

std::string filledIn(std::string_view wording, std::initializer_list<std::string_view> arguments) {
    std::string text;
    auto next = arguments.begin();
    for (const char c : wording) {
        if (c == '%' && next != arguments.end()) text += *next++;
        else text += c;
    }
    return text;
}

} // namespace hdnt
