#include "tools/ntl/Options.h"

#include "author/exchange/importBlocks.h"
#include "author/lint/nearestNames.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Complete.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/RuleOptions.h"
#include "tools/ntl/Status.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <utility>

namespace ntl {

std::vector<std::string> OptionSpec::names() const {
    std::vector<std::string> result;
    std::istringstream list(flags);
    for (std::string name; std::getline(list, name, ',');) result.push_back(name);
    return result;
}

const std::vector<OptionSpec>& globalOptions() {
    static const std::vector<OptionSpec> options = {
        {"--data", "DIR", "Look for data and configuration files in DIR first.", &Settings::data,
         Completion::Directory},
        {"--cells", "FILE", "Add the cells in FILE, 'value,NAME' a line, to the table of cells. May be repeated.",
         &Settings::cellTables, Completion::File},
        {"--param", "NAME=BOOL", "Set a parameter, e.g. arch.enableTestFeatures=true. May be repeated.",
         &Settings::parameters},
        {"--arch", "NAME", "Answer for this architecture.", &Settings::architecture, Completion::Architecture},
        {"--limit", "NAME=VALUE", "Set a bound on what is read, e.g. includeDepth=16. May be repeated.",
         &Settings::limits},
        {"--untrusted", "",
         "Read files of someone else: what they include stays below their folder, and tight bounds hold for size and "
         "time.",
         &Settings::untrusted},
        {"--color",
         "WHEN",
         "Colour the tool's own lines: auto (on a terminal), always or never.",
         &Settings::color,
         Completion::None,
         {"auto", "always", "never"}},
    };
    return options;
}

static OptionSpec searchOption() {
    return {"-I,--include", "DIR",
            "Look for INCLUDE and INLINE files in DIR, before the directories of NTL_PATH. May be repeated.",
            &Settings::searchDirectories, Completion::Directory};
}

static OptionSpec parentOption() {
    return {"--parent", "PATH|common", "Build the library over the one at PATH, or over the common library.",
            &Settings::parent, Completion::Parent};
}

static OptionSpec libraryOption() {
    return {"-l,--library", "PATH", "Read the library in this file or folder instead of the common library.",
            &Settings::library, Completion::Library};
}

static OptionSpec blockArgument(bool isRequired) {
    return {"BLOCK", "", "Name of a block, case aside.", &Settings::blocks, Completion::Block, {}, isRequired};
}

static OptionSpec jsonOption() { return {"--json", "", "Write JSON.", &Settings::json}; }

static OptionSpec formatOption() {
    return {"--format",
            "FORMAT",
            "Form of standard output: text; short, which has a line for each error, warning and note; json or sarif.",
            &Settings::format,
            Completion::None,
            {"text", "short", "json", "sarif"}};
}

static OptionSpec quietOption() {
    return {"-q,--quiet", "", "Write nothing of inputs that are in order, and no sum.", &Settings::quiet};
}

static std::vector<OptionSpec> checkOptions() {
    std::vector<OptionSpec> options = {
        {"INPUT", "", "File or folder of .btl files; - for standard input.", &Settings::inputs, Completion::Library},
        searchOption(),
        {"-j,--jobs", "N", "Check up to N inputs at once; 0: as many as there are processors.", &Settings::jobs},
        formatOption(),
        {"--max-errors", "N",
         "Say up to N errors of an input in lines of the tool's own, beside the library's reports; 0: all. Without it "
         "20. Of standard error alone.",
         &Settings::mostErrors},
        {"--depfile", "FILE", "Write the files that each input was read from to FILE, as rules for make.",
         &Settings::depfile, Completion::File},
        {"--deptarget", "NAME", "What depends on the files in the rules of --depfile; without it, FILE itself.",
         &Settings::depTarget, Completion::File},
        quietOption(),
        {"--root", "DIR", "Refuse INCLUDE and INLINE files that are not below DIR.", &Settings::rootFolder,
         Completion::Directory},
        parentOption()};
    const std::vector<OptionSpec> rules = ruleOptions();
    options.insert(options.end(), rules.begin(), rules.end());
    return options;
}

static CommandSpec checkCommand() {
    return {"check", "check libraries for errors",
            "Loads, finishes and checks each INPUT, a file or a folder of .btl files, as a library of its own in a "
            "process of its own. Without INPUT, the shipped common and simulation libraries are checked.\n"
            "Errors and warnings go to standard error. Standard output has a line for each input without errors, and "
            "one that sums up several inputs.\n"
            "Blocks with the test flag are checked too, unless --param arch.enableTestFeatures=false is given.",
            checkOptions(), &runCheck};
}

static CommandSpec lintCommand() {
    std::vector<OptionSpec> options = checkOptions();
    const std::vector<OptionSpec> more = {
        {"--budget", "N", "Try at most N settings of a mapping; 2000 without it.", &Settings::budget},
        {"--list-rules", "", "Write all codes with what they mean, and read nothing.", &Settings::listRules}};
    options.insert(options.end(), more.begin(), more.end());
    return {"lint", "check libraries, and try their mappings",
            "As check, and applies the mapping of each block to settings that are chosen so that every listed value, "
            "every bound and both sides of every condition occur. Says what goes wrong for which of them: pins that "
            "are open, driven twice or not at all, branches that are never taken, properties that change nothing.\n"
            "Map libraries are judged too, for each architecture of the configuration.",
            std::move(options), &runLint};
}

static CommandSpec explainCommand() {
    return {"explain",
            "explain the code of a report, warning or rule",
            "Writes what each CODE means, with an example and the same example mended. The codes stand in brackets at "
            "the end of the lines of check and lint; 'ntl lint --list-rules' lists them.",
            {{"CODE", "", "A code, such as unknown-pin.", &Settings::codes, Completion::Code, {}, true}},
            &runExplain,
            false};
}

static CommandSpec listCommand() {
    return {
        "list",
        "list the blocks of a library",
        "Writes a line for each block: name, group, number of pins, buses and properties, maturity, kind of "
        "mapping, flags, and where it is declared.",
        {libraryOption(),
         parentOption(),
         searchOption(),
         {"--group", "GROUP[:SUBGROUP]", "Only blocks of this group, case aside.", &Settings::group, Completion::Group},
         {"--prefix", "TEXT", "Only blocks whose names begin with TEXT, case aside, in order of name.",
          &Settings::prefix},
         jsonOption()},
        &runList,
        true,
        false};
}

static CommandSpec showCommand() {
    return {"show",
            "show the data sheet of a block",
            "Writes all that is known of each BLOCK: pins and buses, properties, groups and flags, its mapping, and "
            "what the configuration says.",
            {blockArgument(true), libraryOption(), parentOption(), searchOption(), jsonOption()},
            &runShow};
}

static CommandSpec expandCommand() {
    return {"expand",
            "apply the mapping of a block",
            "Applies the mapping of each BLOCK to values of its properties and writes what it becomes: instances, "
            "connections and values, with the place of the statement that each comes from and the branches that led "
            "there. With --arch, map libraries for that architecture are used.\n"
            "What is wrong with a mapping goes to standard error; the rest is written all the same.",
            {blockArgument(false),
             libraryOption(),
             parentOption(),
             searchOption(),
             {"--set", "NAME=VALUE", "Give a property of BLOCK a value other than its default. May be repeated.",
              &Settings::propertyValues, Completion::Assignment},
             {"--connect", "PIN",
              "Take a pin of BLOCK, or all pins of a bus, for connected. Others are not. May be repeated.",
              &Settings::connectedPins},
             {"--all", "", "Expand every block that has a mapping, with the defaults of its properties.",
              &Settings::allBlocks},
             {"--deep", "", "Apply the mappings of the instances, too, and so on.", &Settings::deep},
             {"--format",
              "FORMAT",
              "Form of the output: ntl, json, or dot for Graphviz.",
              &Settings::expansionFormat,
              Completion::None,
              {"ntl", "json", "dot"}}},
            &runExpand};
}

static CommandSpec printCommand() {
    return {
        "print",
        "write a library as NTL text",
        "Reads the library in FILE, a file or a folder of .btl files, and writes it as one text.\n"
        "The printed form shows the blocks of the parents too, for people and for tools that compare texts; hex and "
        "binary values in it have no radix and do not read back. With --source, the text reads back to an equal "
        "library. Neither has the comments and INCLUDE statements of the input.\n"
        "Blocks with the test flag are written too, unless --param arch.enableTestFeatures=false is given.",
        {{"FILE",
          "",
          "File or folder of .btl files; - for standard input.",
          &Settings::library,
          Completion::Library,
          {},
          true},
         {"--source", "", "Write text that reads back to an equal library.", &Settings::source},
         searchOption(),
         parentOption()},
        &runPrint};
}

static CommandSpec diffCommand() {
    return {
        "diff",
        "compare two libraries",
        "Writes what changed from the library OLD to the library NEW, each a file or a folder of .btl files, by "
        "meaning: layout, comments and INCLUDE statements do not count. Each change is breaking, compatible or text "
        "only for designs that use the blocks.\n"
        "The exit status is 0 when they are the same, 1 when they differ (--fail-on says by what), and 2 when one of "
        "them cannot be opened or has errors. Blocks with the test flag are compared too, unless --param "
        "arch.enableTestFeatures=false is "
        "given.",
        {{"OLD", "", "File or folder of .btl files.", &Settings::oldLibrary, Completion::Library, {}, true},
         {"NEW", "", "The same, later.", &Settings::newLibrary, Completion::Library, {}, true},
         {"--format",
          "FORMAT",
          "Form of the output: text, json, or markdown for release notes.",
          &Settings::format,
          Completion::None,
          {"text", "json", "markdown"}},
         {"--fail-on",
          "CLASS",
          "Return status 1 only for a change of this class or a worse one: breaking, compatible or any.",
          &Settings::failOn,
          Completion::None,
          {"breaking", "compatible", "any"}},
         parentOption(),
         searchOption(),
         {"--include-old", "DIR", "The same for OLD alone, behind all others. May be repeated.",
          &Settings::oldSearchDirectories, Completion::Directory},
         {"--include-new", "DIR", "The same for NEW alone, behind all others. May be repeated.",
          &Settings::newSearchDirectories, Completion::Directory}},
        &runDiff};
}

static CommandSpec formatCommand() {
    return {
        "format",
        "lay out files in one style",
        "Lays the text of each FILE out anew, of a folder that of all .btl files in and below it, and writes it to "
        "standard output. Line breaks, indents and blanks "
        "change; tokens, comments, INCLUDE and INLINE statements and the order of everything stay. The file may be "
        "a fragment, or have errors of syntax.\n"
        "A file with characters outside the language (carriage returns are), with a string or comment that does "
        "not end, or compressed, is reported and left alone. The status is 1 then.",
        {{"FILE", "", "File or folder to lay out; - for standard input.", &Settings::files, Completion::File, {}, true},
         {"--check", "",
          "Write the names of the files whose layout would change, instead of their text. The status is 1 if any.",
          &Settings::checkOnly},
         {"--in-place", "", "Replace the files whose layout changes, each all or not at all.", &Settings::inPlace},
         {"--fix-line-ends", "", "Turn carriage returns, with or without a newline behind, into newlines first.",
          &Settings::fixLineEnds}},
        &runFormat};
}

static CommandSpec guideCommand() {
    return {"guide",
            "write a library as pages for a browser",
            "Writes the folder OUT: a page for each block, with its symbol, pins, properties, templates to place it, "
            "what its mapping becomes and its text; lists, an index and a search over all of them. The pages need no "
            "server and no network: open OUT/index.html.\n"
            "OUT is replaced as a whole. It is refused when it holds anything that this command did not write, or that "
            "was changed since.",
            {{"OUT", "", "Folder to write.", &Settings::guideFolder, Completion::Directory, {}, true},
             libraryOption(),
             parentOption(),
             searchOption(),
             {"--arch", "NAME", "Speak of this architecture, not of all that the configuration lists. May be repeated.",
              &Settings::architectures, Completion::Architecture},
             {"--title", "TEXT", "Title of the pages; without it, the name of the library.", &Settings::title},
             {"--compare", "OLD", "Say what changed since the library OLD, a file or a folder of .btl files.",
              &Settings::oldLibrary, Completion::Library}},
            &runGuide};
}

static std::string formsText(const std::vector<hdnt::author::ExchangeForm>& forms) {
    std::string text;
    for (const hdnt::author::ExchangeForm& form : forms)
        text += std::string("\n") + form.name + ": " + form.summary + ".";
    return text;
}

static OptionSpec outputOption() {
    return {"-o,--output", "FILE", "Write to FILE, all or nothing, instead of standard output.", &Settings::outputFile,
            Completion::File};
}

static CommandSpec exportCommand() {
    return {"export",
            "write blocks for other tools",
            "Writes each BLOCK, or without BLOCK all blocks of the library, in a form that other tools read. What the "
            "form has nothing for is left out and said on standard error; the status is 1 then." +
                formsText(hdnt::author::exportForms()),
            {{"FORM", "", "One of the forms.", &Settings::form, Completion::ExportForm, {}, true},
             blockArgument(false),
             libraryOption(),
             parentOption(),
             searchOption(),
             outputOption(),
             {"--split", "DIR", "Write a file for each block, or for each table of csv, into DIR.",
              &Settings::splitFolder, Completion::Directory}},
            &runExport};
}

static CommandSpec importCommand() {
    return {
        "import",
        "write what other tools know of blocks as NTL",
        "Writes what each FILE describes as one library. What cannot be taken over is left out and said on standard "
        "error; the status is 1 then. The text reads back, but only check says whether it is right." +
            formsText(hdnt::author::importForms()),
        {{"FORM", "", "One of the forms.", &Settings::form, Completion::ImportForm, {}, true},
         {"FILE", "", "File of that form; - for standard input.", &Settings::files, Completion::File, {}, true},
         outputOption()},
        &runImport};
}

static CommandSpec compareModelsCommand() {
    std::vector<OptionSpec> options = {
        {"FILE",
         "",
         "File of Verilog, or of SystemVerilog when it ends in .sv; - for standard input.",
         &Settings::files,
         Completion::File,
         {},
         true},
        libraryOption(),
        parentOption(),
        {"-I,--include", "DIR", "Look for the files that FILE or the library include in DIR, too. May be repeated.",
         &Settings::searchDirectories, Completion::Directory},
        {"--missing", "", "Each block of the library has to have a model.", &Settings::withMissing},
        formatOption(),
        quietOption()};
    const std::vector<OptionSpec> severities = severityOptions();
    options.insert(options.end(), severities.begin(), severities.end());
    return {"compare-models",
            "hold simulation models against a library",
            "Compares ports and parameters of each module in FILE with the block of its name, as 'ntl export verilog' "
            "would write it: what is missing or too much, and other directions, ranges, types, widths and defaults. "
            "Each difference is said with its place in the model and in the library.\n"
            "FILE is read by yosys, which has to be installed. Bodies of modules are not read. The status is 0 without "
            "differences, 1 with some, and 2 when a FILE cannot be read.",
            std::move(options),
            &runCompareModels,
            true,
            false};
}

static CommandSpec serveCommand() {
    return {
        "serve",
        "answer an editor",
        "Speaks the Language Server Protocol 3.17 over standard input and output; editors start it. Says of each "
        "text that is open what is wrong in its syntax, while it is typed, and of its library what 'ntl lint' says, "
        "when it rests; lays it out, and tells its outline, what folds and what to select.\n"
        "The status is 0 when the editor ended it as the protocol says, and 1 otherwise.",
        {{"--stdio", "", "Changes nothing; some editors say so.", &Settings::overStandardStreams}},
        &runServe,
        true,
        true,
        true};
}

static CommandSpec helpCommand() {
    return {"help",
            "explain a command",
            "Writes what --help behind COMMAND writes; without COMMAND, the list of commands.",
            {{"COMMAND", "", "Name of a command.", &Settings::topic, Completion::Command}},
            &runHelp,
            false};
}

const std::vector<CommandSpec>& commands() {
    static const std::vector<CommandSpec> all = {
        checkCommand(),  lintCommand(),          listCommand(),    showCommand(),  expandCommand(),
        printCommand(),  formatCommand(),        diffCommand(),    guideCommand(), exportCommand(),
        importCommand(), compareModelsCommand(), explainCommand(), serveCommand(), helpCommand()};
    return all;
}

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const CommandSpec& command : commands()) names.push_back(command.name);
    return names;
}

