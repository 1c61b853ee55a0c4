#pragma once

#include <string>

class HDNTLibrary;

namespace CommonPart {
struct PartSpec;
}

// What blocks and mappings ask of the library manager, which stands above them: declared here, defined in loading/.
namespace hdnt::model {

/// HDNTLibraryMgr::m_diagnostics: whether declared names are judged.
bool judgesNames();
/// The host's current part; may be null.
const CommonPart::PartSpec* currentPart();
const std::string& currentArchitecture();
/// The host's number for it.
unsigned short architectureNumber();
/// Loads it when nobody has so far, and throws what that throws.
HDNTLibrary* commonLibrary();
/// Null when nobody has loaded it so far.
HDNTLibrary* loadedCommonLibrary();

} // namespace hdnt::model
