#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace hdnt::author::server {

/// Where the lines of a text begin, as the protocol counts them: a line ends with "\n", "\r\n" or "\r". A change costs
/// a look at what was replaced and moving the beginnings behind it.
class LineIndex {
public:
    void read(std::string_view text);
    /// `text` is the new one, in which `newLength` bytes from the offset on replaced `oldLength`.
    void edit(std::string_view text, std::size_t offset, std::size_t oldLength, std::size_t newLength);

    std::size_t size() const { return begins_.size(); }
    std::size_t begin(std::size_t line) const { return begins_[line]; }
    /// Before what ends the line.
    std::size_t end(std::string_view text, std::size_t line) const;
    std::size_t lineAt(std::size_t offset) const;

private:
    std::vector<std::size_t> begins_{0};
};

} // namespace hdnt::author::server
