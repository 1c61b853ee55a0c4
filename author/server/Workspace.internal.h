#pragma once

#include <string>
#include <vector>

namespace hdnt::author::server {

/// The path of a "file:" URI, with "." and ".." taken out; empty for another one.
std::string pathOf(const std::string& uri);
/// Of an absolute path.
std::string uriOf(const std::string& path);

/// What a text belongs to: the folder of a .btl file is a library, of all the .btl files in it. A file that is read by
/// INCLUDE has the library of its folder, too, or else that of the nearest folder above that has .btl files.
struct LibraryFolder {
    std::string path;               ///< empty: the text belongs to none
    std::vector<std::string> files; ///< its .btl files in the order in which they are loaded
};
LibraryFolder libraryOf(const std::string& path);

/// The texts of a library that is a file or a folder, in the order in which they are loaded.
std::vector<std::string> textsAt(const std::string& path);

} // namespace hdnt::author::server
