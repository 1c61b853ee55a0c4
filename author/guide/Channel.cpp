// At a height where one net comes in from the left and another from the right, the first must turn off before the
// second: its track is further to the left. Where such pairs go round in a circle, a net is split in two, one for
// each side, which breaks it.
#include "author/guide/Channel.internal.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <tuple>

namespace hdnt::author::guide {

namespace {

/// A net, or one side of a net that is split, which has one track.
struct Trunk {
    size_t net;
    std::vector<int> left;
    std::vector<int> right;
    int low = std::numeric_limits<int>::max();
    int high = std::numeric_limits<int>::min();
    std::vector<size_t> later = {}; ///< trunks whose tracks are further to the right
    size_t numEarlier = 0;
    size_t leastTrack = 0;

    void reach(int y) {
        low = std::min(low, y);
        high = std::max(high, y);
    }
};

class Router {
public:
    Router(const std::vector<ChannelNet>& nets, int pitch) : nets_(nets), pitch_(pitch) {}

    Channel route() {
        channel_.ways.resize(nets_.size());
        do {
            makeTrunks();
            orderTrunks();
        } while (splitInCircle());
        assignTracks();
        return std::move(channel_);
    }

private:
    bool isSplit(size_t net) const { return splits_.count(net) > 0; }

    void makeTrunks() {
        trunks_.clear();
        for (size_t i = 0; i < nets_.size(); ++i) {
            const ChannelNet& net = nets_[i];
            if (net.isStraight()) continue;
            if (!isSplit(i)) {
                addTrunk({i, net.left, net.right});
                continue;
            }
            addTrunk({i, net.left, {}}).reach(channel_.ways[i].link);
            addTrunk({i, {}, net.right}).reach(channel_.ways[i].link);
            putBefore(trunks_.size() - 2, trunks_.size() - 1);
        }
    }

    Trunk& addTrunk(Trunk trunk) {
        for (const int y : trunk.left) trunk.reach(y);
        for (const int y : trunk.right) trunk.reach(y);
        trunks_.push_back(std::move(trunk));
        return trunks_.back();
    }

    void putBefore(size_t first, size_t second) {
        trunks_[first].later.push_back(second);
        ++trunks_[second].numEarlier;
    }

    void orderTrunks() {
        std::map<int, size_t> onRight;
        for (size_t i = 0; i < trunks_.size(); ++i)
            for (const int y : trunks_[i].right) onRight[y] = i;
        for (size_t i = 0; i < trunks_.size(); ++i)
            for (const int y : trunks_[i].left) {
                const auto found = onRight.find(y);
                if (found != onRight.end() && trunks_[found->second].net != trunks_[i].net) putBefore(i, found->second);
            }
    }

    // One that is in a circle, or between two of them. A half of a split net is never chosen: it has nothing before it,
    // or nothing behind it, but its other half.
    bool splitInCircle() {
        std::vector<std::vector<size_t>> later;
        std::vector<std::vector<size_t>> earlier(trunks_.size());
        for (size_t i = 0; i < trunks_.size(); ++i) {
            later.push_back(trunks_[i].later);
            for (const size_t next : trunks_[i].later) earlier[next].push_back(i);
        }
        std::vector<bool> isFree(trunks_.size(), false);
        unravel(later, earlier, isFree);
        unravel(earlier, later, isFree);
        for (size_t i = 0; i < trunks_.size(); ++i)
            if (!isFree[i] && !isSplit(trunks_[i].net)) {
                split(i);
                return true;
            }
        return false;
    }

    // Frees those that have nothing before them, and then those that have nothing before them but these.
    static void unravel(const std::vector<std::vector<size_t>>& later, const std::vector<std::vector<size_t>>& earlier,
                        std::vector<bool>& isFree) {
        std::vector<size_t> waiting(later.size());
        std::vector<size_t> ready;
        for (size_t i = 0; i < later.size(); ++i) {
            for (const size_t before : earlier[i]) waiting[i] += isFree[before] ? 0 : 1;
            if (waiting[i] == 0 && !isFree[i]) ready.push_back(i);
        }
        while (!ready.empty()) {
            const size_t i = ready.back();
            ready.pop_back();
            isFree[i] = true;
            for (const size_t next : later[i])
                if (!isFree[next] && --waiting[next] == 0) ready.push_back(next);
        }
    }

    // The link is where no row is, and no other link.
    void split(size_t trunk) {
        int y = trunks_[trunk].low / pitch_ * pitch_ + pitch_ / 2;
        while (!links_.insert(y).second) y += pitch_;
        splits_.insert(trunks_[trunk].net);
        channel_.ways[trunks_[trunk].net].link = y;
    }

    // Which one comes first of those that may. Lines that go up are best started from above, others from below; ones
    // that turn back stay close to their side.
    static auto rankOf(const Trunk& trunk) {
        const int height = trunk.high - trunk.low;
        if (trunk.right.empty()) return std::tuple(0, height, trunk.low);
        if (trunk.left.empty()) return std::tuple(2, -height, trunk.low);
        const int from = trunk.left.front();
        const int to = trunk.right.front();
        return to < from ? std::tuple(1, from, to) : std::tuple(1, -from, to);
    }

    void assignTracks() {
        const auto isBefore = [&](size_t a, size_t b) {
            return std::tuple(rankOf(trunks_[a]), a) < std::tuple(rankOf(trunks_[b]), b);
        };
        std::set<size_t, decltype(isBefore)> ready(isBefore);
        for (size_t i = 0; i < trunks_.size(); ++i)
            if (trunks_[i].numEarlier == 0) ready.insert(i);
        while (!ready.empty()) {
            const size_t i = *ready.begin();
            ready.erase(ready.begin());
            const size_t track = freeTrack(trunks_[i]);
            ChannelWay& way = channel_.ways[trunks_[i].net];
            if (!isSplit(trunks_[i].net)) way.leftTrack = way.rightTrack = track;
            else (trunks_[i].right.empty() ? way.leftTrack : way.rightTrack) = track;
            for (const size_t later : trunks_[i].later) {
                trunks_[later].leastTrack = std::max(trunks_[later].leastTrack, track + 1);
                if (--trunks_[later].numEarlier == 0) ready.insert(later);
            }
        }
        channel_.numTracks = used_.size();
    }

    size_t freeTrack(const Trunk& trunk) {
        const auto isFree = [&](const std::map<int, int>& pieces) {
            const auto next = pieces.upper_bound(trunk.high);
            return next == pieces.begin() || std::prev(next)->second < trunk.low;
        };
        size_t track = trunk.leastTrack;
        while (track < used_.size() && !isFree(used_[track])) ++track;
        if (track >= used_.size()) used_.resize(track + 1);
        used_[track].emplace(trunk.low, trunk.high);
        return track;
    }

    const std::vector<ChannelNet>& nets_;
    int pitch_;
    std::set<size_t> splits_;
    std::set<int> links_;
    std::vector<Trunk> trunks_;
    std::vector<std::map<int, int>> used_; ///< of each track: pieces by their lower ends
    Channel channel_;
};

} // namespace

Channel routed(const std::vector<ChannelNet>& nets, int pitch) { return Router(nets, pitch).route(); }

} // namespace hdnt::author::guide
