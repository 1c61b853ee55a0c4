#pragma once

#include <compare>
#include <cstddef>
#include <iterator>
#include <span>
#include <type_traits>
#include <vector>

namespace hdnt {

/// The nodes that another one owns, in their order and as references, to be walked and searched:
///
///   for (const HDNTBlock& block : library.blocks()) ...
///   std::ranges::any_of(block.properties(), &HDNTProperty::isMuxControl)
///
/// A view: as small as two pointers, copied freely, nothing owned. Iterators are of random access; they outlive the
/// view but not a change of the owner's list, such as another text parsed into a library. Of a const owner the nodes
/// are const, too.
template <typename Node>
class Nodes {
    using Pointer = std::remove_const_t<Node>* const*;

public:
    class iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = std::remove_const_t<Node>;
        using difference_type = std::ptrdiff_t;
        using pointer = Node*;
        using reference = Node&;

        iterator() = default;
        explicit iterator(Pointer at) : at_(at) {}

        Node& operator*() const { return **at_; }
        Node* operator->() const { return *at_; }
        Node& operator[](std::ptrdiff_t distance) const { return *at_[distance]; }
        iterator& operator++() { return *this += 1; }
        iterator operator++(int) { return iterator(at_++); }
        iterator& operator--() { return *this -= 1; }
        iterator operator--(int) { return iterator(at_--); }
        iterator& operator+=(std::ptrdiff_t distance) {
            at_ += distance;
            return *this;
        }
        iterator& operator-=(std::ptrdiff_t distance) { return *this += -distance; }
        friend iterator operator+(iterator from, std::ptrdiff_t distance) { return from += distance; }
        friend iterator operator+(std::ptrdiff_t distance, iterator from) { return from += distance; }
        friend iterator operator-(iterator from, std::ptrdiff_t distance) { return from -= distance; }
        friend std::ptrdiff_t operator-(iterator a, iterator b) { return a.at_ - b.at_; }
        friend auto operator<=>(iterator a, iterator b) = default;

    private:
        Pointer at_ = nullptr;
    };
    using const_iterator = iterator;

    Nodes() = default;
    explicit Nodes(const std::vector<std::remove_const_t<Node>*>& list) : first_(list.data()), size_(list.size()) {}

    iterator begin() const { return iterator(first_); }
    iterator end() const { return iterator(first_ + size_); }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    /// The index is below size().
    Node& operator[](std::size_t index) const { return *first_[index]; }
    /// So many of them, from one on; all of these are there.
    Nodes part(std::size_t first, std::size_t size) const {
        Nodes nodes = *this;
        nodes.first_ += first;
        nodes.size_ = size;
        return nodes;
    }

private:
    Pointer first_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace hdnt

/// Iterators stay right without the view they came from.
template <typename Node>
inline constexpr bool std::ranges::enable_borrowed_range<hdnt::Nodes<Node>> = true;
