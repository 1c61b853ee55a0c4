#include "tools/ntl/Options.h"
#include "tools/ntl/Output.h"

#include <sstream>

namespace ntl {

static constexpr size_t lineLength = 80;

// The text from column `indent` on, after `start`, which stands in the first line or in one of its own.
static std::string wrapped(const std::string& start, const std::string& text, size_t indent) {
    std::string result = start;
    size_t column = start.size();
    if (column >= indent && column > 0) {
        result += "\n";
        column = 0;
    }
    std::istringstream words(text);
    bool first = true;
    for (std::string word; words >> word; first = false) {
        if (!first && column + 1 + word.size() > lineLength) {
            result += "\n";
            column = 0;
        }
        const size_t gap = column < indent ? indent - column : column > 0 ? 1 : 0;
        result += std::string(gap, ' ') + word;
        column += gap + word.size();
    }
    return result + "\n";
}

static std::string paragraphs(const std::string& text) {
    std::string result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) result += "\n" + wrapped("", line, 0);
    return result;
}

// Behind the name: " N", "[=N]" or nothing.
static std::string argumentOf(const OptionSpec& option, const std::string& argument) {
    if (argument.empty()) return "";
    return option.isArgumentOptional ? "[=" + argument + "]" : " " + argument;
}

static std::string optionHelp(const OptionSpec& option) {
    const std::string start = "  " + joined(option.names(), ", ") + argumentOf(option, option.argument);
    return wrapped(start, option.help, 26);
}

static std::string optionList(const std::string& title, const std::vector<OptionSpec>& options) {
    std::string text = "\n" + title + ":\n";
    for (const OptionSpec& option : options) text += optionHelp(option);
    return text;
}

std::string usageLine(const CommandSpec& command, std::string (*mark)(const std::string&, bool)) {
    std::string text = mark("ntl " + command.name, true);
    for (const OptionSpec& option : command.options) {
        const std::string more = option.isRepeatable() ? "..." : "";
        const std::string name = mark(option.names()[0], !option.isPositional());
        const std::string argument = option.argument.empty() ? "" : argumentOf(option, mark(option.argument, false));
        text.append(option.isRequired ? " " : " [").append(name).append(argument);
        if (option.isPositional()) text += more;
        if (!option.isRequired) text += "]";
        if (!option.isPositional()) text += more;
    }
    return text;
}

static std::string unmarked(const std::string& text, bool) { return text; }

static std::string commandHelp(const CommandSpec& command) {
    std::string text = wrapped("Usage:", usageLine(command, unmarked), 7);
    text += paragraphs(command.description);
    text += optionList("Options", command.options);
    text += optionList("Options of all commands", globalOptions());
    return text + wrapped("  -h, --help", "Print this help and exit.", 26);
}

std::string helpText(const CommandSpec* command) {
    if (command) return commandHelp(*command);
    std::string text = "Usage: ntl [OPTION]... COMMAND ...\n\nReads, checks, shows, expands and compares NTL "
                       "libraries.\n\nCommands:\n";
    for (const CommandSpec& each : commands()) text += wrapped("  " + each.name, each.summary, 26);
    text += optionList("Options", globalOptions());
    text += wrapped("  --version", "Print the version and exit.", 26);
    text += wrapped("  -h, --help", "Print this help and exit.", 26);
    return text + "\n'ntl COMMAND --help' says more of a command.\n";
}

} // namespace ntl
