#pragma once

#include "hdnt/platform/HATAttrSpec.h"
#include "hdnt/platform/HSTKeyValIter.h"

#include <memory>
#include <string>

class HDNTBlock;
class HDNTLibrary;

/// Walks the attribute specifications of one block's properties, in order of declaration. Block and properties must
/// outlive it and not change meanwhile.
class HDNT_API HDNTSpecIter : public HSTKeyValIter<std::string, HATAttrSpec*> {
public:
    explicit HDNTSpecIter(const HDNTBlock& block);

    /// Does nothing past the last item.
    void next() override;
    /// Throws HEXAlgException "HDNTSpecIter::getKey called on iterator with no next value" without a current item.
    const std::string& getKey() const override;
    /// Null without a current item.
    HATAttrSpec* getVal() const override { return current_; }

private:
    const HDNTBlock& block_;
    size_t nextIndex_ = 0;
    HATAttrSpec* current_ = nullptr;
};

/// Walks the attribute specifications of all properties of all blocks of a library and its parents, in the order of
/// HDNTLibrary::getTypeBlock. Blocks without properties are passed over.
class HDNT_API HDNTAllSpecIter : public HSTKeyValIter<std::string, HATAttrSpec*> {
public:
    explicit HDNTAllSpecIter(HDNTLibrary* library);
    ~HDNTAllSpecIter() override;

    /// Does nothing past the last item.
    void next() override;
    /// Before the first next(), or in a library without properties: HEXAlgException
    /// "HDNTAllSpecIter::getKey called on iterator with no next value".
    const std::string& getKey() const override;
    /// Throws "HDNTAllSpecIter::getVal called on iterator with no next value" likewise.
    HATAttrSpec* getVal() const override;
    /// Looks for the next block that has properties; hasNext() is false when there is none. Called by next().
    void assignNextIter();

private:
    HDNTLibrary* library_;
    std::unique_ptr<HDNTSpecIter> current_;
    std::unique_ptr<HDNTSpecIter> waiting_;
    long blockIndex_ = -1;
};
