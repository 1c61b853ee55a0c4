#include "tools/ntl/Complete.h"

#include "author/exchange/importBlocks.h"
#include "author/lint/RuleControl.h"
#include "author/lint/lint.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Options.h"
#include "tools/ntl/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace ntl {

namespace {

/// While it lives, nothing reaches standard error.
class ErrorsDropped {
public:
    ErrorsDropped() : saved_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDERR_FILENO);
        close(nowhere);
    }
    ~ErrorsDropped() {
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }
    ErrorsDropped(const ErrorsDropped&) = delete;
    ErrorsDropped& operator=(const ErrorsDropped&) = delete;

private:
    int saved_;
};

const OptionSpec* optionNamed(const std::string& name, const CommandSpec* command) {
    static const std::vector<OptionSpec> none;
    for (const auto* const options : {command ? &command->options : &none, &globalOptions()})
        for (const OptionSpec& option : *options) {
            const std::vector<std::string> names = option.names();
            if (!option.isPositional() && std::find(names.begin(), names.end(), name) != names.end()) return &option;
        }
    return nullptr;
}

/// What the words before the one that is being written say, as far as they can be understood.
class Line {
public:
    explicit Line(const std::vector<std::string>& words) {
        for (size_t i = 0; i + 1 < words.size(); ++i) read(words[i]);
    }

    /// An option at the beginning of a word: its spec, and where its argument begins.
    struct Opening {
        const OptionSpec* option = nullptr;
        size_t argument = std::string::npos; ///< npos: in the next word
    };
    Opening opening(const std::string& word) const {
        const bool isLong = word.compare(0, 2, "--") == 0;
        constexpr size_t shortLength = 2;
        const size_t end = isLong ? word.find('=') : std::min(shortLength, word.size());
        const OptionSpec* const option = optionNamed(word.substr(0, end), command);
        if (!option || option->argument.empty()) return {};
        const bool isInside = isLong ? end != word.npos : word.size() > shortLength;
        return {option, isInside ? end + (isLong ? 1 : 0) : word.npos};
    }
    /// The one that the next word is for; null when there is none.
    const OptionSpec* positional() const {
        size_t index = 0;
        for (const OptionSpec& option : command->options)
            if (option.isPositional() && (option.isRepeatable() || index++ == positionals_)) return &option;
        return nullptr;
    }

    Settings settings;
    const CommandSpec* command = nullptr;
    const OptionSpec* waiting = nullptr; ///< the option whose argument comes next
    bool onlyPositionals = false;        ///< behind "--"

private:
    void read(const std::string& word) {
        if (const OptionSpec* const option = std::exchange(waiting, nullptr)) return assign(*option, word);
        if (!onlyPositionals && word == "--") {
            onlyPositionals = true;
        } else if (!onlyPositionals && word.size() > 1 && word[0] == '-') {
            const Opening found = opening(word);
            if (found.argument != word.npos) assign(*found.option, word.substr(found.argument));
            else if (found.option && !found.option->isArgumentOptional) waiting = found.option;
        } else if (!command) {
            for (const CommandSpec& one : commands())
                if (one.name == word) command = &one;
        } else if (const OptionSpec* const option = positional()) {
            assign(*option, word);
            ++positionals_;
        }
    }

    void assign(const OptionSpec& option, const std::string& text) {
        if (const auto* const one = std::get_if<std::string Settings::*>(&option.target)) settings.*(*one) = text;
        if (const auto* const list = std::get_if<std::vector<std::string> Settings::*>(&option.target))
            (settings.*(*list)).push_back(text);
    }

    size_t positionals_ = 0;
};

using Names = std::vector<std::string>;

bool canBeReadAgain(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) || std::filesystem::is_directory(path, error);
}

std::optional<OpenedLibrary> libraryOf(const Settings& settings) {
    const bool isOwnParent = !settings.parent.empty() && settings.parent != "common";
    if (!settings.library.empty() && !canBeReadAgain(settings.library)) return std::nullopt;
    if (isOwnParent && !canBeReadAgain(settings.parent)) return std::nullopt;
    leaveDescriptionsOut();
    applyGlobalSettings(settings);
    return openLibrary(settings);
}

// Those of parents too, as they can be named; when the line names an architecture, those that are there in it.
std::vector<HDNTBlock*> blocksIn(const OpenedLibrary& opened, const Settings& settings) {
    std::vector<HDNTBlock*> blocks = blocksOf(*opened.library, true);
    if (!settings.architecture.empty())
        std::erase_if(blocks, [&](const HDNTBlock* one) { return !isInArchitecture(*one, settings.architecture); });
    return blocks;
}

Names blockNames(const Settings& settings) {
    Names names;
    if (const auto opened = libraryOf(settings))
        for (const HDNTBlock* block : blocksIn(*opened, settings)) names.push_back(block->getName());
    return names;
}

Names groupNames(const Settings& settings) {
    const auto opened = libraryOf(settings);
    return opened ? groupsOf(blocksOf(*opened->library, opened->withParents)) : Names();
}

Names architectures(Settings settings) {
    settings.architecture.clear();
    applyGlobalSettings(settings);
    const HDNTLibrary probe(nullptr);
    return hdnt::author::architecturesIn(*probe.getConfig());
}

Names valuesOf(const HDNTProperty& property) {
    if (property.getType() == HATAttrTypes::TypeBool) return {"true", "false"};
    std::vector<hdnt::Value> values = property.getAllowedValues();
    if (values.empty())
        for (const std::optional<hdnt::Value>& bound : {property.getMinValue(), property.getMaxValue()})
            if (bound) values.push_back(*bound);
    Names texts;
    for (const hdnt::Value& value : values) texts.push_back(hdnt::textOf(value));
    return texts;
}

