// The lists of the receiver, from one parse to the next.
#include "hdnt/frontend/ModelReceiver.internal.h"

#include <new>

namespace hdnt::frontend {

ReceiverLists& ReceiverLists::kept() noexcept {
    alignas(ReceiverLists) static char memory[sizeof(ReceiverLists)];
    static auto* const lists = new (memory) ReceiverLists(Empty()); // never destroyed, as texts may be read at exit
    return *lists;
}

template <typename Act>
void ReceiverLists::forEach(ReceiverLists& other, Act&& act) {
    act(decls_, other.decls_);
    act(formals_, other.formals_);
    act(entities_, other.entities_);
    act(properties_, other.properties_);
    act(options_.ints.values, other.options_.ints.values);
    act(options_.doubles.values, other.options_.doubles.values);
    act(options_.texts, other.options_.texts);
    act(statements_, other.statements_);
    act(braces_, other.braces_);
    act(ifs_, other.ifs_);
    act(pins_, other.pins_);
    act(operands_, other.operands_);
    act(operators_, other.operators_);
    act(calls_, other.calls_);
    act(arguments_, other.arguments_);
}

void ReceiverLists::swap(ReceiverLists& other) noexcept {
    forEach(other, [](auto& list, auto& otherList) { list.swap(otherList); });
}

ReceiverLists::ReceiverLists() {
    swap(kept());
    if (entities_.capacity() > 0) return;
    constexpr size_t few = 16;
    forEach(*this, [](auto& list, auto&) { list.reserve(few); });
    entities_.reserve(4 * few);
    statements_.reserve(4 * few);
}

ReceiverLists::~ReceiverLists() {
    constexpr size_t most = 1024;
    bool isSmall = true;
    forEach(*this, [&](auto& list, auto&) {
        list.clear();
        isSmall &= list.capacity() <= most;
    });
    if (isSmall) swap(kept());
}

} // namespace hdnt::frontend
