#pragma once

#include <string>

namespace oracle {

/// Standard output of this process goes to a memory file while an object of this class lives, at the level of the
/// descriptor. One file serves all of them: there are hundreds of thousands in a run. Ends the process when the
/// redirection fails: nothing could be compared then.
class StdoutCapture {
public:
    StdoutCapture();
    ~StdoutCapture();
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    /// What was printed since the start or the last call.
    std::string take();

private:
    int saved_;
};

} // namespace oracle
