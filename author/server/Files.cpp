#include "author/lint/Statements.internal.h"
#include "author/server/Files.internal.h"
#include "author/server/Workspace.internal.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/platform/HEX.h"

#include <exception>
#include <system_error>

namespace hdnt::author::server {

const Document* Files::at(const std::string& path) {
    std::error_code error;
    const std::filesystem::directory_entry file(path, error);
    if (error || !file.is_regular_file(error)) return nullptr;
    const std::uintmax_t size = file.file_size(error);
    const auto time = file.last_write_time(error);
    if (error) return nullptr;
    std::unique_ptr<Entry>& entry = entries_[path];
    const bool isKnown = entry && entry->size == size && entry->time == time;
    if (!entry) entry = std::make_unique<Entry>();
    entry->request = request_;
    if (isKnown) return &entry->document;
    entry->size = size;
    entry->time = time;
    try {
        entry->document.read(textOfFile(path, {}));
    } catch (const HEXDataException&) {
        entry->document.read({});
    }
    return &entry->document;
}

void Files::newRequest() {
    constexpr std::size_t many = 500;
    if (++request_ % many != 0) return;
    std::erase_if(entries_, [&](const auto& one) { return one.second->request + many < request_; });
}

const std::vector<std::string>& Files::common() {
    if (knowsCommon_) return common_;
    knowsCommon_ = true;
    try {
        for (const std::string& path : {HDNTLibraryMgr::getDataFileName(false), HDNTLibraryMgr::getTestDataFileName()})
            for (std::string& file : textsAt(path)) common_.push_back(std::move(file));
    } catch (const std::exception&) { // not installed, or not configured: nothing is known of it
    }
    return common_;
}

} // namespace hdnt::author::server
