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

// --- completions

std::vector<std::string> optionNames(const std::vector<OptionSpec>& options) {
    std::vector<std::string> names;
    for (const OptionSpec& option : options)
        if (!option.isPositional())
            for (const std::string& name : option.names()) names.push_back(name);
    return names;
}

const char* const blockNames = "ntl list 2>/dev/null | awk 'NR > 1 { print $1 }'";

std::string bashArguments(const OptionSpec& option) {
    if (!option.choices.empty()) return "COMPREPLY=($(compgen -W '" + joined(option.choices, " ") + "' -- \"$cur\"))";
    if (option.completion == Completion::Directory) return "COMPREPLY=($(compgen -d -- \"$cur\"))";
    if (option.completion == Completion::Block)
        return "COMPREPLY=($(compgen -W \"$(" + std::string(blockNames) + ")\" -- \"${cur^^}\"))";
    if (option.completion == Completion::Command)
        return "COMPREPLY=($(compgen -W '" + joined(commandNames(), " ") + "' -- \"$cur\"))";
    if (option.completion == Completion::None) return "COMPREPLY=()";
    return "COMPREPLY=($(compgen -f -- \"$cur\"))";
}

// Options with an argument: what may follow them, in a case on "command,option".
std::string bashCases(const std::string& command, const std::vector<OptionSpec>& options) {
    std::string text;
    for (const OptionSpec& option : options) {
        if (option.isPositional() || option.argument.empty() || option.isArgumentOptional) continue;
        std::vector<std::string> patterns = option.names();
        for (std::string& pattern : patterns) pattern.insert(0, command + ",");
        text += "    " + joined(patterns, "|") + ") " + bashArguments(option) + "; return ;;\n";
    }
    return text;
}

// The others take the same.
const OptionSpec* firstPositional(const CommandSpec& command) {
    for (const OptionSpec& option : command.options)
        if (option.isPositional()) return &option;
    return nullptr;
}

std::string bashCompletion() {
    std::string text = "# bash completion for ntl\n_ntl() {\n    local cur=${COMP_WORDS[COMP_CWORD]} "
                       "prev=${COMP_WORDS[COMP_CWORD-1]} command= word\n    COMPREPLY=()\n"
                       "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n        case $word in " +
                       joined(commandNames(), "|") +
                       ") command=$word; break ;; esac\n    done\n    case $command,$prev in\n" +
                       bashCases("*", globalOptions());
    for (const CommandSpec& command : commands()) text += bashCases(command.name, command.options);
    text += "    esac\n    case $command,$cur in\n";
    for (const CommandSpec& command : commands()) {
        text += "    " + command.name + ",-*) COMPREPLY=($(compgen -W '" + joined(optionNames(command.options), " ") +
                " " + joined(optionNames(globalOptions()), " ") + " --help' -- \"$cur\")) ;;\n";
        if (const OptionSpec* const option = firstPositional(command))
            text += "    " + command.name + ",*) " + bashArguments(*option) + " ;;\n";
    }
    return text + "    ,-*) COMPREPLY=($(compgen -W '" + joined(optionNames(globalOptions()), " ") +
           " --help --version' -- \"$cur\")) ;;\n    ,*) COMPREPLY=($(compgen -W '" + joined(commandNames(), " ") +
           "' -- \"$cur\")) ;;\n    esac\n}\ncomplete -o filenames -F _ntl ntl\n";
}

// Inside single quotes and a zsh specification.
std::string zshText(const std::string& text) {
    return replaced(replaced(replaced(replaced(text, "'", "'\\''"), "[", "\\["), "]", "\\]"), ":", "\\:");
}

std::string zshAction(const OptionSpec& option) {
    if (!option.choices.empty()) return "(" + joined(option.choices, " ") + ")";
    if (option.completion == Completion::Directory) return "_files -/";
    if (option.completion == Completion::Block) return "_ntl_blocks";
    if (option.completion == Completion::Command) return "(" + joined(commandNames(), " ") + ")";
    return option.completion == Completion::None ? "" : "_files";
}

