#include "author/exchange/compareModels.h"

#include "author/exchange/BlockJson.h"
#include "author/exchange/BlockWords.h"
#include "author/exchange/blocks.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/hdlShape.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "author/exchange/parameterValues.internal.h"
#include "author/exchange/verilogModules.internal.h"
#include "author/lint/Findings.internal.h"
#include "author/lint/nearestNames.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <span>
#include <utility>

namespace hdnt::author {

namespace {

using platform::printable;
using words::cell;

std::string countedBits(std::size_t bits) { return std::to_string(bits) + (bits == 1 ? " bit" : " bits"); }

template <typename Items>
auto findNamed(const Items& items, const std::string& name) {
    return std::ranges::find_if(items, [&](const auto& item) { return item.name == name; });
}

template <typename Items>
std::string questionAmong(const Items& items, const std::string& name) {
    std::vector<std::string> names;
    for (const auto& item : items) names.push_back(item.name);
    return question(name, names);
}

/// A port or parameter that the model of a block should have.
struct Wanted {
    std::string name;     ///< as readers of Verilog know it
    const Json* declared; ///< the first bus, or the property
};

struct WantedPort : Wanted {
    const HdlPort* port;
};

std::string textOf(std::pair<int, int> range) {
    return "[" + std::to_string(range.first) + ":" + std::to_string(range.second) + "]";
}

/// One module beside its block.
class ModelJudge {
public:
    ModelJudge(const Json& block, const Module& module, std::vector<Diagnostic>& findings)
        : block_(block), module_(module), shape_(block), findings_(findings) {
        for (const HdlPort& port : shape_.ports)
            add(ports_, {{unescapedVerilogName(port.name), port.buses.front()}, &port});
        for (const Json& property : block["properties"])
            if (isSettable(property)) add(properties_, {unescapedVerilogName(cell(property["name"])), &property});
    }

    void judge() {
        for (const WantedPort& wanted : ports_) {
            const auto found = findNamed(module_.ports, wanted.name);
            if (found != module_.ports.end()) judgePort(wanted, *found);
            else
                say(ModelCode::missingPort, module_.place, wanted,
                    {cell(wanted.port->direction()) + wanted.port->bounds(" [", ":", "]")});
        }
        for (const ModulePort& port : module_.ports)
            if (findNamed(ports_, port.name) == ports_.end()) judgeExtra(port);
        for (const Wanted& wanted : properties_) {
            const auto found = findNamed(module_.parameters, wanted.name);
            if (found != module_.parameters.end()) judgeParameter(wanted, *found);
            else say(ModelCode::missingParameter, module_.place, wanted, {parameterFactsOf(*wanted.declared)});
        }
        for (const ModuleParameter& parameter : module_.parameters)
            if (findNamed(properties_, parameter.name) == properties_.end()) judgeExtra(parameter);
    }

private:
    // Ports and parameters share one space of names, where ports come first.
    template <typename Item>
    void add(std::vector<Item>& items, Item item) {
        if (names_.insert(item.name).second) items.push_back(std::move(item));
    }

    /// With the names of block and port or parameter in front of the arguments.
    void say(ModelCode code, const Place& place, const Wanted& about, std::vector<std::string> arguments) {
        const bool isPort = about.declared->contains("direction");
        const std::string name = cell((*about.declared)[isPort ? "baseName" : "name"]);
        sayOf(code, place, name, std::move(arguments));
        findings_.back().element += (isPort ? "/pin " : "/property ") + name;
        relate(*about.declared);
    }
    void sayOf(ModelCode code, const Place& place, const std::string& name, std::vector<std::string> arguments) {
        const std::string block = cell(block_["name"]);
        arguments.insert(arguments.begin(), {printable(block), printable(name)});
        findings_.push_back(finding(modelRule(code), place, arguments));
        findings_.back().element = "block " + block;
    }
    void relate(const Json& declared, const std::string& message = "declared here") {
        const Json& location = declared["location"];
        if (location.is_null()) return;
        Place place;
        place.file = cell(location["file"]);
        place.line = location["line"];
        findings_.back().related.push_back({std::move(place), message});
    }

    void judgePort(const WantedPort& wanted, const ModulePort& port) {
        const std::string direction = cell(wanted.port->direction());
        if (port.direction != direction) say(ModelCode::portDirection, port.place, wanted, {port.direction, direction});
        const auto range = wanted.port->range.value_or(std::pair(0, 0));
        const std::size_t width = static_cast<std::size_t>(std::abs(range.first - range.second)) + 1;
        if (port.width != width)
            return say(ModelCode::portWidth, port.place, wanted, {countedBits(port.width), std::to_string(width)});
        const auto found = port.range.value_or(std::pair(0, 0));
        if (found != range && width > 1) say(ModelCode::portRange, port.place, wanted, {textOf(found), textOf(range)});
    }

