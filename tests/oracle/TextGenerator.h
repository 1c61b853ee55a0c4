#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace oracle {

/// A text, and the files that its INCLUDE and INLINE statements may find.
struct GeneratedText {
    std::string text;
    std::vector<std::pair<std::string, std::string>> files; ///< name without a directory, content
    std::vector<std::string> folders;                       ///< names of folders that stand in the way
    bool named = false;                                     ///< scan it as a file with a name
};

/// Texts that look like NTL and texts that mean harm. The same seed and index give the same text on every machine.
/// File names hold the index, so that no text meets a name that an earlier one has included.
class TextGenerator {
public:
    explicit TextGenerator(std::uint64_t seed) : seed_(seed) {}
    GeneratedText make(std::uint64_t index);

private:
    std::uint64_t next();
    size_t below(size_t n) { return static_cast<size_t>(next() % n); }
    bool chance(size_t percent) { return below(100) < percent; }

    std::string body(size_t pieces);
    std::string piece();
    std::string word();
    std::string number();
    std::string quoted();
    std::string comment();
    std::string blank();
    std::string noise();
    std::string hostile();
    std::string statement();
    std::string stem() const;
    std::string fileName();
    std::string fileContent();
    void addFiles();
    void addChain();

    std::uint64_t seed_;
    std::uint64_t state_ = 0;
    std::uint64_t index_ = 0;
    size_t firstFile_ = 0; ///< files below this number cannot be named from the text in the making: no endless nesting
    bool includes_ = false;
    GeneratedText made_;
};

} // namespace oracle
