// Any bytes as a model tree are refused, or make a tree that gives the same bytes again and can be compared.
#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "tests/fuzz/quiet.h"

#include <cstdint>
#include <string>

using fuzz::require;

static HDNTModelTree other() {
    fuzz::beQuiet();
    HDNTLibrary library(nullptr);
    library.parseString("library \"l\" { block \"OWN\" { pin \"D[1:0]\" input; property int \"N\" { default = 1 } } "
                        "mapsto { inst \"u\" \"OWN\"; if (1 < 2) { assign block property \"u\" \"N\" 2; } } }");
    library.finalize();
    return HDNTModelTree(library);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const HDNTModelTree known = other();
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    try {
        const HDNTModelTree tree = HDNTModelTree::fromBytes(bytes);
        require(tree.toBytes() == bytes, "other bytes", bytes);
        require(HDNTComparison::compare(tree, tree).empty(), "differs from itself", bytes);
        HDNTComparison::compare(tree, known);
        HDNTComparison::compare(known, tree);
    } catch (const HEXDataException& error) {
        require(error.what() == std::string("Not a model tree"), "refused in other words", bytes);
    }
    return 0;
}
