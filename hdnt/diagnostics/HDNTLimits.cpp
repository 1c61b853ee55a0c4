#include "hdnt/diagnostics/HDNTLimits.h"

#include <utility>

static thread_local constinit const HDNTLimits* innermost = nullptr;

static HDNTLimits& ofProcess() {
    static HDNTLimits* const limits = new HDNTLimits;
    return *limits;
}

const HDNTLimits& HDNTLimits::get() { return innermost ? *innermost : ofProcess(); }

void HDNTLimits::set(const HDNTLimits& limits) { ofProcess() = limits; }

HDNTLimits::Scope::Scope(const HDNTLimits& limits) : outer_(std::exchange(innermost, &limits)) {}
HDNTLimits::Scope::~Scope() { innermost = outer_; }
