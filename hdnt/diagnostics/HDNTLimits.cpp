#include "hdnt/diagnostics/HDNTLimits.h"

#include <utility>

static thread_local constinit const HDNTLimits* innermost = nullptr;

static HDNTLimits& ofProcess() {
    static HDNTLimits* const limits = new HDNTLimits;
    return *limits;
}

HDNTLimits HDNTLimits::forUntrusted() {
    HDNTLimits limits;
    limits.includeDepth = 16;
    limits.inputBytes = limits.includedBytes = size_t{64} << 20;
    limits.expansionFloor = size_t{1} << 20;
    limits.rangeElements = 65536;
    limits.expansionInstances = 100000;
    limits.diagnostics = 10000;
    limits.seconds = 10;
    limits.ownFolderOnly = true;
    return limits;
}

const HDNTLimits& HDNTLimits::get() { return innermost ? *innermost : ofProcess(); }

void HDNTLimits::set(const HDNTLimits& limits) { ofProcess() = limits; }

HDNTLimits::Scope::Scope(const HDNTLimits& limits) : outer_(std::exchange(innermost, &limits)) {}
HDNTLimits::Scope::~Scope() { innermost = outer_; }
