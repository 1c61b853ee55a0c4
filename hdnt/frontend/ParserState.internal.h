#pragma once

#include <exception>
#include <utility>

namespace hdnt::frontend {

/// The exception that ended a parse. Internal; one instance, as the parser itself. It is kept until the parser has let
/// go of what it holds, and the parse entry throws it again; HDNTParserparse() itself throws nothing.
class ParserState {
public:
    static ParserState& instance() { return instance_; }

    void begin() { failure_ = nullptr; }
    /// Throws what guard() caught, if anything.
    void finish() {
        if (const std::exception_ptr failure = std::exchange(failure_, nullptr)) std::rethrow_exception(failure);
    }

    /// Runs a step that may throw; false when it did.
    template <typename Step>
    bool guard(Step&& step) noexcept {
        try {
            step();
            return true;
        } catch (...) {
            failure_ = std::current_exception();
            return false;
        }
    }

private:
    static ParserState instance_;

    std::exception_ptr failure_;
};

} // namespace hdnt::frontend
