#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace hdnt::author::guide {

/// A folder that is written anew and takes the place of an older one as a whole, so that whoever looks finds one of
/// them. It bears a list of what is in it, by which the next writing knows its own.
class GuideFolder {
public:
    /// Throws HEXDataException when the folder is there and holds anything that no guide wrote, or that was changed
    /// since; when the working directory is in it; or when nothing can be written beside it.
    explicit GuideFolder(const std::string& path);
    /// Takes away what was not finished.
    ~GuideFolder();
    GuideFolder(const GuideFolder&) = delete;
    GuideFolder& operator=(const GuideFolder&) = delete;

    /// A file by its name below the folder, with "/". Throws HEXDataException.
    void write(const std::string& name, std::string_view bytes);
    /// Puts the folder in its place. Throws HEXDataException; the older one is still there, then.
    void finish();
    /// Takes away what was replaced; says why it could not, and is empty otherwise.
    std::string removeOlder();

private:
    std::string path_;
    std::string draft_; ///< where it is written; when finished, what was replaced
    std::map<std::string, std::uint64_t> written_;
};

} // namespace hdnt::author::guide
