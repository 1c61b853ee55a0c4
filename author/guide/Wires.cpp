#include "author/guide/Wires.internal.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <tuple>

namespace hdnt::author::guide {

namespace {

constexpr int trackPitch = 8;
constexpr int leastZone = 8; ///< between a box and the tracks beside it
constexpr int margin = 4;

// What a row needs beside its box, for its text.
int zoneOf(const Row& row) {
    if (!row.tie.empty()) return stubLength + textWidth(row.tie, smallSize) + 3 * labelGap;
    if (!row.part.empty()) return bubbleSize + textWidth(row.part, smallSize) + 2 * labelGap;
    return leastZone;
}

// Pieces along x that go on from each other become one.
void joinUp(std::vector<Wires::Segment>& segments) {
    using Segment = Wires::Segment;
    std::sort(segments.begin(), segments.end(), [](const Segment& a, const Segment& b) {
        return std::tuple(a.y1, a.isBus, a.y2, a.x1) < std::tuple(b.y1, b.isBus, b.y2, b.x1);
    });
    size_t used = 0;
    for (const Segment& segment : segments) {
        Segment* const last = used > 0 ? &segments[used - 1] : nullptr;
        const bool goesOn = last && last->y1 == last->y2 && segment.y1 == segment.y2 && last->y1 == segment.y1 &&
                            last->isBus == segment.isBus && last->x2 == segment.x1;
        if (goesOn) last->x2 = segment.x2;
        else segments[used++] = segment;
    }
    segments.resize(used);
}

/// The bits in a piece of a net, as far as its width needs them: one of them, or more.
class Width {
public:
    void add(int bit) {
        isBus_ = isBus_ || (bit_ && *bit_ != bit);
        bit_ = bit;
    }
    void add(const Width& other) {
        if (other.bit_) add(*other.bit_);
        isBus_ = isBus_ || other.isBus_;
    }
    bool isBus() const { return isBus_; }

private:
    std::optional<int> bit_;
    bool isBus_ = false;
};

/// What comes together on a track, by height.
using Branches = std::map<int, std::vector<Width>>;

Width sumOf(const Branches& branches) {
    Width sum;
    for (const auto& [y, widths] : branches)
        for (const Width& width : widths) sum.add(width);
    return sum;
}

// A piece has the bits that are on both sides of it, of which those on one side are all that can be.
void runAlong(int x, const Branches& branches, Wires::Net& net) {
    std::vector<bool> isBusBelow;
    Width below;
    for (auto branch = branches.rbegin(); branch != branches.rend(); ++branch) {
        for (const Width& width : branch->second) below.add(width);
        isBusBelow.push_back(below.isBus());
    }
    const int low = branches.begin()->first;
    const int high = branches.rbegin()->first;
    Width above;
    for (auto branch = branches.begin(); branch != branches.end(); ++branch) {
        const auto& [y, widths] = *branch;
        isBusBelow.pop_back();
        if (widths.size() + (y > low) + (y < high) > 2) net.joints.push_back({x, y});
        if (y == high) break;
        for (const Width& width : widths) above.add(width);
        const bool isBus = above.isBus() && isBusBelow.back();
        const int end = std::next(branch)->first;
        if (y > low && net.segments.back().isBus == isBus) net.segments.back().y2 = end;
        else net.segments.push_back({x, y, x, end, isBus});
    }
}

// What a net has in each of the columns it goes through, which are all between its outermost rows.
std::map<size_t, Width> widthsOfCrossings(const Sheet& sheet, const SheetNet& net) {
    std::map<int, std::pair<size_t, size_t>> channelsOfBit;
    for (const SheetNet::Terminal& terminal : net.terminals) {
        const size_t channel = sheet.channelOf(terminal);
        for (const int bit : sheet.rowOf(terminal).bits) {
            auto& [first, last] = channelsOfBit.try_emplace(bit, channel, channel).first->second;
            first = std::min(first, channel);
            last = std::max(last, channel);
        }
    }
    std::map<std::pair<size_t, size_t>, Width> widthsBetween; // few, however many bits there are
    for (const auto& [bit, channels] : channelsOfBit) widthsBetween[channels].add(bit);
    std::map<size_t, Width> widths;
    for (const auto& [channels, width] : widthsBetween)
        for (size_t column = channels.first; column < channels.second; ++column) widths[column].add(width);
    return widths;
}

} // namespace

/// An end of a wire in a channel: at a row of a box, or in a column that the net goes through.
struct Wires::Opening {
    int y;
    Width width;
    size_t column;
    const Box* box = nullptr;
    const Row* row = nullptr;
};

struct Wires::Passage {
    size_t net;
    std::vector<Opening> left;
    std::vector<Opening> right;

