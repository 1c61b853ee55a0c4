// Prints what the mappings of a library become, for each setting that lint would try:
//
//     mapping_settings ARCHITECTURE [LIBRARY]
#include "author/exchange/blocks.h"
#include "author/lint/SettingCover.h"
#include "hdnt/hdnt.h"

#include <nlohmann/json.hpp>

#include <iostream>

using hdnt::author::SettingChoice, hdnt::author::SettingCover, hdnt::author::SettingFactor;
using nlohmann::json;

namespace {

json valueOf(const HDNTBlock& block, const std::string& name, const hdnt::Value& value) {
    const HDNTProperty& property = *block.findProperty(name);
    json plain = std::visit([](const auto& one) { return json(one); }, value);
    const bool isBits = HATAttrTypes::isBitVector(property.getType());
    if (isBits) plain = property.formatValue(std::get<std::string>(value), true);
    return {{"type", HDNTProperty::getTypeName(property.getType())},
            {"width", isBits ? property.getBitWidth() : 0},
            {"value", plain}};
}

// As the expansion looks for them.
json pinsNamed(const HDNTBlock& block, const std::string& name) {
    std::vector<HDNTPin*> pins;
    if (HDNTPin* const pin = block.getPinByName(name)) pins.push_back(pin);
    else block.getBusPins(HSTStringUtils::to_upper_copy(name), pins);
    json list = json::array();
    for (const HDNTPin* pin : pins) list.push_back({pin->getBaseName(), pin->getBitIndex()});
    return list;
}

json resultOf(const HDNTExpansion& expansion) {
    json result = {{"cells", json::object()}, {"pins", json::array()}, {"hasProblems", !expansion.problems().empty()}};
    const HDNTExpansion::Level& level = expansion.levels().front();
    result["keeps"] = level.section == HDNTNetlist::Section::modifiedby;
    std::map<std::string, const HDNTBlock*> types = {{"", level.block}};
    for (const auto& one : level.instances) {
        types[one.name] = one.block;
        json& cell = result["cells"][one.name] = {{"type", one.type}, {"parameters", json::object()}};
        for (const auto& value : one.properties)
            if (value.pin.empty())
                cell["parameters"][one.block->findProperty(value.name)->getName()] =
                    valueOf(*one.block, value.name, value.value);
    }
    for (const auto& one : level.connections)
        for (const json& pin : types.contains(one.instance) ? pinsNamed(*types[one.instance], one.pin) : json::array())
            result["pins"].push_back({one.signal, one.instance, pin[0], pin[1], one.inverted});
    return result;
}

json settingOf(HDNTBlock& block, const SettingCover& cover, const SettingChoice& choice) {
    HDNTExpansion expansion(block);
    cover.apply(choice, expansion);
    HDNTFunctionTable functions;
    cover.addFunctions(choice, functions);
    const HDNTFunctionTable::Scope scope(functions);
    expansion.expand();
    json setting = resultOf(expansion);
    setting["set"] = setting["open"] = json::object();
    for (std::size_t i = 0; i < choice.size(); ++i) {
        const SettingFactor& factor = cover.factors()[i];
        const hdnt::Value& value = factor.values[choice[i]];
        if (factor.kind == SettingFactor::Kind::property && choice[i] != 0)
            setting["set"][factor.name] = valueOf(block, factor.name, value);
        if (factor.kind == SettingFactor::Kind::pin && choice[i] == 0)
            for (const json& pin : pinsNamed(block, factor.name)) setting["open"][pin[0].get<std::string>()] = true;
    }
    return setting;
}

} // namespace

int main(int argc, char** argv) {
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    HDNTLibraryMgr::getLibraryMgr()->m_architecture = argv[1];
    HDNTLibraryMgr::m_archEnumInfo = 1;
    hdnt::Loaded loaded;
    hdnt::LoadOptions options;
    options.check = false;
    if (argc > 2) loaded = hdnt::load(argv[2], options);
    const HDNTLibrary* const library = argc > 2 ? loaded.library.get() : HDNTLibraryMgr::getCommonLibrary();
    json all = json::object();
    for (std::size_t i = 0; i < library->getNumTypeBlocks(true); ++i) {
        HDNTBlock& block = *library->getTypeBlock(i);
        const HDNTNetlist* const netlist = block.getNetlist();
        if (!netlist || (*argv[1] && !hdnt::author::isInArchitecture(block, argv[1]))) continue;
        const SettingCover cover(block, *netlist);
        for (const SettingChoice& choice : cover.choices(2000))
            all[block.getName()].push_back(settingOf(block, cover, choice));
    }
    std::cout << all.dump(-1, ' ', true, json::error_handler_t::replace) << "\n";
    return 0;
}
