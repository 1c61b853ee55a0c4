#pragma once

// Shared by the parts of the builder.

#include "hdnt/frontend/GrammarBuilder.h"

#include <utility>

namespace hdnt::frontend::build {

/// A list from the parser's stack with the model objects in it; what is taken over is released.
template <typename T>
class OwnedList {
public:
    explicit OwnedList(std::vector<T*>* list) : list_(list) {}
    ~OwnedList() { deleteList(list_); }
    OwnedList(const OwnedList&) = delete;
    OwnedList& operator=(const OwnedList&) = delete;
    std::vector<T*>* get() const { return list_; }
    /// Gives up the list with its items.
    std::vector<T*>* release() { return std::exchange(list_, nullptr); }
    void releaseItems() {
        if (list_) list_->clear();
    }

private:
    std::vector<T*>* list_;
};

template <typename Node>
Node* placed(Node* node, const yyltype& place) {
    node->setLocation(place);
    return node;
}

} // namespace hdnt::frontend::build
