#pragma once

#include "hdnt/platform/Export.h"

#include <cstdint>
#include <string>

/// Iterator over values that an attribute specification lists, in the order they were added; the caller owns it, and it
/// is valid until its HATAttrSpec is changed or deleted. next() advances to the item that current() then reads, so it
/// comes before the first read. Both throw HEXAlgException where there is no such item.
template <typename T>
class HDNT_API HATValueIter {
public:
    virtual ~HATValueIter();
    HATValueIter(const HATValueIter&) = delete;
    HATValueIter& operator=(const HATValueIter&) = delete;

    bool hasNext() const { return next_ != end_; }
    void next();
    T current() const;

private:
    friend class HATAttrSpec;
    HDNT_LOCAL HATValueIter(const std::uint64_t* begin, const std::uint64_t* end) : next_(begin), end_(end) {}

    const std::uint64_t* next_;
    const std::uint64_t* end_;
    const std::uint64_t* current_ = nullptr;
};

using HATIntIter = HATValueIter<int>;
using HATDoubleIter = HATValueIter<double>;
using HATTextIter = HATValueIter<const std::string&>;

extern template class HATValueIter<int>;
extern template class HATValueIter<double>;
extern template class HATValueIter<const std::string&>;
