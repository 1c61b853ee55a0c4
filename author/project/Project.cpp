#include "author/project/Project.h"

#include "author/lint/nearestNames.h"
#include "hdnt/frontend/SearchPath.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/InputFile.h"
#include "hdnt/registry/HDNTCellviewLib.h"
#include "hdnt/registry/registerCells.h"

#include <fnmatch.h>
#include <libconfig.h++>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

namespace hdnt::author {

namespace {

namespace fs = std::filesystem;
using libconfig::Setting;
using Texts = std::vector<std::string>;

constexpr const char* fileName = ".ntl.cfg";
constexpr std::size_t greatestFile = std::size_t{1} << 20;
constexpr int greatestBudget = 1000000;

/// Reads one file into a project.
class ProjectReader {
public:
    explicit ProjectReader(const std::string& path) {
        project_.path = path;
        project_.folder = fs::path(path).parent_path().string();
    }

    Project read() {
        libconfig::Config config;
        const std::string text = wholeText();
        try {
            config.readString(text);
        } catch (const libconfig::ParseException& error) {
            fail(error.getLine(), std::string(error.getError()) + "; mend it here or just before");
        }
        readKeys(config.getRoot(), {{"rules", &ProjectReader::readRules},
                                    {"exceptions", &ProjectReader::readExceptions},
                                    {"budget", &ProjectReader::readBudget},
                                    {"architectures", &ProjectReader::readArchitectures},
                                    {"parents", &ProjectReader::readParents},
                                    {"include", &ProjectReader::readInclude},
                                    {"cells", &ProjectReader::readCells}});
        return std::move(project_);
    }

private:
    using Reader = void (ProjectReader::*)(const Setting&);

    [[noreturn]] void fail(unsigned line, const std::string& reason) const {
        throw HEXDataException(project_.path + ":" + std::to_string(line) + ": " + reason);
    }
    [[noreturn]] void fail(const Setting& at, const std::string& reason) const { fail(at.getSourceLine(), reason); }

    // Included files would be sought from the working directory, and a folder among them ends the process.
    std::string wholeText() const {
        std::string text;
        std::string why;
        if (!platform::readInput(project_.path, {greatestFile, 200, greatestFile}, text, why))
            throw HEXDataException(project_.path + ": cannot be read: " + why);
        std::istringstream lines(text);
        lines.exceptions(std::ios::badbit); // std::bad_alloc, which would else be taken for the end
        unsigned number = 1;
        for (std::string line; std::getline(lines, line); ++number)
            if (line.find("@include") != line.npos)
                fail(number, "@include is not allowed here; write its text instead");
        return text;
    }

    void readKeys(const Setting& group, const std::map<std::string, Reader>& readers) {
        if (!group.isGroup()) fail(group, "'" + nameOf(group) + "' is not a group; write { ... }");
        for (const Setting& setting : group) {
            const auto found = readers.find(setting.getName());
            if (found == readers.end()) fail(setting, unknownKey(setting.getName(), readers));
            (this->*found->second)(setting);
        }
    }

    static std::string unknownKey(const std::string& key, const std::map<std::string, Reader>& readers) {
        Texts names;
        std::string all;
        for (const auto& [name, reader] : readers) {
            names.push_back(name);
            all += (all.empty() ? "" : ", ") + name;
        }
        const Texts near = nearestNames(key, names);
        return "unknown key '" + key + "'; " + (near.empty() ? "there are " + all : "did you mean " + near[0] + "?");
    }

    static std::string nameOf(const Setting& setting) {
        return setting.getName() ? setting.getName() : setting.getParent().getName();
    }

    std::string text(const Setting& setting) const {
        if (setting.getType() != Setting::TypeString)
            fail(setting, "'" + nameOf(setting) + "' is no text; write it in quotes");
        return setting.c_str();
    }

    Texts texts(const Setting& setting) const {
        if (!setting.isArray() && !setting.isList())
            fail(setting, "'" + nameOf(setting) + "' is no list of texts; write [ \"...\" ]");
        Texts list;
        for (const Setting& one : setting) list.push_back(text(one));
        return list;
    }

    Texts paths(const Setting& setting) const {
        Texts list = texts(setting);
        for (std::string& path : list) path = (fs::path(project_.folder) / path).lexically_normal().string();
        return list;
    }

    // The line is that of the setting, or of the text in its list.
    void take(const Setting& setting, const std::string& refusal) const {
        if (!refusal.empty()) fail(setting, refusal);
    }

