#include "tools/ntl/GlobalOptions.h"

#include "author/lint/lint.h"
#include "author/lint/nearestNames.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/frontend/SearchPath.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/PartSpec.h"
#include "hdnt/registry/HDNTCellviewLib.h"
#include "hdnt/registry/registerCells.h"
#include "tools/ntl/CheckPlan.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace ntl {

std::pair<std::string, std::string> splitAssignment(const std::string& option, const std::string& text) {
    const size_t sign = text.find('=');
    if (sign == text.npos || sign == 0)
        throw Failure(Unusable, option + ": '" + text + "' has no '='; write NAME=VALUE");
    return {text.substr(0, sign), text.substr(sign + 1)};
}

static void setParameter(const std::string& text) {
    static const std::vector<std::string> yes = {"TRUE", "1", "ON", "YES"};
    static const std::vector<std::string> no = {"FALSE", "0", "OFF", "NO"};
    const auto [name, value] = splitAssignment("--param", text);
    const std::string upper = HSTStringUtils::to_upper_copy(value);
    const bool on = std::find(yes.begin(), yes.end(), upper) != yes.end();
    if (!on && std::find(no.begin(), no.end(), upper) == no.end())
        throw Failure(Unusable, "--param: '" + value + "' is neither true nor false");
    HPAParamMgr::getParamMgr()->setValueAsBool(name, on);
}

void enableByDefault(const Settings& settings, const std::string& parameter) {
    const auto sets = [&](const std::string& text) { return text.substr(0, text.find('=')) == parameter; };
    if (std::none_of(settings.parameters.begin(), settings.parameters.end(), sets))
        HPAParamMgr::getParamMgr()->setValueAsBool(parameter, true);
}

template <typename Number>
static bool setNumber(Number& field, const std::string& text) {
    Number value = 0;
    const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || value < Number{0}) return false;
    field = value;
    return true;
}

using LimitField = std::variant<int HDNTLimits::*, size_t HDNTLimits::*, unsigned HDNTLimits::*, long HDNTLimits::*,
                                std::string HDNTLimits::*>;

static const std::vector<std::pair<std::string, LimitField>>& limitFields() {
    static const std::vector<std::pair<std::string, LimitField>> fields = {
        {"includeDepth", &HDNTLimits::includeDepth},
        {"inputBytes", &HDNTLimits::inputBytes},
        {"expansionRatio", &HDNTLimits::expansionRatio},
        {"expansionFloor", &HDNTLimits::expansionFloor},
        {"rangeElements", &HDNTLimits::rangeElements},
        {"bitWidth", &HDNTLimits::bitWidth},
        {"precision", &HDNTLimits::precision},
        {"parserDepth", &HDNTLimits::parserDepth},
        {"expansionInstances", &HDNTLimits::expansionInstances},
        {"diagnostics", &HDNTLimits::diagnostics},
        {"rootFolder", &HDNTLimits::rootFolder},
        {"includedBytes", &HDNTLimits::includedBytes},
        {"seconds", &HDNTLimits::seconds},
    };
    return fields;
}

static bool setText(std::string& field, const std::string& text) {
    field = text;
    return true;
}

static void setLimit(HDNTLimits& limits, const std::string& text) {
    const auto [name, value] = splitAssignment("--limit", text);
    std::vector<std::string> names;
    for (const auto& [known, field] : limitFields()) {
        names.push_back(known);
        if (known != name) continue;
        const bool valid = std::visit(
            [&, &wanted = value](auto member) {
                if constexpr (std::is_same_v<decltype(member), std::string HDNTLimits::*>)
                    return setText(limits.*member, wanted);
                else return setNumber(limits.*member, wanted);
            },
            field);
        if (valid) return;
        throw Failure(Unusable, std::string("--limit: '").append(value).append("' is no value for ").append(name));
    }
    throw Failure(Unusable, "--limit: no limit '" + name + "'; there are " + joined(names, ", "));
}

static void setFront(const char* variable, const std::string& directory) {
    const char* const rest = std::getenv(variable);
    setenv(variable, (directory + (rest && *rest ? std::string(":") + rest : "")).c_str(), 1);
}

static void setDataDirectory(const std::string& directory) {
    if (!HUTFile(directory).isDir()) throw Failure(Unusable, "--data: '" + directory + "' is no directory");
    if (directory.find(':') != directory.npos)
        throw Failure(Unusable, "--data: '" + directory + "' has a colon, which separates directories");
    setFront("HDNT_DATA_PATH", directory);
    setFront("HDNT_CONFIG_PATH", directory);
}

static void setArchitecture(const std::string& name) {
    static CommonPart::PartSpec part;
    part.architecture = name;
    HDNTLibraryMgr& manager = *HDNTLibraryMgr::getLibraryMgr();
    manager.m_architecture = name;
    manager.m_partSpec = &part;
}

static void addSearchDirectories(const Settings& settings) {
    for (const std::string& directory : settings.searchDirectories) NtlAddSearchDirectory(directory);
    const char* const path = std::getenv("NTL_PATH");
    std::istringstream list(path ? path : "");
    for (std::string directory; std::getline(list, directory, ':');)
        if (!directory.empty()) NtlAddSearchDirectory(directory);
}

// Asks for the table of cells once, so that a broken one is told apart from a broken library; but a project file may
// add tables in the process of its input, and nobody may ask before.
static void registerTables(const Settings& settings, bool findsProjects) {
    orUnusable([&] {
        for (const std::string& path : settings.cellTables) hdnt::registerCells(path);
        if (!findsProjects && !haveProject(settings)) HDNTCellviewLib::getGlobal();
    });
}

void requireKnownArchitecture(const std::string& architecture) {
    const std::vector<std::string> names = hdnt::author::architecturesIn(*configuredLibrary().getConfig());
    if (names.empty() || std::find(names.begin(), names.end(), architecture) != names.end()) return;
    throw Failure(Unusable, "--arch: no architecture '" + architecture + "'" +
                                hdnt::author::question(architecture, names) + "; there are " + joined(names, ", "));
}

static void probeConfiguration(const std::string& architecture) {
    orUnusable([&] {
        configuredLibrary();
        if (!architecture.empty()) requireKnownArchitecture(architecture);
    });
}

// In a signal handler.
[[noreturn]] static void endInTime(int) {
    writeError("ntl: more time than the limit seconds allows\n");
    _exit(Unusable);
}

void beginTimeLimit() {
    std::signal(SIGALRM, endInTime);
    alarm(static_cast<unsigned>(HDNTLimits::get().seconds));
}

void endTimeLimit() { alarm(0); }

void applyGlobalSettings(const Settings& settings, bool findsProjects) {
    registerTables(settings, findsProjects);
    if (!settings.data.empty()) setDataDirectory(settings.data);
    for (const std::string& parameter : settings.parameters) setParameter(parameter);
    if (!settings.architecture.empty()) setArchitecture(settings.architecture);
    HDNTLimits limits = settings.untrusted ? HDNTLimits::forUntrusted() : HDNTLimits::get();
    for (const std::string& limit : settings.limits) setLimit(limits, limit);
    if (!settings.rootFolder.empty()) {
        if (!HUTFile(settings.rootFolder).isDir())
            throw Failure(Unusable, "--root: '" + settings.rootFolder + "' is no directory");
        limits.rootFolder = settings.rootFolder;
    }
    HDNTLimits::set(limits);
    beginTimeLimit();
    addSearchDirectories(settings);
    probeConfiguration(settings.architecture);
}

} // namespace ntl