int runHelp(const Settings& settings) {
    const auto isMeant = [&](const CommandSpec& command) { return command.name == settings.topic; };
    const auto found = std::find_if(commands().begin(), commands().end(), isMeant);
    if (found == commands().end() && !settings.topic.empty())
        throw Failure(Unusable,
                      "no command '" + settings.topic + "'" + hdnt::author::question(settings.topic, commandNames()));
    writeOutput(helpText(settings.topic.empty() ? nullptr : &*found));
    return Fine;
}

static void addOption(CLI::App& app, const OptionSpec& spec, Settings& settings) {
    CLI::Option* option = nullptr;
    if (const auto* const flag = std::get_if<bool Settings::*>(&spec.target)) {
        option = app.add_flag(spec.flags, settings.*(*flag), spec.help);
    } else if (const auto* const number = std::get_if<int Settings::*>(&spec.target)) {
        option =
            app.add_option(spec.flags, settings.*(*number), spec.help)->check(CLI::Range(0, 1000000).description(""));
    } else if (const auto* const text = std::get_if<std::string Settings::*>(&spec.target)) {
        option = app.add_option(spec.flags, settings.*(*text), spec.help);
    } else if (spec.isArgumentOptional) {
        option =
            app.add_flag(spec.flags, settings.*std::get<std::vector<std::string> Settings::*>(spec.target), spec.help);
    } else {
        option = app.add_option(spec.flags, settings.*std::get<std::vector<std::string> Settings::*>(spec.target),
                                spec.help);
        if (!spec.isPositional()) option->allow_extra_args(false);
    }
    if (!spec.argument.empty()) option->type_name(spec.argument);
    if (spec.isPositional()) option->type_name("");
    if (spec.isRequired) option->required();
    if (!spec.choices.empty()) option->check(CLI::IsMember(spec.choices).description(""));
}

