#include "author/lint/Findings.internal.h"
#include "author/lint/nearestNames.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HUTFile.h"

#include <libconfig.h++>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <set>

namespace hdnt::author {

namespace {

using libconfig::Setting;

/// What an entry has to be; of another type it counts as absent.
enum class Shape { Anything, Flag, Text, Texts, Group };

/// What a name in the configuration is the name of.
enum class Kind { Anything, Cell, Pin, BaseName, PinBit, Property, Architecture, Function, PinType };

struct Rule {
    std::string_view key; ///< empty: any name of the kind keys
    Kind keys;
    Shape shape;
    Kind texts; ///< what its texts name
    std::vector<Rule> members;
};

Rule one(std::string_view key, Shape shape, Kind texts = Kind::Anything) {
    return {key, Kind::Anything, shape, texts, {}};
}
Rule group(std::string_view key, std::vector<Rule> members) {
    return {key, Kind::Anything, Shape::Group, Kind::Anything, std::move(members)};
}
Rule each(Kind keys, Shape shape, Kind texts = Kind::Anything) { return {"", keys, shape, texts, {}}; }
Rule eachGroup(Kind keys, std::vector<Rule> members) {
    return {"", keys, Shape::Group, Kind::Anything, std::move(members)};
}

// docs/configuration.md says what each key means.
const Rule& applicationRules() {
    static const std::vector<Rule> architecture = {
        one("simDevice", Shape::Text),
        one("master", Shape::Text, Kind::Architecture),
        one("internalPins", Shape::Flag),
    };
    static const std::vector<Rule> cell = {
        one("architectures", Shape::Texts, Kind::Architecture),
        one("canTiePins", Shape::Flag),
        one("nibbleSizedHex", Shape::Flag),
        one("pseudoDifferential", Shape::Flag),
        one("masterDriverPin", Shape::Text, Kind::Pin),
        one("shadowPins", Shape::Texts, Kind::Pin),
        group("pinFunctions", {each(Kind::BaseName, Shape::Text)}),
    };
    static const std::vector<Rule> file = {
        group("READ_ONLY_ATTRIBUTES", {each(Kind::Property, Shape::Anything)}),
        group("IO_PIN_CONSTRAINTS", {each(Kind::Property, Shape::Flag)}),
        one("MASTER_DRIVER_TYPES", Shape::Texts, Kind::Cell),
        one("PSEUDO_DIFFERENTIAL_FUNCTIONS", Shape::Texts, Kind::Function),
        group("ARCHITECTURES", {eachGroup(Kind::Anything, architecture)}),
        group("CELLS", {eachGroup(Kind::Cell, cell)}),
    };
    static const Rule root = group("", file);
    return root;
}

const Rule& descriptionRules() {
    static const std::vector<Rule> file = {
        group("PINTYPES", {eachGroup(Kind::Cell, {each(Kind::PinBit, Shape::Text, Kind::PinType)})}),
        eachGroup(Kind::Cell, {each(Kind::Property, Shape::Text)}),
    };
    static const Rule root = group("", file);
    return root;
}

struct KindWords {
    LintCode code;
    const char* noun;
};

const KindWords& wordsOf(Kind kind) {
    static const std::map<Kind, KindWords> words = {
        {Kind::Cell, {LintCode::configUnknownCell, "cell"}},
        {Kind::Pin, {LintCode::configUnknownPin, "pin"}},
        {Kind::BaseName, {LintCode::configUnknownPin, "pin"}},
        {Kind::PinBit, {LintCode::configUnknownPin, "pin"}},
        {Kind::Property, {LintCode::configUnknownProperty, "property"}},
        {Kind::Architecture, {LintCode::configUnknownArchitecture, "architecture"}},
        {Kind::Function, {LintCode::configUnknownFunction, "function"}},
        {Kind::PinType, {LintCode::configUnknownPinType, "pin type"}},
    };
    return words.at(kind);
}

struct ShapeRule {
    const char* noun;
    bool (*fits)(const Setting& setting);
};

const ShapeRule& ruleOf(Shape shape) {
    static constexpr std::array<ShapeRule, 5> rules = {{
        {"anything", [](const Setting&) { return true; }},
        {"true or false", [](const Setting& setting) { return setting.getType() == Setting::TypeBoolean; }},
        {"a text", [](const Setting& setting) { return setting.getType() == Setting::TypeString; }},
        {"a list of texts", [](const Setting& setting) { return setting.isArray() || setting.isList(); }},
        {"a group", [](const Setting& setting) { return setting.isGroup(); }},
    }};
    return rules.at(static_cast<size_t>(shape));
}

using Names = std::vector<std::string>;

Names pinNamesOf(const HDNTBlock& block, Kind kind) {
    Names names;
    for (const HDNTBus& bus : block.buses()) {
        if (kind != Kind::PinBit) names.push_back(bus.getBaseName());
        if (kind == Kind::BaseName) continue;
        if (kind == Kind::Pin) names.push_back(bus.getName());
        for (const HDNTPin& pin : bus.pins()) names.push_back(pin.getName(kind == Kind::PinBit));
    }
    return names;
}

bool isMixed(const HDNTBlock& block, const std::string& plainName) {
    for (const HDNTBus& bus : block.buses())
        for (const HDNTPin& pin : bus.pins())
            if (pin.getName(true) == plainName) return bus.getType() == HDNT_PIN_MIXED;
    return false;
}

// The host's libraries, but the configuration that came with the tool.
bool isFromElsewhere(const std::string& fileName) {
    const auto isHosts = [](const char* variable, const std::string& name) {
        return !HUTPathUtils::findInPath(std::getenv(variable), "", name).empty();
    };
    return isHosts("HDNT_DATA_PATH", "tessels") && !isHosts("HDNT_CONFIG_PATH", fileName);
}

/// Walks a file along its rules. The block is the one that the entries speak of; null outside of one.
class ConfigJudge {
public:
    ConfigJudge(const HDNTLibrary& library, bool isWhole) : isWhole_(isWhole) {
        for (size_t i = 0; i < library.getNumTypeBlocks(isWhole); ++i) {
            const HDNTBlock* const block = library.getTypeBlock(i);
            names_[Kind::Cell].insert(block->getName());
            cells_.emplace(block->getName(), block);
            for (const HDNTProperty& property : block->properties()) names_[Kind::Property].insert(property.getName());
        }
        for (const auto& [type, word] : words::pinTypes) names_[Kind::PinType].emplace(word);
        for (const HDNTLibrary* declaring = &library; declaring; declaring = declaring->getParentLibrary())
            for (const HDNTFunctionDecl& function : declaring->functions())
                names_[Kind::Function].insert(function.getName());
    }

