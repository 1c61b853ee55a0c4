#include "bindings/shared/PropertyFacts.h"

#include <algorithm>

namespace hdnt::scripts {

std::string refusalOf(const HDNTProperty& property, const Value& value) {
    std::string reason;
    property.isValid(value, reason);
    return reason;
}

namespace {

// A long list is of no help in a message.
std::string joined(const std::vector<std::string>& texts) {
    constexpr size_t most = 20;
    std::string all;
    for (size_t i = 0; i < std::min(texts.size(), most); ++i) all += (i > 0 ? ", " : "") + texts[i];
    return texts.size() > most ? all + ", ... (" + std::to_string(texts.size()) + " in all)" : all;
}

std::string listedValues(const HDNTProperty& property) {
    std::vector<std::string> texts;
    for (const Value& value : property.getAllowedValues())
        texts.push_back(std::holds_alternative<std::string>(value) ? '"' + hdnt::textOf(value) + '"'
                                                                   : hdnt::textOf(value));
    return joined(texts);
}

std::string propertyNames(const HDNTBlock& block) {
    std::vector<std::string> names;
    for (const HDNTProperty& property : block.properties()) names.push_back(property.getName());
    return names.empty() ? "none" : joined(names);
}

} // namespace

std::string allowedValues(const HDNTProperty& property) {
    if (property.getAttrSpec()->isEnumerated()) return "one of " + listedValues(property);
    const std::string type = HDNTProperty::getTypeName(property.getType());
    if (isBits(property)) return type + " text of " + std::to_string(property.getBitWidth()) + " bits";
    const std::optional<Value> least = property.getMinValue();
    const std::optional<Value> most = property.getMaxValue();
    if (least && most) return type + " from " + hdnt::textOf(*least) + " to " + hdnt::textOf(*most);
    if (least) return type + " of at least " + hdnt::textOf(*least);
    return most ? type + " of at most " + hdnt::textOf(*most) : type;
}

std::string refusalText(const HDNTBlock& block, const std::string& name, const std::string& value) {
    const HDNTProperty* const property = block.getPropertyByName(name);
    const std::string said = "block " + block.getName() + ": property " + name + " may not be " + value;
    return said + (property ? "; allowed: " + allowedValues(*property)
                            : ", since there is none of that name; properties: " + propertyNames(block));
}

} // namespace hdnt::scripts
