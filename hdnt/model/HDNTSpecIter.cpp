#include "hdnt/model/HDNTSpecIter.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/HEX.h"

HDNTSpecIter::HDNTSpecIter(const HDNTBlock& block) : HSTKeyValIter(block.getNumProperties() > 0), block_(block) {}

void HDNTSpecIter::next() {
    if (nextIndex_ >= block_.getNumProperties()) return;
    current_ = block_.getProperty(nextIndex_++)->getAttrSpec();
    setHasNext(nextIndex_ < block_.getNumProperties());
}

const std::string& HDNTSpecIter::getKey() const {
    if (!current_) throw HEXAlgException("HDNTSpecIter::getKey called on iterator with no next value");
    return current_->getName();
}

HDNTAllSpecIter::HDNTAllSpecIter(HDNTLibrary* library) : HSTKeyValIter(true), library_(library) { assignNextIter(); }

HDNTAllSpecIter::~HDNTAllSpecIter() = default;

void HDNTAllSpecIter::assignNextIter() {
    const long count = static_cast<long>(library_->getNumTypeBlocks(true));
    while (blockIndex_ + 1 < count) {
        const HDNTBlock& block = *library_->getTypeBlock(static_cast<size_t>(++blockIndex_));
        if (block.getNumProperties() == 0) continue;
        waiting_ = std::make_unique<HDNTSpecIter>(block);
        return;
    }
    setHasNext(false);
}

void HDNTAllSpecIter::next() {
    if (waiting_) current_ = std::move(waiting_);
    if (!current_) return;
    current_->next();
    if (!current_->hasNext() && hasNext()) assignNextIter();
}

const std::string& HDNTAllSpecIter::getKey() const {
    if (!current_) throw HEXAlgException("HDNTAllSpecIter::getKey called on iterator with no next value");
    return current_->getKey();
}

HATAttrSpec* HDNTAllSpecIter::getVal() const {
    if (!current_) throw HEXAlgException("HDNTAllSpecIter::getVal called on iterator with no next value");
    return current_->getVal();
}
