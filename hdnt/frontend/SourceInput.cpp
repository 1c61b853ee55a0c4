#include "hdnt/frontend/SourceInput.h"

#include "hdnt/frontend/HDNTLimits.h"
#include "hdnt/platform/InputFile.h"

#include <algorithm>
#include <filesystem>

namespace hdnt::frontend {

bool readSource(const std::string& path, std::string& out, std::string& reason) {
    const HDNTLimits& limits = HDNTLimits::get();
    return platform::readInput(path, {limits.inputBytes, limits.expansionRatio, limits.expansionFloor}, out, reason);
}

bool isInsideRoot(const std::string& path, std::string& reason) {
    namespace fs = std::filesystem;
    const std::string& rootFolder = HDNTLimits::get().rootFolder;
    if (rootFolder.empty()) return true;
    std::error_code error;
    const fs::path root = fs::canonical(rootFolder, error);
    const fs::path file = error ? fs::path() : fs::canonical(path, error);
    if (!error && std::mismatch(root.begin(), root.end(), file.begin(), file.end()).first == root.end()) return true;
    reason = "not below the root folder " + rootFolder + " (limit rootFolder)";
    return false;
}

} // namespace hdnt::frontend
