// Every word that the library answers with where there are few, a kind a line.
#include "bindings/shared/Words.h"

#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/HEX.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace {

// The words of the numbers from 0 on, up to one that has none; property types leave some out.
template <typename Word>
void print(const char* kind, Word&& word, int least = 0) {
    std::printf("%s", kind);
    for (int number = 0;; ++number) {
        std::string text;
        try {
            text = word(number);
        } catch (const HEXAll&) {
        } catch (const std::out_of_range&) {
        }
        if (!text.empty() && text != "unknown") std::printf("\t%s", text.c_str());
        else if (number >= least) break;
    }
    std::printf("\n");
}

template <typename Enum>
std::string compared(int number) {
    return HDNTComparison::nameOf(static_cast<Enum>(number));
}

} // namespace

int main() {
    using namespace hdnt::scripts;
    print("PinType", [](int i) { return HDNTPin::getTypeName(static_cast<HDNT_PIN_TYPE>(i)); });
    // Past the last one the library answers with it again.
    print("Direction", [](int i) {
        return i > HDNT_PIN_INTERNAL ? "" : HDNTPin::getDirectionName(static_cast<HDNT_PIN_DIRECTION>(i));
    });
    print(
        "Required",
        [](int i) {
            const char* const word = requiredWord(static_cast<HDNT_PIN_REQUIREDVALUE>(i));
            return std::string(word ? word : "");
        },
        1);
    print("Maturity", [](int i) { return std::string(maturityWord(i)); });
    print(
        "ValueType", [](int i) { return HDNTProperty::getTypeName(static_cast<HATAttrTypes::AttrType>(i)); },
        HATAttrTypes::TypeBitBinary);
    print("Section", [](int i) { return std::string(sectionWord(static_cast<HDNTNetlist::Section>(i))); });
    print("Operator", [](int i) { return std::string(operatorWord(static_cast<HDNTExpr::FOPERATOR>(i))); });
    print("Effect", compared<HDNTDifference::Effect>);
    print("Change", compared<HDNTDifference::Change>);
    print("Element", compared<HDNTElementKind>);
    print("Facet", compared<HDNTElementFacet>);
}
