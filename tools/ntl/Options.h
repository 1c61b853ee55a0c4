#pragma once

#include "tools/ntl/Settings.h"

#include <string>
#include <variant>
#include <vector>

namespace ntl {

/// What a shell should offer as an option's argument.
enum class Completion {
    None,
    File,
    Directory,
    Library,
    Parent, ///< a library, or "common"
    Block,
    Command,
    Architecture,
    Group,
    Assignment,   ///< NAME=VALUE, of a property of the blocks on the line
    Rule,         ///< a code that can be turned off
    RuleList,     ///< several, with commas
    RuleSeverity, ///< CODE=SEVERITY
    Code,         ///< any
    ExportForm,
    ImportForm,
};

using Target =
    std::variant<bool Settings::*, int Settings::*, std::string Settings::*, std::vector<std::string> Settings::*>;

/// One option or positional argument. Parser, help, man page and completions are made from it.
struct OptionSpec {
    std::string flags;    ///< "-j,--jobs"; for a positional argument its name, "INPUT"
    std::string argument; ///< "N"; empty for a switch
    std::string help;     ///< one sentence or more, no line breaks
    Target target;
    Completion completion = Completion::None;
    std::vector<std::string> choices = {}; ///< when only these are allowed
    bool isRequired = false;
    bool isArgumentOptional = false; ///< given as "--name=argument" or not at all

    bool isPositional() const { return flags.front() != '-'; }
    bool isRepeatable() const { return std::holds_alternative<std::vector<std::string> Settings::*>(target); }
    /// "-j", "--jobs"
    std::vector<std::string> names() const;
};

struct CommandSpec {
    std::string name;
    std::string summary;     ///< one line, no full stop
    std::string description; ///< paragraphs, separated by newlines
    std::vector<OptionSpec> options;
    int (*run)(const Settings&);
    bool needsData = true;         ///< whether the options of all commands are carried out before
    bool showsDescriptions = true; ///< with false, those of the configuration need not be read
    bool findsProjects = false;    ///< project files may come into play that no input on the command line shows
};

const std::vector<OptionSpec>& globalOptions();
const std::vector<CommandSpec>& commands();
std::vector<std::string> commandNames();

/// What --help prints: for a command, or for the tool when null.
std::string helpText(const CommandSpec* command);
/// The command line of a command: "ntl check [INPUT...] [-I DIR]... ", with each name and argument passed through
/// `mark`, which sees whether it is to be typed as it stands.
std::string usageLine(const CommandSpec& command, std::string (*mark)(const std::string& text, bool literal));
/// docs/lint.md: what each rule says, with its examples.
std::string rulesDocument();
/// Makes something from these tables: "man", "bash", "zsh", "fish" or "lint". Throws Failure(Unusable) for another
/// kind.
std::string generate(const std::string& kind);

/// Carries out a command line. The result is the exit status; failures of a command come out as exceptions.
int runCommandLine(int argc, char** argv);

} // namespace ntl