std::string zshOptions(const std::vector<OptionSpec>& options) {
    std::string text;
    int position = 0;
    for (const OptionSpec& option : options) {
        if (option.isPositional()) {
            const std::string place = option.isRepeatable() ? "*" : std::to_string(++position);
            text += " \\\n            '" + place + ":" + zshText(option.flags) + ":" + zshAction(option) + "'";
            continue;
        }
        for (const std::string& name : option.names()) {
            text += " \\\n            '" + std::string(option.isRepeatable() ? "*" : "") + name +
                    (option.isArgumentOptional ? "=-[" : "[") + zshText(option.help) + "]";
            if (!option.argument.empty())
                text += (option.isArgumentOptional ? "::" : ":") + zshText(option.argument) + ":" + zshAction(option);
            text += "'";
        }
    }
    return text;
}

std::string zshCompletion() {
    std::string text = "#compdef ntl\n_ntl_blocks() { local -a names; names=(${(f)\"$(" + std::string(blockNames) +
                       ")\"}); compadd -M 'm:{a-z}={A-Z}' -a names }\n_ntl() {\n    local state\n    local -a "
                       "commands\n    commands=(";
    for (const CommandSpec& command : commands()) text += "'" + command.name + ":" + zshText(command.summary) + "' ";
    text += ")\n    _arguments -C '(- *)--help[Print help and exit]' '(- *)--version[Print the version and exit]'" +
            zshOptions(globalOptions()) +
            " \\\n            '1:command:->command' '*::argument:->argument'\n    case $state in\n    command) "
            "_describe command commands ;;\n    argument)\n        case $words[1] in\n";
    for (const CommandSpec& command : commands())
        text += "        " + command.name + ") _arguments '--help[Print help and exit]'" + zshOptions(command.options) +
                zshOptions(globalOptions()) + " ;;\n";
    return text + "        esac ;;\n    esac\n}\n_ntl \"$@\"\n";
}

std::string fishText(const std::string& text) { return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'"; }

std::string fishOption(const OptionSpec& option, const std::string& condition) {
    std::string text = "complete -c ntl" + condition;
    if (option.isPositional())
        return option.completion == Completion::Command ? text + " -f -a '" + joined(commandNames(), " ") + "'\n"
               : option.completion == Completion::Block
                   ? text + " -f -a \"(" + replaced(blockNames, "$1", "\\$1") + ")\"\n"
                   : text + " -F\n";
    for (const std::string& name : option.names())
        text += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    text += " -d " + fishText(option.help);
    if (option.argument.empty() || option.isArgumentOptional) return text + "\n";
    if (!option.choices.empty()) return text + " -x -a " + fishText(joined(option.choices, " ")) + "\n";
    if (option.completion == Completion::None) return text + " -x\n";
    return text +
           (option.completion == Completion::Directory ? " -x -a '(__fish_complete_directories)'\n" : " -r -F\n");
}

std::string fishCompletion() {
    const std::string noCommand = " -n __fish_use_subcommand";
    std::string text = "# fish completion for ntl\ncomplete -c ntl -f\n";
    for (const OptionSpec& option : globalOptions()) text += fishOption(option, "");
    text += "complete -c ntl -s h -l help -d 'Print help and exit.'\n";
    text += "complete -c ntl" + noCommand + " -l version -d 'Print the version and exit.'\n";
    for (const CommandSpec& command : commands())
        text += "complete -c ntl" + noCommand + " -a " + command.name + " -d " + fishText(command.summary) + "\n";
    for (const CommandSpec& command : commands())
        for (const OptionSpec& option : command.options)
            if (!option.isPositional() || &option == firstPositional(command))
                text += fishOption(option, " -n '__fish_seen_subcommand_from " + command.name + "'");
    return text;
}

} // namespace

std::string generate(const std::string& kind) {
    if (kind == "man") return manPage();
    if (kind == "bash") return bashCompletion();
    if (kind == "zsh") return zshCompletion();
    if (kind == "fish") return fishCompletion();
    if (kind == "lint") return rulesDocument();
    throw Failure(Unusable, "--generate: '" + kind + "' is none of man, bash, zsh, fish, lint");
}

} // namespace ntl
