#include "author/guide/Wires.internal.h"

#include <algorithm>
#include <map>
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

// How many bits a net has in each of the columns it goes through, which are all between its outermost rows.
std::map<size_t, int> bitsOfCrossings(const Sheet& sheet, const SheetNet& net) {
    std::map<int, std::pair<size_t, size_t>> channelsOfBit;
    for (const SheetNet::Terminal& terminal : net.terminals) {
        const size_t channel = sheet.channelOf(terminal);
        for (const int bit : sheet.rowOf(terminal).bits) {
            auto& [first, last] = channelsOfBit.try_emplace(bit, channel, channel).first->second;
            first = std::min(first, channel);
            last = std::max(last, channel);
        }
    }
    std::map<size_t, int> counts;
    for (const auto& [bit, channels] : channelsOfBit)
        for (size_t column = channels.first; column < channels.second; ++column) ++counts[column];
    return counts;
}

} // namespace

/// An end of a wire in a channel.
struct Wires::Opening {
    int x;
    int y;
    bool isBus;
};

struct Wires::Passage {
    size_t net;
    std::vector<Opening> left;
    std::vector<Opening> right;

    bool isBus() const {
        const auto isThick = [](const Opening& opening) { return opening.isBus; };
        return std::any_of(left.begin(), left.end(), isThick) || std::any_of(right.begin(), right.end(), isThick);
    }
};

Wires::Wires(const Sheet& sheet) : sheet_(sheet), nets_(sheet.nets.size()) {
    columnLefts_.resize(sheet.numColumns);
    columnWidths_.resize(sheet.numColumns);
    for (const Box& box : sheet.boxes) columnWidths_[box.column] = std::max(columnWidths_[box.column], box.width);
    trackStarts_.resize(sheet.numColumns + 1);
    for (const std::vector<Passage>& channel : passages()) {
        std::vector<ChannelNet> nets;
        const auto heights = [](const std::vector<Opening>& openings) {
            std::vector<int> ys;
            for (const Opening& opening : openings) ys.push_back(opening.y);
            return ys;
        };
        for (const Passage& passage : channel) nets.push_back({heights(passage.left), heights(passage.right)});
        channels_.push_back(routed(nets, lineHeight / 2));
    }
    measure();
    const std::vector<std::vector<Passage>> all = passages();
    for (size_t channel = 0; channel < all.size(); ++channel) run(channel, all[channel]);
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
            const int bubble = row.inverted ? bubbleSize : 0;
            Passage& here = part(sheet_.channelOf(terminal));
            const bool isBus = row.isBus || row.bits.size() > 1;
            if (row.onRight) here.left.push_back({rightOf(box) + bubble, box.yOf(row), isBus});
            else here.right.push_back({leftOf(box) - bubble, box.yOf(row), isBus});
        }
        std::map<size_t, int> bits = bitsOfCrossings(sheet_, net);
        for (const SheetNet::Crossing& crossing : net.crossings) {
            const int left = columnLefts_[crossing.column];
            const bool isBus = bits[crossing.column] > 1;
            part(crossing.column).right.push_back({left, crossing.y, isBus});
            part(crossing.column + 1).left.push_back({left, crossing.y, isBus});
        }
        for (auto& [channel, passage] : parts) channels[channel].push_back(std::move(passage));
    }
    return channels;
}

// Horizontal pieces from the openings to their tracks, and the tracks' vertical ones.
void Wires::run(size_t channel, const std::vector<Passage>& passages) {
    for (size_t i = 0; i < passages.size(); ++i) {
        const Passage& passage = passages[i];
        const ChannelWay& way = channels_[channel].ways[i];
        Net& net = nets_[passage.net];
        if (passage.left.size() == 1 && passage.right.size() == 1 && passage.left[0].y == passage.right[0].y) {
            const Opening& from = passage.left[0];
            net.segments.push_back({from.x, from.y, passage.right[0].x, from.y, from.isBus && passage.right[0].isBus});
            continue;
        }
        const auto trackAt = [&](size_t track) { return trackStarts_[channel] + static_cast<int>(track) * trackPitch; };
        std::map<int, std::map<int, int>> branches; ///< at x and y
        for (const Opening& opening : passage.left) {
            const int x = trackAt(way.leftTrack);
            net.segments.push_back({opening.x, opening.y, x, opening.y, opening.isBus});
            ++branches[x][opening.y];
        }
        for (const Opening& opening : passage.right) {
            const int x = trackAt(way.rightTrack);
            net.segments.push_back({x, opening.y, opening.x, opening.y, opening.isBus});
            ++branches[x][opening.y];
        }
        if (way.leftTrack != way.rightTrack) {
            const int left = trackAt(way.leftTrack);
            const int right = trackAt(way.rightTrack);
            net.segments.push_back({left, way.link, right, way.link, passage.isBus()});
            ++branches[left][way.link];
            ++branches[right][way.link];
        }
        for (const auto& [x, heights] : branches) {
            const int low = heights.begin()->first;
            const int high = heights.rbegin()->first;
            if (low != high) net.segments.push_back({x, low, x, high, passage.isBus()});
            for (const auto& [y, number] : heights)
                if (number + (y > low) + (y < high) > 2) net.joints.push_back({x, y});
        }
    }
}

} // namespace hdnt::author::guide
