#include "bindings/shared/PropertyFacts.h"

#include "bindings/shared/Fields.h"
#include "hdnt/model/HDNTLibrary.h"

#include <algorithm>

namespace hdnt::scripts {

std::string refusalOf(const HDNTProperty& property, const HDNTExpansion::Value& value) {
    std::string reason;
    std::visit([&](const auto& plain) { property.isValidValue(plain, reason); }, value);
    return reason;
}

namespace {

// Bounds and values as they would be written; empty for what is not there.
struct Spelling {
    std::string operator()(std::nullptr_t) const { return ""; }
    std::string operator()(const HDNTExpansion::Value& value) const { return HDNTExpansion::textOf(value); }
    std::string operator()(const std::vector<std::string>& texts) const {
        std::vector<std::string> quoted;
        for (const std::string& text : texts) quoted.push_back('"' + text + '"');
        return joined(quoted);
    }
    template <typename Number>
    std::string operator()(const std::vector<Number>& numbers) const {
        std::vector<std::string> texts;
        for (const Number number : numbers) texts.push_back(HDNTExpansion::textOf(number));
        return joined(texts);
    }

    // A long list is of no help in a message.
    static std::string joined(const std::vector<std::string>& texts) {
        constexpr size_t most = 20;
        std::string all;
        for (size_t i = 0; i < std::min(texts.size(), most); ++i) all += (i > 0 ? ", " : "") + texts[i];
        return texts.size() > most ? all + ", ... (" + std::to_string(texts.size()) + " in all)" : all;
    }
};

std::string propertyNames(const HDNTBlock& block) {
    std::vector<std::string> names;
    for (size_t i = 0; i < block.getNumProperties(); ++i) names.push_back(block.getProperty(i)->getName());
    return names.empty() ? "none" : Spelling::joined(names);
}

} // namespace

std::string allowedValues(const HDNTProperty& property) {
    const Spelling spell;
    if (property.getAttrSpec()->isEnumerated()) return "one of " + valuesOf(property, spell);
    const std::string least = minimumOf(property, spell);
    const std::string most = maximumOf(property, spell);
    const std::string type = HDNTProperty::getTypeName(property.getType());
    if (isBits(property)) return type + " text of " + std::to_string(property.getBitWidth()) + " bits";
    if (!least.empty() && !most.empty()) return type + " from " + least + " to " + most;
    if (!least.empty()) return type + " of at least " + least;
    return most.empty() ? type : type + " of at most " + most;
}

std::string refusalText(const HDNTBlock& block, const std::string& name, const std::string& value) {
    const HDNTProperty* const property = block.getPropertyByName(name);
    const std::string said = "block " + block.getName() + ": property " + name + " may not be " + value;
    return said + (property ? "; allowed: " + allowedValues(*property)
                            : ", since there is none of that name; properties: " + propertyNames(block));
}

bool fields::isPadConstraint(HDNTProperty& property) {
    const HDNTBlock* const block = property.getBlock();
    return block && block->getLibrary() && block->getLibrary()->isIOPinConstr(property.getName());
}

} // namespace hdnt::scripts
