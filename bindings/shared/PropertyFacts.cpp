#include "bindings/shared/PropertyFacts.h"

#include "bindings/shared/Fields.h"
#include "hdnt/model/HDNTLibrary.h"

namespace hdnt::scripts {

std::string refusalOf(const HDNTProperty& property, const HDNTExpansion::Value& value) {
    std::string reason;
    std::visit([&](const auto& plain) { property.isValidValue(plain, reason); }, value);
    return reason;
}

bool fields::isPadConstraint(HDNTProperty& property) {
    const HDNTBlock* const block = property.getBlock();
    return block && block->getLibrary() && block->getLibrary()->isIOPinConstr(property.getName());
}

} // namespace hdnt::scripts