    void judge(ConfigBase& config, const Rule& rules, const std::string& fileName) {
        if (config.exists("ARCHITECTURES")) {
            const Names listed = architecturesIn(config);
            names_[Kind::Architecture] = {listed.begin(), listed.end()};
        }
        const HCTLock lock(config.mutex());
        fileName_ = fileName;
        speaksOfOthers_ = !isWhole_ || isFromElsewhere(fileName);
        judgeSetting(config.getLibConfig().getRoot(), rules, nullptr);
    }

    std::vector<Diagnostic> findings() && { return std::move(findings_); }

private:
    // The first argument of the wording is the setting.
    template <typename... Texts>
    void warn(LintCode code, const Setting& setting, const HDNTBlock* cell, const Texts&... others) {
        if (speaksOfOthers_ && !cell) return;
        Place place;
        place.file = fileOf(setting);
        place.line = static_cast<int>(setting.getSourceLine());
        findings_.push_back(finding(code, place, std::vector<std::string>{setting.getPath(), others...}));
        findings_.back().element = setting.getPath();
    }

    // libconfig names included files as the statement does; they are sought beside the file that is read.
    std::string fileOf(const Setting& setting) const {
        const char* const file = setting.getSourceFile();
        const std::string top = HUTPathUtils::findInPath(std::getenv("HDNT_CONFIG_PATH"), "", fileName_);
        if (!file) return top.empty() ? fileName_ : top;
        return top.empty() || file == top ? file : HUTPathUtils::directoryOf(top) + "/" + file;
    }

    // Architectures are known only to a configuration that lists them.
    bool isJudged(Kind kind) const {
        return kind != Kind::Anything && (kind != Kind::Architecture || names_.count(kind) > 0);
    }

    static bool isOfCell(Kind kind) { return kind == Kind::Pin || kind == Kind::BaseName || kind == Kind::PinBit; }

