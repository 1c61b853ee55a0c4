#include "hdnt/frontend/ParseSession.h"

#include "hdnt/frontend/HDNTError.h"
#include "hdnt/frontend/HDNTLimits.h"

#include <utility>

namespace hdnt::frontend {

// Never destroyed, like the scanner.
ParseSession& ParseSession::make() { return *(instance_ = new ParseSession); }

void ParseSession::finish() {
    if (const std::exception_ptr failure = std::exchange(failure_, nullptr)) std::rethrow_exception(failure);
}

long ParseSession::greatestDepth() { return HDNTLimits::get().parserDepth; }

void ParseSession::reportExhausted(const char* message) { HDNTParsererror(message); }

void ParseSession::reserve(size_t depth, size_t stateBytes) {
    states_.resize(depth * stateBytes / sizeof(long) + 1);
    values_.resize(depth);
    locations_.resize(depth);
}

} // namespace hdnt::frontend
