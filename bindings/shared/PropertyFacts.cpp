#include "bindings/shared/PropertyFacts.h"

#include <algorithm>

namespace hdnt::scripts {

std::string refusalOf(const HDNTProperty& property, const std::optional<Value>& value, const std::string& written) {
    return value ? property.refusalOf(*value) : property.refusalOfOther(written);
}

namespace {

std::string propertyNames(const HDNTBlock& block) {
    constexpr size_t most = 20; // more are of no help in a message
    std::string names;
    for (size_t i = 0; i < std::min(block.properties().size(), most); ++i)
        names += (i > 0 ? ", " : "") + block.properties()[i].getName();
    if (names.empty()) return "none";
    const size_t count = block.properties().size();
    return count > most ? names + ", ... (" + std::to_string(count) + " in all)" : names;
}

} // namespace

std::string refusalText(const HDNTBlock& block, const std::string& name, const std::optional<Value>& value,
                        const std::string& written) {
    const HDNTProperty* const property = block.getPropertyByName(name);
    return "block " + block.getName() + ": " +
           (property ? refusalOf(*property, value, written)
                     : "property " + name + " may not be " + written +
                           ", since there is none of that name; properties: " + propertyNames(block));
}

} // namespace hdnt::scripts