static const CommandSpec* chosen(const CLI::App& app) {
    for (const CLI::App* sub : app.get_subcommands())
        for (const CommandSpec& command : commands())
            if (command.name == sub->get_name()) return &command;
    return nullptr;
}

static std::string optionSuggestion(const std::string& wanted, const CommandSpec* command) {
    std::vector<std::string> names;
    for (const auto* options : {command ? &command->options : &globalOptions(), &globalOptions()})
        for (const OptionSpec& option : *options)
            for (const std::string& name : option.names())
                if (name.compare(0, 2, "--") == 0) names.push_back(name.substr(2));
    std::vector<std::string> near = hdnt::author::nearestNames(wanted, names);
    for (std::string& name : near) name.insert(0, "--");
    return hdnt::author::questionOf(near);
}

// What nothing takes is mostly a slip of the pen, in the first word of these.
static std::string strangerError(const CLI::App& app, const std::string& text) {
    const std::vector<std::string> strangers = app.remaining(true);
    if (strangers.empty()) return text;
    const std::string& first = strangers.front();
    const CommandSpec* const command = chosen(app);
    if (first.size() > 1 && first[0] == '-')
        return "no option '" + first + "'" + optionSuggestion(first.substr(2, first.find('=') - 2), command);
    return command ? text : "no command '" + first + "'" + hdnt::author::question(first, commandNames());
}

