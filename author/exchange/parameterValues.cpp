#include "author/exchange/BlockWords.h"
#include "author/exchange/hdlValues.internal.h"
#include "author/exchange/parameterValues.internal.h"
#include "author/exchange/yosysOutput.internal.h"
#include "hdnt/platform/HUTConvert.h"

#include <bitset>
#include <limits>

namespace hdnt::author {

namespace {

using Kind = ModuleParameter::Kind;
using words::cell;

constexpr int intBits = std::numeric_limits<int>::digits + 1;

bool isText(const Json& property) { return property["type"] == "string"; }
bool isReal(const Json& property) { return property["type"] == "double"; }

std::string withoutZeros(const std::string& bits) {
    const std::size_t first = bits.find_first_not_of('0');
    return first == bits.npos ? "" : bits.substr(first);
}

// Texts are bits where a range is declared for them.
std::string bitsIn(const std::string& text) {
    std::string bits;
    for (const char c : text) bits += std::bitset<8>(static_cast<unsigned char>(c)).to_string();
    return bits;
}

bool isNumber(const std::string& bits, int number) {
    const std::string wanted = std::bitset<intBits>(static_cast<unsigned>(number)).to_string();
    if (number >= 0) return withoutZeros(bits) == withoutZeros(wanted);
    return bits.size() >= wanted.size() && std::string(bits.size() - wanted.size(), '1') + wanted == bits;
}

} // namespace

std::string kindOf(const Json& property) {
    return isText(property) ? "a text" : isReal(property) ? "a real number" : "a number of bits";
}

std::string kindOf(const ModuleParameter& parameter) {
    return parameter.kind == Kind::Text   ? "a text"
           : parameter.kind == Kind::Real ? "a real number"
                                          : "a number of bits";
}

bool canHold(const ModuleParameter& parameter, const Json& property) {
    if (parameter.kind == Kind::Real) return isReal(property);
    if (parameter.kind == Kind::Text) return isText(property) || (parameter.isDeclared && !isReal(property));
    if (isText(property)) return parameter.isDeclared && !parameter.isInteger;
    return !isReal(property) || (parameter.isInteger && !parameter.isDeclared);
}

int bitsOf(const Json& property) {
    if (isText(property) || isReal(property)) return 0;
    if (!property["bitWidth"].is_null()) return property["bitWidth"];
    return property["type"] == "bool" ? 1 : intBits;
}

int bitsOf(const ModuleParameter& parameter) {
    const bool isOpen = parameter.isInteger && !parameter.isDeclared;
    return parameter.kind != Kind::Bits || isOpen ? 0 : static_cast<int>(parameter.value.size());
}

std::optional<int> wordIn(const ModuleParameter& parameter) {
    const bool isWord =
        parameter.value.size() == intBits && parameter.value.find_first_not_of("01") == std::string::npos;
    if (parameter.kind != Kind::Bits || !isWord) return std::nullopt;
    return static_cast<int>(std::bitset<intBits>(parameter.value).to_ulong());
}

bool hasDefaultOf(const Json& property, const ModuleParameter& parameter) {
    const Json& value = listedDefault(property);
    if (isReal(property)) {
        if (parameter.kind != Kind::Real) return wordIn(parameter) && *wordIn(parameter) == value.get<double>();
        const double wanted = value, found = parameter.real;
        return parameter.isExact ? wanted == found : realDigits(wanted) == realDigits(found);
    }
    if (parameter.kind == Kind::Text && isText(property)) return parameter.value == cell(value);
    const std::string bits = parameter.kind == Kind::Text ? bitsIn(parameter.value) : parameter.value;
    if (isText(property)) return withoutZeros(bits) == withoutZeros(bitsIn(cell(value)));
    if (value.is_boolean()) return isNumber(bits, value.get<bool>() ? 1 : 0);
    if (value.is_number()) return isNumber(bits, value);
    std::string wanted = cell(property["defaultDigits"]);
    if (property["type"] == "bithex") HUTConvert::hexToBinary(wanted, wanted, 4 * static_cast<int>(wanted.size()));
    return withoutZeros(bits) == withoutZeros(wanted);
}

std::string defaultText(const ModuleParameter& parameter, const Json& property) {
    if (parameter.kind == Kind::Text) return verilogString(parameter.value);
    if (parameter.kind == Kind::Real) return verilogPlain(parameter.real);
    const std::optional<int> number = wordIn(parameter);
    if (number && (parameter.isInteger || cell(property["type"]) == "int")) return std::to_string(*number);
    const std::string width = std::to_string(parameter.value.size());
    if (parameter.value.find_first_not_of("01") != std::string::npos || parameter.value.size() < 4)
        return width + "'b" + parameter.value;
    std::string digits;
    HUTConvert::binaryToHex(parameter.value, digits, static_cast<int>(parameter.value.size()));
    return width + "'h" + digits;
}

} // namespace hdnt::author
