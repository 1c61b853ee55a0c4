#include "author/exchange/compareModels.h"
#include "author/exchange/importForms.internal.h"
#include "author/exchange/moduleHeads.internal.h"
#include "author/exchange/program.internal.h"
#include "author/exchange/verilogModules.internal.h"
#include "author/exchange/yosysOutput.internal.h"
#include "author/lint/Findings.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <span>
#include <utility>

namespace hdnt::author {

namespace {

// Scripts of yosys are cut at blanks: it gets names without any, in a folder of its own.
constexpr const char* inputName = "the_text";
constexpr const char* jsonName = "modules.json";
constexpr int mostSeconds = 60;

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

bool isSystemVerilog(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return extension == ".sv" || extension == ".svh";
}

Diagnostic unreadable(const std::string& path, const std::string& why) {
    Place place;
    place.file = path;
    return finding(modelRule(ModelCode::unreadableVerilog), std::move(place), std::span(&why, 1));
}

class YosysRun {
public:
    YosysRun(std::string path, std::string text, const std::vector<std::string>& searchDirectories)
        : path_(std::move(path)), text_(std::move(text)), heads_(moduleHeads(text_, isSystemVerilog(path_))),
          lines_(linesOf(text_)), headLines_(linesOf(heads_)) {
        const std::string beside = HUTPathUtils::directoryOf(path_);
        addDirectory(beside.empty() ? "." : beside);
        for (const std::string& directory : searchDirectories) addDirectory(directory);
        addDirectory(".");
        folder_.write(inputName, heads_);
    }

    ModuleFile run() {
        const ProgramEnd end = runProgram({"yosys", "-Q", "-T", "-p", script()}, folder_, mostSeconds);
        if (end == ProgramEnd::Missing)
            throw HEXDataException(
                "yosys, which reads Verilog, is not on the PATH; install it, as with 'apt install yosys'");
        if (end == ProgramEnd::TooLong)
            return refused({}, "yosys takes longer than " + std::to_string(mostSeconds) + " s");
        const std::string log = folder_.read("out");
        if (end == ProgramEnd::Failed) return refused(folder_.read("err"), "yosys failed");
        if (const std::string twice = repeatedIn(log); !twice.empty()) return refused(twice, "");
        const YosysTexts texts = {
            [this](const YosysPlace& place, const std::string& name) { return placeOf(place, name); },
            [this](const YosysPlace& place) { return textAt(headLines_, place); }};
        return {modulesOf(folder_.read(jsonName), log, texts), {}};
    }

private:
    void addDirectory(const std::string& directory) {
        std::error_code error;
        const std::filesystem::path whole = std::filesystem::absolute(directory, error);
        const std::string name = "d" + std::to_string(directories_.size());
        folder_.link(name, whole.string());
        directories_.push_back(directory);
    }

    std::string script() const {
        std::string text = "read_verilog -lib -nosynthesis -dump_ast2 -no_dump_ptr";
        if (isSystemVerilog(path_)) text += " -sv";
        for (std::size_t i = 0; i < directories_.size(); ++i) text += " -Id" + std::to_string(i);
        return text + " " + inputName + "; write_json " + jsonName;
    }

    // Of a module that is there twice, the later one is taken.
    static std::string repeatedIn(const std::string& log) {
        for (const std::string_view line : linesOf(log))
            if (line.starts_with("Replacing existing ")) {
                const YosysPlace place = yosysPlaceOf(line.substr(line.rfind(" at ") + 4));
                return place.file + ":" + std::to_string(place.line) +
                       ": ERROR: a module of that name is there before\n";
            }
        return {};
    }

    // "FILE:LINE: ERROR: why", or without a place.
    ModuleFile refused(const std::string& said, const std::string& otherwise) const {
        static constexpr std::string_view mark = "ERROR: ";
        Diagnostic one = unreadable(path_, otherwise);
        for (const std::string_view line : linesOf(said)) {
            const std::size_t at = line.find(mark);
            if (at == line.npos) continue;
            one.message = line.substr(at + mark.size());
            const std::size_t colon = at < 2 ? line.npos : line.rfind(':', at - 3);
            YosysPlace place;
            if (colon != line.npos) {
                place.file = line.substr(0, colon);
                std::from_chars(line.data() + colon + 1, line.data() + at, place.line);
                one.place = placeOf(place, {});
            }
            break;
        }
        return {{}, {std::move(one)}};
    }

    std::string fileOf(const std::string& name) const {
        if (name == inputName) return path_;
        for (std::size_t i = 0; i < directories_.size(); ++i) {
            const std::string link = "d" + std::to_string(i) + "/";
            if (name.starts_with(link))
                return directories_[i] == "." ? name.substr(link.size())
                                              : HUTPathUtils::join(directories_[i], name.substr(link.size()));
        }
        return name;
    }

    static std::string_view textAt(const std::vector<std::string_view>& lines, const YosysPlace& place) {
        const auto line = static_cast<std::size_t>(place.line);
        if (place.file != inputName || line == 0 || line > lines.size() || place.column < 1) return {};
        const std::string_view text = lines[line - 1];
        const auto begin = static_cast<std::size_t>(place.column - 1);
        return begin < text.size() ? text.substr(begin, static_cast<std::size_t>(place.endColumn - place.column))
                                   : std::string_view();
    }

    // Columns are known where the name stands there; behind a macro it does not.
    Place placeOf(const YosysPlace& found, const std::string& name) const {
        Place place;
        place.file = fileOf(found.file);
        place.line = place.order = found.line;
        if (found.file != inputName || place.line < 1 || static_cast<std::size_t>(place.line) > lines_.size())
            return place;
        const std::string_view line = lines_[static_cast<std::size_t>(place.line) - 1];
        place.textLine = place.line;
        if (line.size() <= 4096) place.text = line;
        const std::string_view shown = textAt(lines_, found);
        if (name.empty() || (shown != name && shown != "\\" + name)) return place;
        const auto inText = [&](std::size_t bytes) {
            return static_cast<int>(platform::characters(line.substr(0, bytes)));
        };
        place.column = inText(static_cast<std::size_t>(found.column - 1)) + 1;
        place.endColumn = place.column + static_cast<int>(platform::characters(shown));
        place.offset = static_cast<std::size_t>(shown.data() - text_.data());
        place.endOffset = place.offset + shown.size();
        return place;
    }

    std::string path_;
    std::string text_;
    std::string heads_;
    std::vector<std::string_view> lines_;
    std::vector<std::string_view> headLines_;
    std::vector<std::string> directories_; ///< linked as d0, d1 and so on
    TemporaryFolder folder_;
};

} // namespace

ModuleFile readModules(const std::string& path, const std::vector<std::string>& searchDirectories) {
    std::string text;
    try {
        text = fileText(path);
    } catch (const HEXDataException& error) {
        return {{}, {unreadable(path, std::string(error.what()).substr(path.size() + 2))}};
    }
    if (const std::size_t zero = text.find('\0'); zero != text.npos) { // yosys would take it for the end
        Diagnostic one = unreadable(path, "holds a byte 0, which no text does");
        one.place.line = one.place.order =
            1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(zero), '\n'));
        return {{}, {std::move(one)}};
    }
    return YosysRun(path, std::move(text), searchDirectories).run();
}

} // namespace hdnt::author
