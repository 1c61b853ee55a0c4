#include "bindings/shared/Listing.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"

namespace hdnt::scripts {

namespace {

// Look-ups that answer for every element by the name it shows: the model finds pins declared in capitals only.
template <const Listing& Kind, typename Element, typename NameOf>
HDNTNode* scan(HDNTNode& owner, NameOf&& hasName) {
    for (size_t i = 0; i < Kind.size(owner); ++i) {
        HDNTNode* const node = Kind.at(owner, i);
        if (hasName(*static_cast<Element*>(node))) return node;
    }
    return nullptr;
}

template <typename Class>
Class& as(HDNTNode& node) {
    return static_cast<Class&>(node);
}

size_t firstPin(const HDNTBus& bus) { return static_cast<size_t>(bus.getFirstPinIndex()); }

} // namespace

std::string nameOf(const HDNTNode& node) {
    switch (node.getKind()) {
    case HDNTNodeKind::Library: return static_cast<const HDNTLibrary&>(node).getName();
    case HDNTNodeKind::Block: return static_cast<const HDNTBlock&>(node).getName();
    case HDNTNodeKind::Bus: return static_cast<const HDNTBus&>(node).getName();
    case HDNTNodeKind::Pin: return static_cast<const HDNTPin&>(node).getName(false);
    case HDNTNodeKind::Property: return static_cast<const HDNTProperty&>(node).getName();
    default: return "";
    }
}

const Listing ownBlocks = {
    "blocks", [](HDNTNode& library) { return as<HDNTLibrary>(library).getNumTypeBlocks(false); },
    [](HDNTNode& library, size_t i) -> HDNTNode* { return as<HDNTLibrary>(library).getTypeBlock(i); },
    [](HDNTNode& library, const std::string& name) -> HDNTNode* {
        return as<HDNTLibrary>(library).getTypeBlockByName(name, false);
    }};
const Listing allBlocks = {
    "all_blocks", [](HDNTNode& library) { return as<HDNTLibrary>(library).getNumTypeBlocks(true); },
    [](HDNTNode& library, size_t i) -> HDNTNode* { return as<HDNTLibrary>(library).getTypeBlock(i); },
    [](HDNTNode& library, const std::string& name) -> HDNTNode* {
        return as<HDNTLibrary>(library).getTypeBlockByName(name, true);
    }};
const Listing blockPins = {"pins", [](HDNTNode& block) { return as<HDNTBlock>(block).getNumPins(); },
                           [](HDNTNode& block, size_t i) -> HDNTNode* { return as<HDNTBlock>(block).getPin(i); },
                           [](HDNTNode& block, const std::string& name) -> HDNTNode* {
                               HDNTPin* const found = as<HDNTBlock>(block).getPinByName(name);
                               if (found && found->getPinIndex() < as<HDNTBlock>(block).getNumPins()) return found;
                               return scan<blockPins, HDNTPin>(
                                   block, [&](const HDNTPin& pin) { return pin.getName(false) == name; });
                           }};
const Listing blockBuses = {"buses", [](HDNTNode& block) { return as<HDNTBlock>(block).getNumBuses(); },
                            [](HDNTNode& block, size_t i) -> HDNTNode* { return as<HDNTBlock>(block).getBus(i); },
                            [](HDNTNode& block, const std::string& name) -> HDNTNode* {
                                if (HDNTBus* const found = as<HDNTBlock>(block).findBus(name)) return found;
                                return scan<blockBuses, HDNTBus>(block, [&](const HDNTBus& bus) {
                                    return bus.getBaseName() == name || bus.getName() == name;
                                });
                            }};
const Listing blockProperties = {
    "properties", [](HDNTNode& block) { return as<HDNTBlock>(block).getNumProperties(); },
    [](HDNTNode& block, size_t i) -> HDNTNode* { return as<HDNTBlock>(block).getProperty(i); },
    [](HDNTNode& block, const std::string& name) -> HDNTNode* { return as<HDNTBlock>(block).getPropertyByName(name); }};
const Listing busPins = {
    "pins", [](HDNTNode& bus) { return as<HDNTBus>(bus).getBlock() ? as<HDNTBus>(bus).pinCount() : 0; },
    [](HDNTNode& bus, size_t i) -> HDNTNode* {
        return as<HDNTBus>(bus).getBlock()->getPin(firstPin(as<HDNTBus>(bus)) + i);
    },
    [](HDNTNode& bus, const std::string& name) -> HDNTNode* {
        return scan<busPins, HDNTPin>(bus, [&](const HDNTPin& pin) { return pin.getName(false) == name; });
    }};
const Listing busProperties = {
    "properties", [](HDNTNode& bus) { return as<HDNTBus>(bus).getNumProperties(); },
    [](HDNTNode& bus, size_t i) -> HDNTNode* { return as<HDNTBus>(bus).getProperty(static_cast<unsigned short>(i)); },
    [](HDNTNode& bus, const std::string& name) -> HDNTNode* { return as<HDNTBus>(bus).getPropertyByName(name); }};
const Listing pinProperties = {
    "properties", [](HDNTNode& pin) { return as<HDNTPin>(pin).getNumProperties(); },
    [](HDNTNode& pin, size_t i) -> HDNTNode* { return as<HDNTPin>(pin).getProperty(static_cast<unsigned short>(i)); },
    [](HDNTNode& pin, const std::string& name) -> HDNTNode* { return as<HDNTPin>(pin).getPropertyByName(name); }};

} // namespace hdnt::scripts