// One line that says what was wrong and where to read on.
static std::string usageError(const CLI::App& app, const std::string& text) {
    const CommandSpec* const command = chosen(app);
    std::string line = text;
    std::replace(line.begin(), line.end(), '\n', ' ');
    while (!line.empty() && (line.back() == ' ' || line.back() == '.')) line.pop_back();
    return line + "; see 'ntl " + (command ? command->name + " " : "") + "--help'";
}

static void refuseEmpty(const Settings& settings) {
    const auto isEmpty = [](const std::string& text) { return text.empty(); };
    if (std::count(settings.inputs.begin(), settings.inputs.end(), "-") > 1)
        throw Failure(Unusable, "INPUT: standard input can be read once only");
    if (std::any_of(settings.inputs.begin(), settings.inputs.end(), isEmpty))
        throw Failure(Unusable, "INPUT is empty; name a file or a folder");
    if (settings.guideFolder.empty() && settings.oldLibrary.empty() != settings.newLibrary.empty())
        throw Failure(Unusable, "OLD or NEW is empty; name two files or folders");
    if (std::any_of(settings.blocks.begin(), settings.blocks.end(), isEmpty))
        throw Failure(Unusable, "BLOCK is empty; 'ntl list' lists the names");
    if (std::any_of(settings.files.begin(), settings.files.end(), isEmpty))
        throw Failure(Unusable, "FILE is empty; name a file, or - for standard input");
}