// "NAME=", and behind that "NAME=VALUE", with the name as it was written.
Names assignments(const Settings& settings, const std::string& text) {
    const size_t sign = text.find('=');
    const auto opened = libraryOf(settings);
    Names all;
    for (const std::string& name : opened ? settings.blocks : Names()) {
        const HDNTBlock* const block = opened->library->getTypeBlockByName(name, true);
        if (!block) continue;
        if (sign == text.npos)
            for (const HDNTProperty& property : block->properties()) all.push_back(property.getName() + "=");
        else if (const HDNTProperty* const property = block->getPropertyByName(text.substr(0, sign)))
            for (const std::string& value : valuesOf(*property)) all.push_back(text.substr(0, sign + 1) + value);
    }
    return all;
}

// Of those whose severity is the user's choice.
Names ruleCodes() {
    Names codes = hdnt::author::allCodes();
    std::erase_if(codes, [](const std::string& code) { return !hdnt::author::refusalOfControl(code).empty(); });
    return codes;
}

Names severities(const std::string& text) {
    const size_t sign = text.find('=');
    Names all;
    for (const std::string& code : ruleCodes()) {
        if (sign == text.npos) all.push_back(code + "=");
        else if (code == text.substr(0, sign))
            for (const char* severity : {"error", "warning", "note", "off"}) all.push_back(code + "=" + severity);
    }
    return all;
}

Names listOfCodes(const std::string& text) {
    Names codes = ruleCodes();
    for (std::string& code : codes) code.insert(0, text, 0, text.rfind(',') + 1);
    return codes;
}

Names namesOf(const std::vector<hdnt::author::ExchangeForm>& forms) {
    Names names;
    for (const hdnt::author::ExchangeForm& form : forms) names.emplace_back(form.name);
    return names;
}

Names argumentsOf(const OptionSpec& option, const Line& line, const std::string& text) {
    if (!option.choices.empty()) return option.choices;
    switch (option.completion) {
    case Completion::File:
    case Completion::Library: return {":files"};
    case Completion::Parent: return {":files", "common"};
    case Completion::Directory: return {":directories"};
    case Completion::Block: return blockNames(line.settings);
    case Completion::Command: return commandNames();
    case Completion::Architecture: return architectures(line.settings);
    case Completion::Group: return groupNames(line.settings);
    case Completion::Assignment: return assignments(line.settings, text);
    case Completion::Rule: return ruleCodes();
    case Completion::RuleList: return listOfCodes(text);
    case Completion::RuleSeverity: return severities(text);
    case Completion::Code: return hdnt::author::allCodes();
    case Completion::ExportForm: return namesOf(hdnt::author::exportForms());
    case Completion::ImportForm: return namesOf(hdnt::author::importForms());
    case Completion::None: break;
    }
    return {};
}

// A sentence begins with a capital: "e.g." ends none.
std::string firstSentence(const std::string& text) {
    size_t end = text.find(". ");
    while (end != text.npos && !(text[end + 2] >= 'A' && text[end + 2] <= 'Z')) end = text.find(". ", end + 1);
    return end == text.npos ? text.substr(0, text.find_last_not_of('.') + 1) : text.substr(0, end);
}

Names options(const CommandSpec* command) {
    Names all = {"--help\tPrint help and exit"};
    if (!command) all.emplace_back("--version\tPrint the version and exit");
    static const std::vector<OptionSpec> none;
    for (const auto* const list : {command ? &command->options : &none, &globalOptions()})
        for (const OptionSpec& option : *list)
            for (const std::string& name : option.isPositional() ? Names() : option.names())
                all.push_back(name + "\t" + firstSentence(option.help));
    return all;
}

Names commandsAndSummaries() {
    Names all;
    for (const CommandSpec& command : commands()) all.push_back(command.name + "\t" + command.summary);
    return all;
}

Names candidates(const Line& line, const std::string& word) {
    if (line.waiting) return argumentsOf(*line.waiting, line, word);
    if (!line.onlyPositionals && !word.empty() && word[0] == '-') {
        const Line::Opening found = line.opening(word);
        if (found.argument == word.npos) return options(line.command);
        Names all = argumentsOf(*found.option, line, word.substr(found.argument));
        for (std::string& one : all)
            if (one[0] != ':') one.insert(0, word, 0, found.argument);
        return all;
    }
    if (!line.command) return commandsAndSummaries();
    const OptionSpec* const positional = line.positional();
    return positional ? argumentsOf(*positional, line, word) : Names();
}

// Case aside, as names are.
bool goesOn(const std::string& candidate, const std::string& word) {
    return candidate[0] == ':' ||
           HSTStringUtils::to_upper_copy(candidate.substr(0, word.size())) == HSTStringUtils::to_upper_copy(word);
}

std::string completionOf(const std::vector<std::string>& words) {
    const ErrorsDropped quiet;
    std::string text;
    try {
        const std::string word = words.empty() ? "" : words.back();
        std::set<std::string> written;
        for (const std::string& one : candidates(Line(words), word))
            if (goesOn(one, word) && one.find('\n') == one.npos && written.insert(one).second) text += one + "\n";
    } catch (const std::exception&) {
        return {};
    }
    return text;
}

} // namespace

// The words need not be in order, so that the parser of the command line has no part in it.
bool complete(int argc, char** argv) {
    if (argc < 2 || std::string_view(argv[1]) != "--complete") return false;
    std::vector<std::string> words(argv + 2, argv + argc);
    if (!words.empty() && words.front() == "--") words.erase(words.begin());
    writeOutput(completionOf(words));
    return true;
}

} // namespace ntl
