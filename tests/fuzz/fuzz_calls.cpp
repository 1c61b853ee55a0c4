// Calls of the C++ interface in any order, with any arguments, on whatever is alive: each answers or throws what its
// contract names.
#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/netlist/HDNTVisitor.h"
#include "hdnt/platform/HEX.h"
#include "tests/fuzz/quiet.h"
#include "tests/support/Written.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using fuzz::require;

namespace {

const char* const texts[] = {
    R"(library "l" { function int intProperty(string);
block "OWN" { primgroup = "A:B"; pin "D[3:0]" input data { property int "LOAD" { default = 2 } } pin "Q" output;
  property int "N" { min = 0, max = 9, default = 3 } property 4'h "H" { default = 4'hA }
  property string "S" { values { "ONE", "TWO" }, default = "ONE" } property double "R" { default = 1.5 } }
mapsto { inst "u" "TWO"; connect "Q" : "u" "Q"; assign block property "u" "N" 1 + 2 * intProperty("N");
  if (intProperty("N") > 2) { inst "v" "TWO"; } else { signal "s" : "D[0]", "v" "D"; } }
block "TWO" { pin "D" input; pin "Q" output; property int "N" { default = 1 } } })",
    R"(library "over" { block "OWN" mapsto { inst "w" "THREE"; } block "THREE" { pin "O[0:7]" output; } })",
    R"(library "loop" { block "A" { } mapsto { inst "b" "B"; } block "B" { } mapsto { inst "a" "A"; } })",
    R"(library "wrong" { block "A" { pin "D[1:0]" input; pin "D[1]" output; property int "N" { min = 9, max = 0 } })",
};

/// Takes arguments from the input; zeros and empty texts behind its end.
class Arguments {
public:
    Arguments(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}
    bool isEmpty() const { return rest_.empty(); }
    std::size_t byte() { return static_cast<unsigned char>(take(1).front()); }
    int number() {
        constexpr std::array<int, 8> odd = {0, 1, -1, 31, 32, 64, 2147483647, -2147483647 - 1};
        const std::size_t which = byte();
        return which < odd.size() ? odd[which] : static_cast<int>(which);
    }
    std::string text() {
        static const char* const known[] = {"OWN", "TWO", "THREE", "D",   "D[3:0]", "D[0]",
                                            "N",   "H",   "S",     "A:B", "own",    ""};
        const std::size_t which = byte();
        if (which < std::size(known)) return known[which];
        return take(which % 32).substr(0, which % 32);
    }

private:
    std::string take(std::size_t count) {
        std::string taken(rest_.substr(0, count));
        rest_.remove_prefix(taken.size());
        taken.resize(std::max<std::size_t>(count, 1));
        return taken;
    }
    std::string_view rest_;
};

/// Libraries over each other, the last one on top, and what is looked at in one of them.
class Desk {
public:
    ~Desk() {
        while (!libraries_.empty()) libraries_.pop_back();
    }

    void call(Arguments& next) {
        const std::size_t which = next.byte() % 4;
        if (libraries_.empty() || which == 0) return change(next);
        HDNTLibrary& library = *libraries_[next.byte() % libraries_.size()];
        if (which == 1) return ofLibrary(library, next);
        const std::size_t count = library.getNumTypeBlocks(true);
        if (count == 0) return;
        HDNTBlock& block = *library.getTypeBlock(next.byte() % count);
        if (which == 2) return ofBlock(block, next);
        if (block.getNumProperties() > 0) ofProperty(*block.getProperty(next.byte() % block.getNumProperties()), next);
    }

private:
    void change(Arguments& next) {
        switch (next.byte() % 4) {
        case 0:
            if (!libraries_.empty()) libraries_.pop_back();
            break;
        case 1:
            if (!libraries_.empty()) libraries_.back()->parseString(next.text());
            break;
        default:
            if (libraries_.size() == 5) break;
            static HDNTLibrary root(nullptr);
            libraries_.push_back(std::make_unique<HDNTLibrary>(libraries_.empty() ? &root : libraries_.back().get()));
            libraries_.back()->parseString(texts[next.byte() % std::size(texts)]);
        }
    }

