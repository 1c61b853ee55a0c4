#pragma once

#include "author/exchange/BlockJson.h"

#include <memory>
#include <string>

namespace hdnt::author::guide {

/// The guide's templates: Mustache, files "guide/NAME.mustache" of the data directories, where "guide/NAME" of other
/// files is found, too. Each can be a part of another, by its name.
class Templates {
public:
    /// Throws HEXDataException when a file is missing or is no template.
    Templates();
    ~Templates();
    Templates(const Templates&) = delete;
    Templates& operator=(const Templates&) = delete;

    /// Null, false, and empty texts and lists are nothing to a section. Texts are escaped for HTML between two braces,
    /// with what is not printable but for line breaks and tabs as platform::printable has it, and stay as they are
    /// between three.
    std::string render(const std::string& name, const Json& page);

private:
    struct Parsed;
    std::unique_ptr<Parsed> parsed_;
};

/// The text of a file "guide/NAME" of the data directories. Throws HEXDataException when there is none.
std::string guideFile(const std::string& name);

} // namespace hdnt::author::guide
