#include "author/project/parents.h"

#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/platform/HPAParamMgr.h"

namespace hdnt::author {

std::vector<std::string> commonLibraryPaths() {
    std::vector<std::string> paths = {HDNTLibraryMgr::getDataFileName(false)};
    const std::string test = HDNTLibraryMgr::getTestDataFileName();
    if (!test.empty() && HPAParamMgr::getParamMgr()->getValueAsBool("arch.enableTestFeatures")) paths.push_back(test);
    return paths;
}

std::vector<std::string> parentPaths(const std::string& parent) {
    if (parent.empty()) return {};
    return parent == "common" ? commonLibraryPaths() : std::vector<std::string>{parent};
}

std::vector<std::string> parentPaths(const Project& project) {
    std::vector<std::string> paths;
    for (const std::string& parent : project.parents) {
        const std::vector<std::string> more = parentPaths(parent);
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

} // namespace hdnt::author
