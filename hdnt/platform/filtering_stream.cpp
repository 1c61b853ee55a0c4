#include "hdnt/platform/filtering_stream.h"

#include <utility>

namespace obr::iostreams {

filtering_stream::filtering_stream() = default;
filtering_stream::~filtering_stream() = default;

filtering_stream::filtering_stream(const std::string& path, xp_autodetect_t form,
                                   const hdnt::platform::InputLimits& limits) {
    open(path, form, limits);
}

bool filtering_stream::open(const std::string& path, xp_autodetect_t, const hdnt::platform::InputLimits& limits) {
    std::string loaded;
    reason_.clear();
    const bool good = hdnt::platform::readInput(path, limits, loaded, reason_);
    str(std::move(loaded));
    clear(good ? goodbit : failbit);
    return good;
}

} // namespace obr::iostreams