    void readRules(const Setting& group) {
        readKeys(group, {{"only", &ProjectReader::readOnly},
                         {"off", &ProjectReader::readOff},
                         {"severity", &ProjectReader::readSeverities}});
    }
    void readOnly(const Setting& list) {
        texts(list);
        for (const Setting& code : list) take(code, project_.rules.only(code.c_str()));
    }
    void readOff(const Setting& list) {
        texts(list);
        for (const Setting& code : list) take(code, project_.rules.turnOff(code.c_str()));
    }
    void readSeverities(const Setting& group) {
        if (!group.isGroup()) fail(group, "'severity' is not a group; write { CODE = \"error\"; }");
        for (const Setting& one : group) take(one, project_.rules.set(one.getName(), text(one)));
    }

    void readExceptions(const Setting& list) {
        if (!list.isList()) fail(list, "'exceptions' is no list; write ( { path = \"...\"; off = [ ... ]; } )");
        for (const Setting& one : list) {
            project_.exceptions.emplace_back();
            readKeys(one, {{"path", &ProjectReader::readPattern}, {"off", &ProjectReader::readExcepted}});
            const PathException& read = project_.exceptions.back();
            if (read.pattern.empty() || read.codes.empty())
                fail(one, "an exception without 'path' or 'off'; write { path = \"...\"; off = [ ... ]; }");
        }
    }
    void readPattern(const Setting& setting) { project_.exceptions.back().pattern = text(setting); }
    void readExcepted(const Setting& list) {
        project_.exceptions.back().codes = texts(list);
        for (const Setting& code : list) take(code, refusalOfControl(code.c_str()));
    }

    void readBudget(const Setting& setting) {
        const int value = setting.getType() == Setting::TypeInt ? static_cast<int>(setting) : -1;
        if (value < 0 || value > greatestBudget) fail(setting, "'budget' is no number from 0 to 1000000");
        project_.budget = static_cast<std::size_t>(value);
    }

    void readArchitectures(const Setting& list) { project_.architectures = texts(list); }
    void readParents(const Setting& list) {
        project_.parents = paths(list);
        for (int i = 0; i < list.getLength(); ++i)
            if (list[i].c_str() == std::string("common")) project_.parents[static_cast<std::size_t>(i)] = "common";
    }
    void readInclude(const Setting& list) { project_.searchDirectories = paths(list); }
    void readCells(const Setting& list) { project_.cellTables = paths(list); }

    Project project_;
};

bool isOffAt(const Project& project, const std::string& path, const std::string& code) {
    return std::ranges::any_of(project.exceptions, [&](const PathException& one) {
        return std::ranges::find(one.codes, code) != one.codes.end() &&
               fnmatch(one.pattern.c_str(), path.c_str(), 0) == 0;
    });
}

} // namespace

std::string findProject(const std::string& path) {
    std::error_code error;
    const fs::path here = fs::current_path(error);
    const bool isFolder = fs::is_directory(path, error);
    const fs::path given = (here / path).lexically_normal();
    for (fs::path folder = isFolder ? given : given.parent_path();; folder = folder.parent_path()) {
        const fs::path file = folder / fileName;
        if (fs::exists(file, error)) {
            const fs::path shorter = file.lexically_relative(here);
            return (fs::path(path).is_absolute() || *shorter.begin() == ".." ? file : shorter).string();
        }
        if (folder == folder.root_path()) return {};
    }
}

Project readProject(const std::string& path) { return ProjectReader(path).read(); }

void enterProject(const Project& project) {
    for (const std::string& path : project.cellTables) registerCells(path);
    HDNTCellviewLib::getGlobal();
    for (const std::string& directory : project.searchDirectories) NtlAddSearchDirectory(directory);
}

void applyExceptions(const Project& project, const RuleControl& stronger, std::vector<Diagnostic>& findings) {
    if (project.exceptions.empty()) return;
    const fs::path folder = fs::absolute(project.path).lexically_normal().parent_path();
    std::map<std::string, std::string> relative;
    const auto pathOf = [&](const std::string& file) -> const std::string& {
        std::string& known = relative[file];
        if (known.empty()) known = fs::absolute(file).lexically_normal().lexically_relative(folder).string();
        return known;
    };
    std::erase_if(findings, [&](const Diagnostic& one) {
        return !one.place.file.empty() && !stronger.speaksOf(one.code) && refusalOfControl(one.code).empty() &&
               isOffAt(project, pathOf(one.place.file), one.code);
    });
}

} // namespace hdnt::author
