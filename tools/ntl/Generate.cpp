#include "author/lint/lint.h"
#include "tools/ntl/Options.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

#include <algorithm>

namespace ntl {

namespace {

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (size_t at = text.find(what); at != text.npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

// --- man page

std::string roff(const std::string& text) {
    std::string result = replaced(replaced(text, "\\", "\\e"), "-", "\\-");
    if (!result.empty() && (result[0] == '.' || result[0] == '\'')) result.insert(0, "\\&");
    return replaced(result, "\n", "\n.PP\n");
}

std::string manOption(const OptionSpec& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.names())
        names.push_back(option.isPositional() ? "\\fI" + roff(name) + "\\fR" : "\\fB" + roff(name) + "\\fR");
    std::string text = ".TP\n" + joined(names, ", ");
    const std::string argument = "\\fI" + roff(option.argument) + "\\fR";
    if (!option.argument.empty()) text += option.isArgumentOptional ? "[=" + argument + "]" : " " + argument;
    return text + "\n" + roff(option.help) + "\n";
}

std::string manMark(const std::string& text, bool literal) { return (literal ? "\\fB" : "\\fI") + roff(text) + "\\fR"; }

std::string manCodes() {
    std::string text =
        ".SH CODES\nWhat stands in brackets behind reports, warnings and findings; 'ntl explain' says more.\n";
    for (const hdnt::author::RuleGroup& group : hdnt::author::ruleGroups()) {
        text += ".SS " + roff(std::string(group.title)) + "\n";
        for (const hdnt::DiagnosticRule* rule : group.rules)
            text +=
                ".TP\n\\fB" + roff(std::string(rule->name)) + "\\fR\n" + roff(std::string(rule->explanation)) + "\n";
    }
    return text;
}

const char* const manExamples =
    ".SH EXAMPLES\n"
    ".TP\n\\fBntl check own.btl\\fR\nSay what is wrong in a library.\n"
    ".TP\n\\fBntl lint \\-\\-werror \\-\\-format short libraries/*.btl\\fR\nTry all mappings too, and fail on any "
    "warning, with a line for each that editors and build logs understand.\n"
    ".TP\n\\fBntl explain open\\-input\\fR\nSay what a code means, with an example.\n"
    ".TP\n\\fBntl list \\-\\-group LOGIC\\fR\nList blocks of the common library.\n"
    ".TP\n\\fBntl expand ADD_CHAIN_16 \\-\\-deep \\-\\-format dot | dot \\-Tsvg\\fR\nDraw what a block becomes.\n"
    ".TP\n\\fBntl diff old new \\-\\-fail\\-on breaking\\fR\nCompare two releases of a library.\n"
    ".SH SEE ALSO\n\\fBdot\\fR(1), \\fBmake\\fR(1)\n.PP\nThe manual, the language and the rules are in ntl.md, "
    "language.md and lint.md of the documentation that is installed with the tool.\n";

std::string manPage() {
    std::string text =
        ".TH NTL 1 \"\" \"ntl " + std::string(NTL_VERSION) +
        "\" \"User Commands\"\n.SH NAME\nntl \\- check, show, expand, format and compare NTL libraries\n.SH SYNOPSIS\n"
        ".HP\n\\fBntl\\fR [\\fIOPTION\\fR]... \\fICOMMAND\\fR ...\n";
    for (const CommandSpec& command : commands()) text += ".HP\n" + usageLine(command, manMark) + "\n";
    text += ".SH OPTIONS\nThese may stand before or behind the command.\n";
    for (const OptionSpec& option : globalOptions()) text += manOption(option);
    text += ".TP\n\\fB\\-\\-version\\fR\nPrint the version and exit.\n"
            ".TP\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\nPrint help and exit.\n.SH COMMANDS\n";
    for (const CommandSpec& command : commands()) {
        text += ".SS " + command.name + " \\- " + roff(command.summary) + "\n" + roff(command.description) + "\n";
        for (const OptionSpec& option : command.options) text += manOption(option);
    }
    return text +
           ".SH EXIT STATUS\n"
           ".TP\n0\nFine.\n.TP\n1\nThe input has errors, or what was asked for does not exist or is refused; "
           "for format, a layout would change; for diff, the libraries differ.\n"
           ".TP\n2\nWrong usage, an input that cannot be opened (for diff, or has errors), or output that "
           "cannot be written.\n"
           ".SH ENVIRONMENT\n"
           ".TP\nNTL_PATH\nDirectories for INCLUDE and INLINE files, separated by colons, after those of \\-I.\n"
           ".TP\nHDNT_DATA_PATH\nDirectories where data files are looked for first.\n"
           ".TP\nHDNT_CELLVIEWS\nTables of cells, separated by colons, behind those of \\-\\-cells.\n"
           ".TP\nHDNT_CONFIG_PATH\nThe same for configuration files.\n"
           ".TP\nHDNT_PARAM_*\nParameters that \\-\\-param does not set, with underscores for dots.\n"
           ".TP\nNO_COLOR\nNo colours with \\-\\-color auto, when not empty.\n"
           ".TP\nTERM\nWhen it is dumb, neither such colours nor a bar.\n" +
           manCodes() + manExamples;
}

// --- completions: the shells ask the tool what may stand there, and offer files themselves

// Bash takes "NAME=VALUE" and "GROUP:SUBGROUP" apart, and wants back what stands behind the sign. Words come with their
// backslashes.
const char* const bashCompletion = R"(# bash completion for ntl
_ntl() {
    local cur=${COMP_WORDS[COMP_CWORD]//\\/} word line i
    local -a words=()
    for ((i = 1; i <= COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]//\\/}
        if ((${#words[@]})) && [[ $word == [=:]* || ($i -gt 1 && ${COMP_WORDS[i-1]} == [=:]) ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
    done
    [[ $cur == [=:] ]] && cur=
    word=${words[-1]}
    local before=${word%"$cur"}
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
        :files | :directories)
            compopt -o filenames 2>/dev/null
            while IFS= read -r word; do COMPREPLY+=("$word"); done < <(compgen -"${line:1:1}" -- "$cur")
            ;;
        *)
            line=${line%%$'\t'*}
            [[ $line == *= ]] && compopt -o nospace 2>/dev/null
            printf -v line %q "${line:${#before}}"
            COMPREPLY+=("$line")
            ;;
        esac
    done < <("${COMP_WORDS[0]/#\~/$HOME}" --complete -- "${words[@]}" 2>/dev/null)
}
complete -F _ntl ntl
)";

const char* const zshCompletion = R"(#compdef ntl
_ntl() {
    local line
    local -a plain open described
    for line in "${(@f)$(${~words[1]} --complete -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}"; do
        case $line in
        :files) _files ;;
        :directories) _files -/ ;;
        *$'\t'*) described+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}") ;;
        *=) open+=("$line") ;;
        ?*) plain+=("$line") ;;
        esac
    done
    (( $#described )) && _describe ntl described
    (( $#open )) && compadd -M 'm:{a-z}={A-Z}' -S '' -a open
    (( $#plain )) && compadd -M 'm:{a-z}={A-Z}' -a plain
}
_ntl "$@"
)";

const char* const fishCompletion = R"(# fish completion for ntl
function __ntl_complete
    set -l words (commandline -opc) (commandline -ct)
    set -l found ($words[1] --complete -- $words[2..-1] 2>/dev/null)
    string match -v ':*' -- $found
    contains -- :files $found; and __fish_complete_path (commandline -ct)
    contains -- :directories $found; and __fish_complete_directories (commandline -ct)
end
complete -c ntl -f -a '(__ntl_complete)'
)";

} // namespace

std::string generate(const std::string& kind) {
    if (kind == "man") return manPage();
    if (kind == "bash") return bashCompletion;
    if (kind == "zsh") return zshCompletion;
    if (kind == "fish") return fishCompletion;
    if (kind == "lint") return rulesDocument();
    throw Failure(Unusable, "--generate: '" + kind + "' is none of man, bash, zsh, fish, lint");
}

} // namespace ntl
