// How a library gets its contents from text: the parse entries of HDNTLibrary.
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/MaplibFilter.h"
#include "hdnt/frontend/ParserState.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/frontend/SourceInput.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/platform/HUTFile.h"

#include <cstdlib>
#include <cstring>

using namespace hdnt::frontend;

HDNTLibrary* myTopLib = nullptr;

void NtlInitParser() { HDNTParserdebug = std::getenv("NTL_YY_DEBUG") != nullptr; }

void HDNTLibrary::enterParser() {
    myTopLib = this;
    NtlInitParser();
}

void HDNTLibrary::leaveParser() noexcept {
    if (myTopLib == this) myTopLib = nullptr;
    std::free(ntl_parse_top_level_file);
    ntl_parse_top_level_file = nullptr;
}

static void setTopLevelFile(const char* name) {
    std::free(ntl_parse_top_level_file);
    ntl_parse_top_level_file = name ? strdup(name) : nullptr;
}

// Scanner and session are left clean however the parse ends.
static int parseText(HDNTLibrary* caller, std::shared_ptr<SourceText> text) {
    if (!myTopLib) myTopLib = caller;
    Scanner& scanner = Scanner::instance();
    ParserState& session = ParserState::instance();
    struct ScanGuard {
        Scanner& scanner;
        ~ScanGuard() { scanner.endText(); }
    };
    scanner.beginText(std::move(text));
    const ScanGuard guard{scanner};
    scanner.init();
    session.begin();
    const int result = HDNTParserparse();
    session.finish();
    return result;
}

int HDNTLibrary::parseFile(const std::string& path) {
    auto text = std::make_shared<SourceText>();
    std::string reason;
    if (!readSource(path, text->bytes, reason)) {
        HDNTError::BadFileName(path, reason);
        return 1;
    }
    setTopLevelFile(path.c_str());
    return parseText(this, std::move(text));
}

int HDNTLibrary::parseString(const std::string& text) {
    setTopLevelFile(nullptr);
    auto source = std::make_shared<SourceText>();
    copySource(text, source->bytes);
    return parseText(this, std::move(source));
}

bool HDNTLibrary::usesMapLibraries() {
    static const bool enabled = HPAParamMgr::getParamMgr()->getValueAsBool("ntl.enableMapLib");
    return enabled;
}

bool HDNTLibrary::loadMaplib(const std::string& name, const std::string& arch) {
    if (!usesMapLibraries() || name.empty() || name.find('/') != std::string::npos) return false;
    const std::string directory = ConfigBase::getDataLocation("maplib");
    if (directory.empty()) return false;
    const std::string path = HUTPathUtils::replaceExtension(HUTPathUtils::join(directory, name), "btl");
    std::string reason;
    if (!HUTPathUtils::exists(path) || !isInsideRoot(path, reason)) return false;
    NtlFreeScannerMem();
    myTopLib = this;
    std::string text;
    const bool architectures = slurpAndFilterFile(path, arch, text);
    if (parseString(text) != 0) throw HEXDataException("Invalid maplib ntl file: " + name);
    return architectures;
}
