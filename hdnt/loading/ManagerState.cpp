#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/ManagerState.internal.h"

namespace hdnt::model {

bool judgesNames() { return HDNTLibraryMgr::m_diagnostics; }
const CommonPart::PartSpec* currentPart() { return HDNTLibraryMgr::getLibraryMgr()->m_partSpec; }
const std::string& currentArchitecture() { return HDNTLibraryMgr::getLibraryMgr()->m_architecture; }
unsigned short architectureNumber() { return HDNTLibraryMgr::m_archEnumInfo; }
HDNTLibrary* commonLibrary() { return HDNTLibraryMgr::getCommonLibrary(); }
HDNTLibrary* loadedCommonLibrary() { return HDNTLibraryMgr::getLoadedCommonLibrary(); }

} // namespace hdnt::model
