#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/frontend/ParserState.internal.h"
#include "hdnt/frontend/Scanner.h"

#include <utility>

namespace hdnt::frontend {

// Never destroyed, like the scanner.
ParserState& ParserState::make() { return *(instance_ = new ParserState); }

void ParserState::finish() {
    if (const std::exception_ptr failure = std::exchange(failure_, nullptr)) std::rethrow_exception(failure);
}

long ParserState::greatestDepth() { return HDNTLimits::get().parserDepth; }

void ParserState::reportExhausted(const char* message) { HDNTParsererror(message); }

void ParserState::reserve(size_t depth, size_t stateBytes) {
    states_.resize(depth * stateBytes / sizeof(long) + 1);
    values_.resize(depth);
    locations_.resize(depth);
}

} // namespace hdnt::frontend
