#include "hdnt/model/HDNTNodeWatch.h"

#include "hdnt/model/HDNTNode.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

// Never destroyed: the manager deletes its libraries when the process exits.
struct Observers {
    std::mutex mutex;
    std::vector<HDNTNodeWatch::Observer*> list;
};

Observers& observers() {
    static auto* const all = new Observers;
    return *all;
}

} // namespace

HDNTNodeWatch::Observer::~Observer() = default;

void HDNTNodeWatch::addObserver(Observer& observer) {
    const std::lock_guard lock(observers().mutex);
    observers().list.push_back(&observer);
}

void HDNTNodeWatch::removeObserver(Observer& observer) {
    const std::lock_guard lock(observers().mutex);
    std::erase(observers().list, &observer);
}

void HDNTNodeWatch::watch(const HDNTNode& node) { node.watched_.set(); }

void HDNTNode::tellOfDeath() const noexcept {
    const std::lock_guard lock(observers().mutex);
    for (HDNTNodeWatch::Observer* observer : observers().list) observer->nodeDies(*this);
}
