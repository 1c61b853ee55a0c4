#pragma once

#include "hdnt/platform/Export.h"
#include "hdnt/platform/InputFile.h"

#include <sstream>
#include <string>
#include <string_view>

namespace obr::iostreams {

/// Says that the stored form of a file is recognised from its contents.
struct xp_autodetect_t {};
inline constexpr xp_autodetect_t xp_autodetect{};

/// Input stream over the expanded text of a file, which is read whole when it is opened. The stream can seek. A stream
/// whose file could not be opened has its fail bit set.
class HDNT_API filtering_stream : public std::istringstream {
public:
    filtering_stream();
    filtering_stream(const std::string& path, xp_autodetect_t, const hdnt::platform::InputLimits& limits = {});
    ~filtering_stream() override;

    /// Replaces the text and clears the state. False, and the fail bit set, when the file could not be opened.
    bool open(const std::string& path, xp_autodetect_t, const hdnt::platform::InputLimits& limits = {});
    /// The whole text, for reading in place; valid until the stream is opened anew or destroyed.
    std::string_view text() const { return view(); }
    /// Why the last opening failed; empty when it did not.
    const std::string& reason() const { return reason_; }

private:
    std::string reason_;
};

} // namespace obr::iostreams
