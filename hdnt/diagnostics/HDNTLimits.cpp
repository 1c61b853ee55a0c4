#include "hdnt/diagnostics/HDNTLimits.h"

static HDNTLimits& current() {
    static HDNTLimits* const limits = new HDNTLimits;
    return *limits;
}

const HDNTLimits& HDNTLimits::get() { return current(); }

void HDNTLimits::set(const HDNTLimits& limits) { current() = limits; }
