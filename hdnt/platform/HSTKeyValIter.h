#pragma once

#include "hdnt/platform/Export.h"

/// Iterator over pairs of a key and a value, owned by whoever created it:
///   while (it->hasNext()) { it->next(); use(it->getKey(), it->getVal()); }
/// next() advances to the item that getKey and getVal then read, so it comes before the first read.
/// The order of the virtual operations is part of the interface.
template <typename K, typename V>
class HDNT_API HSTKeyValIter {
public:
    HSTKeyValIter(const HSTKeyValIter&) = delete;
    HSTKeyValIter& operator=(const HSTKeyValIter&) = delete;

    virtual void next() = 0;
    /// The key of the current item, valid until the next call of next(). Without an item: what the derived class says.
    virtual const K& getKey() const = 0;
    virtual V getVal() const = 0;
    virtual ~HSTKeyValIter() = default;

    /// True while next() has an item to go to.
    bool hasNext() const { return hasNext_; }

protected:
    explicit HSTKeyValIter(bool hasNext = false) : hasNext_(hasNext) {}
    void setHasNext(bool hasNext) { hasNext_ = hasNext; }

private:
    bool hasNext_;
};
