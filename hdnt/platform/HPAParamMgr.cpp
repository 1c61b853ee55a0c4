#include "hdnt/platform/HPAParamMgr.h"

#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <cstdlib>

HPAParamMgr::HPAParamMgr() = default;
HPAParamMgr::~HPAParamMgr() = default;

HPAParamMgr* HPAParamMgr::getParamMgr() {
    static HPAParamMgr* const manager = new HPAParamMgr;
    return manager;
}

bool HPAParamMgr::getValueAsBool(const std::string& name) const {
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = values_.find(name); found != values_.end()) return found->second;
    }
    std::string variable = "HDNT_PARAM_" + name;
    std::replace(variable.begin(), variable.end(), '.', '_');
    const char* value = std::getenv(variable.c_str());
    if (!value) return false;
    for (const char* yes : {"1", "true", "on", "yes"})
        if (HSTStringUtils::iequals(value, yes)) return true;
    return false;
}

void HPAParamMgr::setValueAsBool(const std::string& name, bool value) {
    const std::lock_guard lock(mutex_);
    values_[name] = value;
}

void HPAParamMgr::unset(const std::string& name) {
    const std::lock_guard lock(mutex_);
    values_.erase(name);
}
