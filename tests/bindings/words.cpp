// Every word that the library answers with where there are few, a kind a line.
#include "hdnt/netlist/Words.h"

#include "hdnt/compare/HDNTComparison.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace {

template <typename Table>
void print(const char* kind, const Table& table) {
    std::printf("%s", kind);
    for (const auto& entry : table) std::printf("\t%s", entry.word.data());
    std::printf("\n");
}

// The words of the numbers from 0 on, up to one that has none.
template <typename Enum>
void printNames(const char* kind) {
    std::printf("%s", kind);
    for (int number = 0;; ++number) {
        const std::string text = HDNTComparison::nameOf(static_cast<Enum>(number));
        if (text.empty() || text == "unknown") break;
        std::printf("\t%s", text.c_str());
    }
    std::printf("\n");
}

} // namespace

int main() {
    using namespace hdnt;
    print("PinType", words::pinTypes);
    print("Direction", words::pinDirections);
    print("Required", words::requiredValues);
    print("Maturity", words::maturityLevels);
    print("ValueType", words::propertyTypes);
    print("Section", words::sections);
    print("Operator", words::operators);
    printNames<HDNTDifference::Effect>("Effect");
    printNames<HDNTDifference::Change>("Change");
    printNames<HDNTElementKind>("Element");
    printNames<HDNTElementFacet>("Facet");
}
