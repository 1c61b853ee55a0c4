#pragma once

#include "hdnt/platform/HEX.h"

#include <stdexcept>
#include <string>

namespace ntl {

/// What the tool answers to its caller. A higher one wins when several apply.
enum Status : int {
    Fine = 0,
    Faulty = 1,   ///< the input has errors, or what was asked for does not exist
    Unusable = 2, ///< wrong usage, an input that cannot be opened, or output that cannot be written
};

/// Ends the command with a status. The message is the reason, without "ntl: " and without a full stop.
class Failure : public std::runtime_error {
public:
    Failure(Status status, const std::string& message) : std::runtime_error(message), status_(status) {}
    Status status() const { return status_; }

private:
    Status status_;
};

/// What the library throws of bad input, as a failure with its text.
template <typename Action>
auto orUnusable(Action&& action) {
    try {
        return action();
    } catch (const HEXDataException& error) {
        throw Failure(Unusable, error.what());
    }
}

} // namespace ntl
