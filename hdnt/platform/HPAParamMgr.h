#pragma once

#include "hdnt/platform/Export.h"

#include <map>
#include <mutex>
#include <string>

/// The process-wide boolean parameters. A parameter is what the host set; else what the environment says: variable
/// HDNT_PARAM_<name, dots as underscores>, true for 1, true, on, yes in any case, read at every call; else false.
/// Safe in any thread, as long as no thread changes the environment meanwhile.
class HDNT_API HPAParamMgr {
public:
    /// Never null, never destroyed.
    static HPAParamMgr* getParamMgr();

    bool getValueAsBool(const std::string& name) const;
    void setValueAsBool(const std::string& name, bool value);
    /// Forgets what the host set, so that the environment speaks again.
    void unset(const std::string& name);

    HPAParamMgr(const HPAParamMgr&) = delete;
    HPAParamMgr& operator=(const HPAParamMgr&) = delete;

private:
    HDNT_LOCAL HPAParamMgr();
    HDNT_LOCAL ~HPAParamMgr();

    mutable std::mutex mutex_;
    std::map<std::string, bool> values_;
};