    void judgeExtra(const ModulePort& port) {
        const auto isIt = [&](const Json& bus) { return unescapedVerilogName(cell(bus["baseName"])) == port.name; };
        const auto bus = std::ranges::find_if(block_["buses"], isIt);
        const bool isPin = bus != block_["buses"].end();
        if (isPin && (*bus)["isAbstract"] == true) return; // what it stands for is the model's
        const bool isInternal = isPin && (*bus)["direction"] == "internal";
        sayOf(ModelCode::extraPort, port.place, port.name,
              {isInternal ? ", where it is internal" : questionAmong(ports_, port.name)});
        if (isInternal) relate(*bus);
        else relate(block_, blockHere);
    }

    void judgeParameter(const Wanted& wanted, const ModuleParameter& parameter) {
        const Json& property = *wanted.declared;
        if (!canHold(parameter, property))
            return say(ModelCode::parameterType, parameter.place, wanted, {kindOf(parameter), kindOf(property)});
        const int width = bitsOf(property), found = bitsOf(parameter);
        if (found != 0 && width != 0 && found != width)
            say(ModelCode::parameterWidth, parameter.place, wanted,
                {countedBits(static_cast<std::size_t>(found)), std::to_string(width)});
        if (hasHdlDefault(property) && !hasDefaultOf(property, parameter))
            say(ModelCode::parameterDefault, parameter.place, wanted,
                {defaultText(parameter, property), verilogDefault(property)});
    }

    void judgeExtra(const ModuleParameter& parameter) {
        const auto isIt = [&](const Json& item) { return unescapedVerilogName(cell(item["name"])) == parameter.name; };
        const auto property = std::ranges::find_if(block_["properties"], isIt);
        const bool isKnown = property != block_["properties"].end();
        sayOf(ModelCode::extraParameter, parameter.place, parameter.name,
              {isKnown ? " that designs set" : questionAmong(properties_, parameter.name)});
        if (isKnown) relate(*property);
        else relate(block_, blockHere);
    }

    static constexpr const char* blockHere = "the block is declared here";

    const Json& block_;
    const Module& module_;
    HdlShape shape_;
    std::vector<Diagnostic>& findings_;
    std::set<std::string> names_;
    std::vector<WantedPort> ports_;
    std::vector<Wanted> properties_;
};

class Comparison {
public:
    explicit Comparison(const HDNTLibrary& library) : library_(library) {
        for (HDNTBlock* block : blocksOf(library, true)) {
            blocks_.emplace(unescapedVerilogName(block->getName()), block);
            names_.push_back(block->getName());
        }
    }

    ModelFile judge(const std::string& path, const std::vector<std::string>& searchDirectories) {
        ModuleFile read = readModules(path, searchDirectories);
        ModelFile file = {path, read.refusals.empty(), {}, std::move(read.refusals)};
        for (const Module& module : read.modules) {
            const auto found = blocks_.find(module.name);
            if (found == blocks_.end()) {
                const std::vector<std::string> what = {printable(module.name), question(module.name, names_)};
                file.findings.push_back(finding(modelRule(ModelCode::extraModule), module.place, what));
                continue;
            }
            modelled_.insert(found->second);
            if (module.isDeferred) {
                const std::string what = printable(module.name) + ": " + deferredReason;
                file.findings.push_back(
                    finding(modelRule(ModelCode::unreadableVerilog), module.place, std::span(&what, 1)));
                file.findings.back().element = "block " + found->second->getName();
                continue;
            }
            file.blocks.push_back(found->second->getName());
            const Json block = jsonOf(*found->second, places_);
            ModelJudge(block, module, file.findings).judge();
        }
        sortByPlace(file.findings);
        return file;
    }

    void count(bool withMissing, ModelComparison& comparison) {
        const std::string& architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
        for (HDNTBlock* block : blocksOf(library_, false)) {
            if (!architecture.empty() && !isInArchitecture(*block, architecture)) continue;
            ++comparison.ownBlocks;
            if (modelled_.contains(block)) ++comparison.modelled;
            else if (withMissing) comparison.missing.push_back(missing(*block));
        }
    }

private:
    Diagnostic missing(const HDNTBlock& block) {
        const auto location = block.copyOfLocation();
        const std::vector<std::string> what = {printable(block.getName())};
        Diagnostic one =
            finding(modelRule(ModelCode::missingModel), location ? places_.placeOf(*location) : Place(), what);
        one.element = "block " + block.getName();
        return one;
    }

    const HDNTLibrary& library_;
    std::map<std::string, HDNTBlock*> blocks_; ///< by the names of modules
    std::vector<std::string> names_;
    std::set<const HDNTBlock*> modelled_;
    SourcePlaces places_;
};

} // namespace

ModelComparison compareModels(const HDNTLibrary& library, const std::vector<std::string>& files,
                              const ModelOptions& options) {
    Comparison comparison(library);
    ModelComparison result;
    for (const std::string& file : files) result.files.push_back(comparison.judge(file, options.searchDirectories));
    comparison.count(options.withMissing, result);
    return result;
}

} // namespace hdnt::author
