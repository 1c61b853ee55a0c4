#pragma once

#include "hdnt/platform/HATAttrSpec.h"
#include "hdnt/platform/HSTUniqString.h"

#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

// What an attribute specification says of values, whatever their type. Internal.
namespace hdnt::model {

/// What is left of an iterator, which is deleted.
template <typename T>
std::vector<std::remove_cvref_t<T>> listOf(HATValueIter<T>* iterator) {
    const std::unique_ptr<HATValueIter<T>> owned(iterator);
    std::vector<std::remove_cvref_t<T>> values;
    while (owned->hasNext()) {
        owned->next();
        values.push_back(owned->current());
    }
    return values;
}

/// The facets of a specification in the type of its values: bool, int, double, or texts by reference.
template <typename T>
struct TypedValues {
    using Plain = std::remove_cvref_t<T>;

    const HATAttrSpec& spec;
    T byDefault;
    HATValueIter<T>* (HATAttrSpec::*list)() const; ///< null for a type without lists
    bool ranged;                                   ///< whether the type has ranges
    T low, high;

    /// Whether the range has a bound on that side, for a specification that is not enumerated.
    bool hasLow() const { return ranged && isBound(low, std::numeric_limits<Plain>::lowest()); }
    bool hasHigh() const { return ranged && isBound(high, std::numeric_limits<Plain>::max()); }
    /// The listed values, in order.
    std::vector<Plain> listed() const {
        if constexpr (std::is_same_v<T, bool>) return {};
        else return listOf((spec.*list)());
    }

    /// Whether one of the listed values is what is wanted.
    template <typename Wanted>
    bool lists(const Wanted& isWanted) const {
        if constexpr (!std::is_same_v<T, bool>) {
            const std::unique_ptr<HATValueIter<T>> iterator((spec.*list)());
            while (iterator->hasNext()) {
                iterator->next();
                if (isWanted(iterator->current())) return true;
            }
        }
        return false;
    }

private:
    // A text is no bound when it is empty.
    static bool isBound(T bound, const Plain& unbounded) { return bound != unbounded; }
};

/// Calls `use` with the TypedValues of the attribute spec. The one place that tells types of properties apart.
template <typename Use>
decltype(auto) withValues(const HATAttrSpec& spec, Use&& use) {
    using Spec = HATAttrSpec;
    using Text = const std::string&;
    switch (spec.getAttrType()) {
    case HATAttrTypes::TypeBool:
        return use(TypedValues<bool>{spec, spec.getBoolDefault(), nullptr, false, false, true});
    case HATAttrTypes::TypeInt:
        return use(TypedValues<int>{spec, spec.getIntDefault(), &Spec::createDiscreteIntRangeIter, true,
                                    spec.getLowIntRange(), spec.getHighIntRange()});
    case HATAttrTypes::TypeDouble:
        return use(TypedValues<double>{spec, spec.getDoubleDefault(), &Spec::createDiscreteDoubleRangeIter, true,
                                       spec.getLowDoubleRange(), spec.getHighDoubleRange()});
    case HATAttrTypes::TypeBitHex:
        return use(TypedValues<Text>{spec, spec.getHexDefault(), &Spec::createHexIter, true, spec.getLowHexRange(),
                                     spec.getHighHexRange()});
    case HATAttrTypes::TypeBitBinary:
        return use(TypedValues<Text>{spec, spec.getBinaryDefault(), &Spec::createBinaryIter, true,
                                     spec.getLowBinaryRange(), spec.getHighBinaryRange()});
    default: {
        const std::string& none = HSTUniqString().str();
        return use(TypedValues<Text>{spec, spec.getStringDefault(), &Spec::createStringRangeIter, false, none, none});
    }
    }
}

} // namespace hdnt::model
