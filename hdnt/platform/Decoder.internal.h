#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace hdnt::platform {

/// Expands one member of an archive at a time, checksums included. Uniform over the compression libraries.
class Decoder {
public:
    enum class Status { More, MemberEnd, Damaged, TooMuchMemory };

    virtual ~Decoder() = default;
    /// Makes ready for the next member; false when out of memory.
    virtual bool begin() = 0;
    /// Takes bytes off the front of `in`, writes to `out` and advances it towards `end`. More, with nothing taken and
    /// nothing written, means that the input ends within the member.
    virtual Status step(std::string_view& in, char*& out, char* end) = 0;

    /// What the archive says of the size of its text, if it is one member; 0 when it does not. It need not be true.
    virtual std::size_t saidSize(std::string_view) const { return 0; }

    /// True when the text begins like a member of this kind.
    virtual bool recognises(std::string_view text) const = 0;

    /// The decoder for an archive that begins like this, by the whole of its header; null for anything else. An archive
    /// cut within that header is still recognised, unless what is left could be text.
    static std::unique_ptr<Decoder> forArchive(std::string_view head);
};

} // namespace hdnt::platform
