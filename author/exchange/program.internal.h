#pragma once

#include <string>
#include <vector>

// Other programs, as far as exchange needs them.
namespace hdnt::author {

/// A folder of its own for temporary files, which goes with it. Throws HEXDataException when it cannot be made.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    void write(const std::string& name, const std::string& text) const;
    /// Empty when there is no such file.
    std::string read(const std::string& name) const;
    void link(const std::string& name, const std::string& target) const;

private:
    std::string path_;
};

enum class ProgramEnd { Fine, Failed, Missing, TooLong };

/// Runs a program that is sought on the PATH, in a folder, without a shell and without input. What it says on its two
/// outputs goes to the files "out" and "err" there. After so many seconds it is killed, and what it has started, too.
ProgramEnd runProgram(std::vector<std::string> words, const TemporaryFolder& folder, int seconds);

} // namespace hdnt::author
