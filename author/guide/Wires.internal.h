#pragma once

#include "author/guide/Channel.internal.h"
#include "author/guide/Sheet.internal.h"

#include <vector>

namespace hdnt::author::guide {

/// Where everything of a placed sheet is from left to right, and how its nets run.
class Wires {
public:
    explicit Wires(const Sheet& sheet);

    int width() const { return width_; }
    int leftOf(const Box& box) const;
    int rightOf(const Box& box) const { return leftOf(box) + box.width; }

    /// A piece of a net, along x or along y.
    struct Segment {
        int x1;
        int y1;
        int x2;
        int y2;
        bool isBus;
    };
    struct Joint {
        int x;
        int y;
    };
    struct Net {
        std::vector<Segment> segments;
        std::vector<Joint> joints; ///< where it branches
    };
    const std::vector<Net>& nets() const { return nets_; } ///< as those of the sheet

private:
    struct Opening;
    struct Passage;

    void measure();
    int xOf(const Opening& opening) const;
    void run(const Passage& passage, const ChannelWay& way, int trackStart);
    std::vector<std::vector<Passage>> passages() const;

    const Sheet& sheet_;
    int width_ = 0;
    std::vector<int> columnLefts_;
    std::vector<int> columnWidths_;
    std::vector<int> trackStarts_; ///< of each channel
    std::vector<Channel> channels_;
    std::vector<Net> nets_;
};

inline constexpr int bubbleSize = 6;  ///< of an inverted port, across
inline constexpr int stubLength = 12; ///< of a wire that ends in a text
inline constexpr int labelGap = 3;

} // namespace hdnt::author::guide
