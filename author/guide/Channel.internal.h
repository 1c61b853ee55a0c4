#pragma once

#include <cstddef>
#include <vector>

namespace hdnt::author::guide {

/// A net in a channel between two columns: where it comes in, on the left and on the right, each at a height that no
/// other net has on that side.
struct ChannelNet {
    std::vector<int> left;
    std::vector<int> right;

    bool isStraight() const { return left.size() == 1 && left == right; }
};

/// The way it takes there: along one vertical track, or along one for each side and a link between them. Tracks are
/// counted from the left.
struct ChannelWay {
    size_t leftTrack = 0;
    size_t rightTrack = 0;
    int link = 0; ///< height, where the tracks differ
};

struct Channel {
    std::vector<ChannelWay> ways; ///< of the nets; meaningless for straight ones
    size_t numTracks = 0;
};

/// Gives nets their tracks, so that no two of them share a piece of a line or a corner; crossings there may be. Heights
/// are multiples of `pitch`; a link is half of it beside.
Channel routed(const std::vector<ChannelNet>& nets, int pitch);

} // namespace hdnt::author::guide