    ChannelNet ends() const {
        ChannelNet net;
        for (const Opening& opening : left) net.left.push_back(opening.y);
        for (const Opening& opening : right) net.right.push_back(opening.y);
        return net;
    }
};

Wires::Wires(const Sheet& sheet) : sheet_(sheet), nets_(sheet.nets.size()) {
    columnLefts_.resize(sheet.numColumns);
    columnWidths_.resize(sheet.numColumns);
    for (const Box& box : sheet.boxes) columnWidths_[box.column] = std::max(columnWidths_[box.column], box.width);
    trackStarts_.resize(sheet.numColumns + 1);
    const std::vector<std::vector<Passage>> passages = this->passages();
    for (const std::vector<Passage>& channel : passages) {
        std::vector<ChannelNet> nets;
        nets.reserve(channel.size());
        for (const Passage& passage : channel) nets.push_back(passage.ends());
        channels_.push_back(routed(nets, lineHeight / 2));
    }
    measure();
    for (size_t channel = 0; channel < passages.size(); ++channel)
        for (size_t i = 0; i < passages[channel].size(); ++i)
            run(passages[channel][i], channels_[channel].ways[i], trackStarts_[channel]);
    for (Net& net : nets_) joinUp(net.segments);
}

void Wires::measure() {
    std::vector<int> leftZones(sheet_.numColumns + 1, 0);
    std::vector<int> rightZones(sheet_.numColumns + 1, 0);
    for (const Box& box : sheet_.boxes)
        for (const Row& row : box.rows) {
            int& zone = row.onRight ? leftZones[box.column + 1] : rightZones[box.column];
            zone = std::max(zone, zoneOf(row));
        }
    int x = margin;
    for (size_t channel = 0; channel <= sheet_.numColumns; ++channel) {
        const size_t tracks = channels_[channel].numTracks;
        trackStarts_[channel] = x + leftZones[channel] + trackPitch / 2;
        x += leftZones[channel] + static_cast<int>(tracks) * trackPitch + rightZones[channel];
        if (channel == sheet_.numColumns) break;
        columnLefts_[channel] = x;
        x += columnWidths_[channel];
    }
    width_ = x + margin;
}

int Wires::leftOf(const Box& box) const {
    const int spare = columnWidths_[box.column] - box.width;
    const int share = !box.isPin() ? spare / 2 : box.rows.front().onRight ? spare : 0;
    return columnLefts_[box.column] + share;
}

// The nets of each channel.
std::vector<std::vector<Wires::Passage>> Wires::passages() const {
    std::vector<std::vector<Passage>> channels(sheet_.numColumns + 1);
    for (size_t i = 0; i < sheet_.nets.size(); ++i) {
        const SheetNet& net = sheet_.nets[i];
        std::map<size_t, Passage> parts;
        const auto part = [&](size_t channel) -> Passage& {
            return parts.try_emplace(channel, Passage{i, {}, {}}).first->second;
        };
        for (const SheetNet::Terminal& terminal : net.terminals) {
            const Box& box = sheet_.boxes[terminal.box];
            const Row& row = sheet_.rowOf(terminal);
            Passage& here = part(sheet_.channelOf(terminal));
            Width width;
            for (const int bit : row.bits) width.add(bit);
            (row.onRight ? here.left : here.right).push_back({box.yOf(row), width, box.column, &box, &row});
        }
        std::map<size_t, Width> widths = widthsOfCrossings(sheet_, net);
        for (const SheetNet::Crossing& crossing : net.crossings) {
            const Opening opening{crossing.y, widths[crossing.column], crossing.column};
            part(crossing.column).right.push_back(opening);
            part(crossing.column + 1).left.push_back(opening);
        }
        for (auto& [channel, passage] : parts) channels[channel].push_back(std::move(passage));
    }
    return channels;
}

// Where its wire is tied on. The one to the right of a column begins at the column's left.
int Wires::xOf(const Opening& opening) const {
    if (!opening.box) return columnLefts_[opening.column];
    const int bubble = opening.row->inverted ? bubbleSize : 0;
    return opening.row->onRight ? rightOf(*opening.box) + bubble : leftOf(*opening.box) - bubble;
}

// Horizontal pieces from the openings to their tracks, and the tracks' vertical ones.
void Wires::run(const Passage& passage, const ChannelWay& way, int trackStart) {
    Net& net = nets_[passage.net];
    if (passage.ends().isStraight()) {
        const bool isBus = passage.left[0].width.isBus() && passage.right[0].width.isBus();
        net.segments.push_back(
            {xOf(passage.left[0]), passage.left[0].y, xOf(passage.right[0]), passage.left[0].y, isBus});
        return;
    }
    const int left = trackStart + static_cast<int>(way.leftTrack) * trackPitch;
    const int right = trackStart + static_cast<int>(way.rightTrack) * trackPitch;
    Branches onLeft;
    Branches onRight;
    for (const Opening& opening : passage.left) {
        net.segments.push_back({xOf(opening), opening.y, left, opening.y, opening.width.isBus()});
        onLeft[opening.y].push_back(opening.width);
    }
    for (const Opening& opening : passage.right) {
        net.segments.push_back({right, opening.y, xOf(opening), opening.y, opening.width.isBus()});
        (left == right ? onLeft : onRight)[opening.y].push_back(opening.width);
    }
    if (left != right) {
        const Width width = sumOf(onLeft).isBus() ? sumOf(onRight) : sumOf(onLeft);
        net.segments.push_back({left, way.link, right, way.link, width.isBus()});
        onLeft[way.link].push_back(width);
        onRight[way.link].push_back(width);
        runAlong(right, onRight, net);
    }
    runAlong(left, onLeft, net);
}

} // namespace hdnt::author::guide
