#pragma once

#include "hdnt/platform/Export.h"

#include <chrono>
#include <string>

/// Measures a scope: when the environment variable HDNT_MEMWATCH is set as the scope begins, its end writes one line
/// with label, detail, seconds passed and resident memory to standard error. Otherwise it does nothing.
class HDNT_API HUTMemWatcher {
public:
    HUTMemWatcher(const std::string& label, const std::string& detail);
    ~HUTMemWatcher();
    HUTMemWatcher(const HUTMemWatcher&) = delete;
    HUTMemWatcher& operator=(const HUTMemWatcher&) = delete;

private:
    bool active_;
    std::string label_;
    std::chrono::steady_clock::time_point start_;
    long residentKiB_ = 0;
};
