#include "bindings/shared/Places.h"

#include <optional>

namespace hdnt::scripts {

static std::optional<SourcePlaces> places;
static const char* lastFile = nullptr;

Place placeOf(const yyltype& location) {
    if (!places || location.fileName != lastFile) places.emplace();
    lastFile = location.fileName;
    return places->placeOf(location);
}

void forgetFiles() { places.reset(); }

} // namespace hdnt::scripts
