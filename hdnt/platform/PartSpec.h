#pragma once

#include <string>

namespace CommonPart {

/// The part a design is made for, as the host names it. Either text may be empty.
struct PartSpec {
    std::string architecture;
    std::string device;
};

} // namespace CommonPart