    void ofLibrary(HDNTLibrary& library, Arguments& next) {
        HDNTVisitor visitor;
        std::vector<HDNTBlock*> found;
        switch (next.byte() % 12) {
        case 0: return library.finalize();
        case 1: return library.check();
        case 2: return library.accept(visitor);
        case 3: return library.acceptOwn(visitor);
        case 4: return void(support::printed(library));
        case 5: return void(support::source(library));
        case 6: return void(library.loadMaplib(next.text(), next.text()));
        case 7: return void(library.getTypeBlocksBeginWith(next.text(), found, next.byte() % 2 == 0));
        case 8: return void(library.getTypeBlockByName(next.text(), next.byte() % 2 == 0));
        case 9: return void(library.getPrimGroupType(next.text(), next.byte() % 2 == 0));
        case 10: return compare(library, *libraries_.back());
        default: return void(library.getDeclaredBlock(next.text()));
        }
    }

    static void compare(const HDNTLibrary& one, const HDNTLibrary& other) {
        const HDNTModelTree a(one), b(other);
        require(HDNTComparison::compare(a, b).empty() == (a.toBytes() == b.toBytes()), "equal or not", a.toBytes());
    }

    static void ofBlock(HDNTBlock& block, Arguments& next) {
        HDNTVisitor visitor;
        std::vector<HDNTPin*> pins;
        switch (next.byte() % 16) {
        case 0: return block.finalize();
        case 1: return block.check();
        case 2: return block.accept(visitor);
        case 3: return block.acceptOwn(visitor);
        case 4: return void(block.getNetlist(next.text()));
        case 5: return void(block.getReferencedInstanceName(next.text()));
        case 6: return void(block.hasPseudoDifferentialExpansion(next.text()));
        case 7: return block.setPrimGroupType(next.text());
        case 8: return block.setLegacyPrimSubGroupType(next.text());
        case 9: return void(block.getPin(next.byte()));
        case 10: return void(block.getBus(next.byte()));
        case 11: return block.getBusPins(next.text(), pins);
        case 12: return void(block.getPinByName(next.text()));
        case 13: return void(block.getBusByName(next.text(), next.byte() % 2 == 0));
        case 14: return block.setNetlist(nullptr);
        default: return expand(block, next);
        }
    }

    static void expand(HDNTBlock& block, Arguments& next) {
        HDNTExpansion expansion(block);
        std::string reason;
        for (std::size_t count = next.byte() % 4; count > 0; --count) {
            const std::string name = next.text();
            const bool known = block.findProperty(name) != nullptr;
            require(expansion.setPropertyText(name, next.text(), reason) <= known, "set what is not there", name);
            expansion.connect(next.text(), reason);
        }
        expansion.expand(next.byte() % 2 == 0);
    }

    static void ofProperty(HDNTProperty& property, Arguments& next) {
        std::string reason;
        switch (next.byte() % 12) {
        case 0: return property.finalize();
        case 1: return property.check();
        case 2: return property.setBitWidth(std::min(next.number(), 1 << 20)); // who asks for gigabytes gets them
        case 3: return property.setPrecision(next.number());
        case 4: return void(property.isValidValue(next.number(), reason));
        case 5: return void(property.isValidValue(next.text(), reason));
        case 6: return void(property.isValidValue(1.0 / next.number(), reason));
        case 7: return void(property.formatValue(next.text(), next.byte() % 2 == 0));
        case 8: return void(property.formatValue(next.text(), 'b', 'h', "%d'%c%s"));
        case 9: return void(property.getDefaultValue()), void(property.getAllowedValues());
        case 10: return void(property.getMinHexValue()), void(property.getAllowedIntValues());
        default: return property.describe(next.text());
        }
    }

    std::vector<std::unique_ptr<HDNTLibrary>> libraries_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isQuiet = (fuzz::beQuiet(), true);
    (void)isQuiet;
    HDNTError::numErrors = 0;
    NtlFreeScannerMem();
    Desk desk;
    for (Arguments next(data, size); !next.isEmpty();) {
        try {
            desk.call(next);
        } catch (const HEXAll&) {
        }
    }
    return 0;
}