    // Outside of a cell, its own names are those of any.
    Names known(Kind kind, const HDNTBlock* cell) const {
        if (isOfCell(kind)) return pinNamesOf(*cell, kind);
        Names names;
        if (kind == Kind::Property && cell) {
            for (const HDNTProperty& property : cell->properties()) names.push_back(property.getName());
        } else if (const auto found = names_.find(kind); found != names_.end()) {
            names.assign(found->second.begin(), found->second.end());
        }
        return names;
    }

    bool isKnown(Kind kind, const HDNTBlock* cell, const std::string& name) const {
        if (!cell || !(isOfCell(kind) || kind == Kind::Property))
            return names_.count(kind) > 0 && names_.at(kind).count(name) > 0;
        const Names names = known(kind, cell);
        return std::find(names.begin(), names.end(), name) != names.end();
    }

    // False for a name that nothing has. Other names of the same level are suggested, too.
    bool judgeName(const Setting& setting, Kind kind, const std::string& name, const HDNTBlock* cell,
                   const Names& others = {}) {
        if (!isJudged(kind)) return true;
        if (isKnown(kind, cell, name)) {
            if (kind == Kind::PinBit && !isMixed(*cell, name)) warn(LintCode::configNoEffect, setting, cell);
            return true;
        }
        if (speaksOfOthers_ && !cell) return false;
        Names names = known(kind, cell);
        names.insert(names.end(), others.begin(), others.end());
        const bool ofCell = cell && kind != Kind::Architecture && kind != Kind::PinType;
        const std::string where = ofCell ? " in block \"" + cell->getName() + "\"" : "";
        warn(wordsOf(kind).code, setting, cell, wordsOf(kind).noun, name, where, question(name, names));
        return false;
    }

    void judgeSetting(const Setting& setting, const Rule& rule, const HDNTBlock* cell) {
        const ShapeRule& shape = ruleOf(rule.shape);
        if (!shape.fits(setting)) return warn(LintCode::configWrongType, setting, cell, shape.noun);
        if (rule.shape == Shape::Group) judgeMembers(setting, rule, cell);
        if (rule.shape == Shape::Text) judgeName(setting, rule.texts, setting.c_str(), cell);
        if (rule.shape != Shape::Texts) return;
        for (int i = 0; i < setting.getLength(); ++i) {
            if (ruleOf(Shape::Text).fits(setting[i])) judgeName(setting[i], rule.texts, setting[i].c_str(), cell);
            else judgeSetting(setting[i], one("", Shape::Text), cell);
        }
    }

    void judgeMembers(const Setting& setting, const Rule& rule, const HDNTBlock* cell) {
        Names keys;
        for (const Rule& member : rule.members)
            if (!member.key.empty()) keys.emplace_back(member.key);
        for (int i = 0; i < setting.getLength(); ++i) {
            const Setting& entry = setting[i];
            const std::string name = entry.getName();
            const auto fits = [&](const Rule& member) { return member.key.empty() || member.key == name; };
            const auto found = std::find_if(rule.members.begin(), rule.members.end(), fits);
            if (found == rule.members.end()) {
                warn(LintCode::configUnknownKey, entry, cell, question(name, keys));
            } else if (!found->key.empty() || judgeName(entry, found->keys, name, cell, keys)) {
                const auto block = found->key.empty() && found->keys == Kind::Cell ? cells_.find(name) : cells_.end();
                judgeSetting(entry, *found, block == cells_.end() ? cell : block->second);
            }
        }
    }

    bool isWhole_;
    bool speaksOfOthers_ = true; ///< of blocks, properties and functions that are not there and need not be
    std::string fileName_;
    std::map<std::string, const HDNTBlock*> cells_;
    std::map<Kind, std::set<std::string>> names_;
    std::vector<Diagnostic> findings_;
};

} // namespace

std::vector<Diagnostic> lintConfiguration(const HDNTLibrary& library, ConfigScope scope) {
    if (scope == ConfigScope::None) return {};
    ConfigJudge judge(library, scope == ConfigScope::Whole);
    judge.judge(*library.getConfig(), applicationRules(), "HDNTApplicationData.cfg");
    judge.judge(*library.getDescConfig(), descriptionRules(), "tessel.desc.cfg");
    return std::move(judge).findings();
}

} // namespace hdnt::author
