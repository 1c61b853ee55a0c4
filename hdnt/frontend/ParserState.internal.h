#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/frontend/ParserValue.internal.h"

#include <algorithm>
#include <exception>
#include <vector>

namespace hdnt::frontend {

/// What one parse needs beside the generated parser: the exception that ended it, and the parser's grown stacks.
/// Internal; one instance, as the parser itself.
///
/// An exception must not cross the generated code, which could not free its stacks and values then. It is kept here,
/// the parser gives up and frees what it holds, and the parse entry throws it again.
class ParserState {
public:
    static ParserState& instance() { return instance_ ? *instance_ : make(); }

    void begin() { failure_ = nullptr; }
    /// Throws what guard() caught, if anything.
    void finish();

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

    /// Bison's yyoverflow: moves the stacks, which are full, out of the parser's frame into buffers that later parses
    /// use again. They have the greatest size at once, so this happens once a parse; a second time, "memory exhausted"
    /// is reported and everything stays as it is.
    template <typename StateNumber>
    void growStacks(const char* message, StateNumber** states, ParserValue** values, yyltype** locations,
                    long* capacity) noexcept {
        const long depth = greatestDepth();
        if (*capacity >= depth || !guard([&] { reserve(static_cast<size_t>(depth), sizeof(StateNumber)); }))
            return reportExhausted(message);
        auto* const grownStates = reinterpret_cast<StateNumber*>(states_.data());
        std::copy(*states, *states + *capacity, grownStates);
        std::copy(*values, *values + *capacity, values_.data());
        std::copy(*locations, *locations + *capacity, locations_.data());
        *states = grownStates;
        *values = values_.data();
        *locations = locations_.data();
        *capacity = depth;
    }

private:
    static long greatestDepth();
    static void reportExhausted(const char* message);
    void reserve(size_t depth, size_t stateBytes);

    static ParserState& make();

    inline static constinit ParserState* instance_ = nullptr;

    std::exception_ptr failure_;
    std::vector<long> states_;
    std::vector<ParserValue> values_;
    std::vector<yyltype> locations_;
};

} // namespace hdnt::frontend
