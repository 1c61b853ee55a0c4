#pragma once

#include "tests/platform/TempDir.h"

#include <nlohmann/json.hpp>
#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

using Json = nlohmann::json;

/// What a run of the tool left behind.
struct Outcome {
    int status = -1; ///< exit status; 1000 + the signal's number when it was killed
    std::string out;
    std::string err;
};

/// Runs the tool as a user would, in a directory of its own, without any of our variables from outside.
class NtlTool {
public:
    explicit NtlTool(const TempDir& directory) : directory_(directory) {}

    Outcome run(const std::vector<std::string>& arguments);
    /// The same in two steps, for tests that do something meanwhile.
    pid_t start(const std::vector<std::string>& arguments);
    Outcome finish(pid_t process);

    std::map<std::string, std::string> environment;
    int standardOutput = -1;   ///< a descriptor to use instead; -2: closed
    int standardError = -1;    ///< likewise
    std::string standardInput; ///< a file to read instead
    size_t addressSpace = 0;   ///< bytes; 0: no limit
    size_t fileSize = 0;       ///< likewise
    size_t descriptors = 0;    ///< open at once; 0: no limit

private:
    [[noreturn]] void become(const std::vector<std::string>& arguments) const;

    const TempDir& directory_;
};

std::string readFile(const std::string& path);
std::vector<std::string> linesOf(const std::string& text);
size_t countOf(const std::string& text, const std::string& what);
/// A library of that text: `library "l" { ... }`.
std::string libraryOf(const std::string& text);
