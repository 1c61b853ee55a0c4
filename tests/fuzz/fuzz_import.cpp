// Any bytes as JSON give NTL that reads back, or a reason. Any NTL that gives a library comes back from JSON as an
// equal one, or with what was left out.
#include "author/exchange/importBlocks.h"
#include "author/syntax/SyntaxTree.h"
#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "tests/fuzz/quiet.h"
#include "tests/support/MemoryFile.h"

#include <cstdint>
#include <string>

namespace {

using namespace hdnt::author;

using fuzz::require;

/// Once a process: a root library, so that the configuration is not read in every run.
HDNTLibrary* prepare() {
    fuzz::beQuiet();
    static HDNTLibrary root(nullptr);
    return &root;
}

Imported imported(std::string_view document) {
    const support::MemoryFile file(document);
    Imported result = importBlocks("json", {file.path()});
    SyntaxTree tree;
    require(tree.read(result.text) && tree.messages().empty(), "written so that it does not read back", result.text);
    return result;
}

void goRound(const std::string& text, HDNTLibrary* root) {
    HDNTLibrary library(root);
    if (library.parseString(text) != 0) return;
    library.finalize();
    const Exported exported = exportBlocks(library, "json");
    const Imported back = imported(exported.files.front().text);
    if (!exported.leftOut.empty()) return;
    require(back.leftOut.empty(), "not taken back", exported.files.front().text);
    HDNTLibrary again(root);
    require(again.parseString(back.text) == 0, "does not read back", back.text);
    again.finalize();
    require(HDNTComparison::compare(library, again).empty(), "another library", back.text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static HDNTLibrary* const root = prepare();
    HDNTError::numErrors = 0;
    NtlFreeScannerMem();
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        if (text.starts_with('{')) imported(text);
        else goRound(text, root);
    } catch (const HEXDataException& error) {
        require(error.what() != std::string(), "refused without a word", text);
    }
    return 0;
}
