#pragma once

#include "hdnt/model/HDNTNode.h"

#include <string>

namespace hdnt::scripts {

/// A list of model objects that belongs to one, which is also asked by name.
struct Listing {
    const char* name;
    size_t (*size)(HDNTNode& owner);
    HDNTNode* (*at)(HDNTNode& owner, size_t index);
    /// Null when there is none. Answers for every element by the name it shows.
    HDNTNode* (*find)(HDNTNode& owner, const std::string& name);
};

/// Of a library, or of an element of a listing: the name that it shows. Empty for anything else.
std::string nameOf(const HDNTNode& node);

extern const Listing ownBlocks;
extern const Listing allBlocks;
extern const Listing blockPins;
extern const Listing blockBuses;
extern const Listing blockProperties;
extern const Listing busPins;
extern const Listing busProperties;
extern const Listing pinProperties;

} // namespace hdnt::scripts
