// How a library gets its contents from text: the parse entries of HDNTLibrary.
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/frontend/MaplibFilter.internal.h"
#include "hdnt/frontend/ParserState.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/MappingJournal.internal.h"
#include "hdnt/platform/DataDirectory.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/platform/HUTFile.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

using namespace hdnt::frontend;
using hdnt::diagnostics::copySource;
using hdnt::diagnostics::isInsideRoot;

HDNTLibrary* myTopLib = nullptr;
ParserState ParserState::instance_;

void NtlInitParser() { HDNTParserdebug = std::getenv("NTL_YY_DEBUG") != nullptr; }

void HDNTLibrary::enterParser() {
    myTopLib = this;
    NtlInitParser();
}

static void setTopLevelFile(const char* name) {
    std::free(std::exchange(ntl_parse_top_level_file, nullptr));
    if (name && !(ntl_parse_top_level_file = strdup(name))) throw std::bad_alloc();
}

void HDNTLibrary::leaveParser() noexcept {
    if (myTopLib == this) myTopLib = nullptr;
    setTopLevelFile(nullptr);
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
    if (!Scanner::instance().read(path, *text, reason)) {
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
    const std::string path = hdnt::platform::findData("maplib", HUTPathUtils::replaceExtension(name, "btl"));
    if (path.empty()) return false;
    const auto refuse = [&](const std::string& reason) {
        HDNTError::notify({HDNTNotice::Kind::MapLibraryRefused, {path.c_str(), 0, 0, 0, 0, 0}, path, reason});
    };
    std::string reason;
    if (!isInsideRoot(path, reason)) return refuse(reason), false;
    NtlFreeScannerMem();
    myTopLib = this;
    MapLibrary library;
    if (!readMapLibrary(path, arch, library, reason)) {
        refuse(reason);
        throw HEXAlgException("Failed to open file " + path);
    }
    parseMapLibrary(library, name);
    return library.hasArchitectures;
}

template <typename Decl>
static void cut(std::vector<Decl*>& decls, size_t size) {
    for (size_t i = size; i < decls.size(); ++i) delete decls[i];
    decls.resize(size);
}

// One that fails leaves no trace: mappings are as before, and what it declared and dropped is forgotten. It may fail
// behind the end of its declarations, which the library has by then.
void HDNTLibrary::parseMapLibrary(MapLibrary& text, const std::string& name) {
    struct Before {
        HDNTLibrary& library;
        std::string name = library.name_;
        yyltype location = library.copyOfLocation().value_or(yyltype{});
        size_t blocks = library.blocks_.size();
        size_t functions = library.functions_.size();
        size_t dropped = library.droppedMappings_.size();
        bool failed = true;

        ~Before() {
            Scanner::instance().setFilteredText(0);
            if (!failed) return;
            library.name_ = name;
            library.setLocation(location);
            library.forgetDroppedMappings(dropped);
            cut(library.functions_, functions);
            cut(library.blocks_, blocks);
            library.adopted_.clear();
            for (HDNTBlock* block : library.blocks_)
                if (library.names_.find(block->getName()).block != block) library.adopted_.add(block);
        }
    };
    Before before{*this};
    hdnt::netlist::MappingJournal journal;
    Scanner::instance().setFilteredText(hdnt::diagnostics::FilteredText::keep(std::move(text.origin)));
    if (parseString(text.text) != 0) throw HEXDataException("Invalid maplib ntl file: " + name);
    journal.keep();
    before.failed = false;
}
