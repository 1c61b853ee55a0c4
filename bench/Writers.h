#pragma once

#include "bench/Content.h"

#include <memory>
#include <string>
#include <vector>

namespace bench {

/// Writes a library block by block, so that a text of any size needs the memory of one block.
class Writer {
public:
    virtual ~Writer() = default;
    /// What stands before the blocks; each operation appends to `out`.
    virtual void begin(std::string& out, const std::vector<Function>& functions) = 0;
    virtual void write(std::string& out, const Block& block) = 0;
    virtual void end(std::string& out) = 0;
};

enum class Form {
    Ntl,          ///< in the style of a person: in lines, with comments of both forms
    NtlLines,     ///< without comments to the end of the line
    NtlOneLine,   ///< the same bytes as NtlLines, with a blank for every line end
    Json,         ///< the content, without comments; compact, a block a line
    Config,       ///< the same for libconfig
    Descriptions, ///< a description configuration with an entry for every property of every block
};

std::unique_ptr<Writer> makeWriter(Form form);

} // namespace bench
