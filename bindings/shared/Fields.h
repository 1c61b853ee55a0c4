#pragma once

#include "bindings/shared/Listing.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace hdnt::scripts {

// What both languages say of model objects: one table for each kind, in BlockFields.h and MappingFields.h.

template <typename>
struct Accessor;
template <typename R, typename C>
struct Accessor<R (C::*)() const> {
    using Node = C;
    using Result = R;
};
template <typename R, typename C>
struct Accessor<R (C::*)()> : Accessor<R (C::*)() const> {};
template <typename R, typename C>
struct Accessor<R (*)(C&)> : Accessor<R (C::*)() const> {};

template <typename T>
concept NodePointer = std::is_pointer_v<T> && std::derived_from<std::remove_pointer_t<T>, HDNTNode>;
template <typename T>
concept NodeList = requires(T list) {
    requires NodePointer<typename T::value_type>;
};

/// A text; an empty one is none.
struct OrNone {
    std::string text;
};
/// A word of the library's tables; without data() it is none.
struct Word {
    std::string_view text;
};

/// A fact: an operation of the model, or a function of an object.
template <auto Get>
struct Field {
    const char* name;
    const char* description;
};
/// A list of objects, and what one of them is called.
template <const Listing& List, HDNTNodeKind Kind>
struct ListField {
    const char* name;
    const char* one;
    const char* description;
};

template <auto Get>
constexpr Field<Get> field(const char* name, const char* description) {
    return {name, description};
}
template <const Listing& List, HDNTNodeKind Kind>
constexpr ListField<List, Kind> list(const char* name, const char* one, const char* description) {
    return {name, one, description};
}

} // namespace hdnt::scripts