int runCommandLine(int argc, char** argv) {
    if (complete(argc, argv)) return Fine;
    Settings settings;
    CLI::App app("Reads NTL libraries.", "ntl");
    app.set_version_flag("--version", std::string("ntl ") + NTL_VERSION, "Print the version and exit.");
    app.require_subcommand(0, 1);
    for (const OptionSpec& option : globalOptions()) addOption(app, option, settings);
    app.add_option("--generate", settings.generate)->group("");
    for (const CommandSpec& command : commands()) {
        // The others cannot be meant, and making their options takes longer than many a command.
        if (std::find(argv, argv + argc, command.name) == argv + argc) continue;
        CLI::App* const sub = app.add_subcommand(command.name, command.summary)->fallthrough();
        for (const OptionSpec& option : command.options) addOption(*sub, option, settings);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        writeOutput(helpText(chosen(app)));
        return Fine;
    } catch (const CLI::CallForVersion& version) {
        writeOutput(std::string(version.what()) + "\n");
        return Fine;
    } catch (const CLI::ExtrasError& error) {
        throw Failure(Unusable, usageError(app, strangerError(app, error.what())));
    } catch (const CLI::ParseError& error) {
        throw Failure(Unusable, usageError(app, error.what()));
    }
    if (!settings.generate.empty()) {
        writeOutput(generate(settings.generate));
        return Fine;
    }
    const CommandSpec* const command = chosen(app);
    if (!command) throw Failure(Unusable, usageError(app, "A command is needed: " + joined(commandNames(), ", ")));
    refuseEmpty(settings);
    setColors(settings.color);
    if (!command->showsDescriptions) leaveDescriptionsOut();
    if (command->needsData) applyGlobalSettings(settings, command->findsProjects);
    return command->run(settings);
}

} // namespace ntl
