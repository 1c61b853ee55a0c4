#include "hdnt/model/HDNTNode.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/model/ManagerState.internal.h"
#include "hdnt/model/RangedName.internal.h"
#include "hdnt/platform/SlabMemory.internal.h"
#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>

using hdnt::model::RangedName;
using hdnt::model::rangedName;
using hdnt::platform::hasByte;
using hdnt::platform::TextEnds;

namespace {

constexpr bool isPlainPart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Reads decimal digits at p; false when there is none. Numbers past the range of int stand for its greatest value,
// which is more than any range or bit may be.
bool readBound(const char*& p, const char* end, int& bound) {
    if (p == end || *p < '0' || *p > '9') return false;
    const std::from_chars_result result = std::from_chars(p, end, bound);
    if (result.ec == std::errc::result_out_of_range) bound = std::numeric_limits<int>::max();
    p = result.ptr;
    return true;
}

long elementsOf(int first, int last) { return std::labs(static_cast<long>(first) - last) + 1; }

// What is wrong with a well-formed range; empty when nothing is.
std::string faultOf(const std::string& name, int first, int last) {
    if (hdnt::model::isWithinLimit(first, last)) return {};
    return hdnt::filledIn(
        hdnt::ruleOf(hdnt::DiagnosticCode::rangeElements).wording,
        {name, std::to_string(elementsOf(first, last)), std::to_string(HDNTLimits::get().rangeElements)});
}

void appendElements(const std::string& baseName, int first, int last, std::vector<std::string>& names,
                    std::vector<int>& indices) {
    const long step = first > last ? -1 : 1;
    for (long i = first; i != last + step; i += step) {
        names.push_back(baseName);
        indices.push_back(static_cast<int>(i));
    }
}

} // namespace

std::optional<RangedName> hdnt::model::rangedName(std::string_view name) {
    const char* p = name.data();
    const char* const end = p + name.size();
    while (p != end && isPlainPart(*p)) ++p;
    RangedName out = {name.substr(0, static_cast<size_t>(p - name.data())), 0, 0};
    if (out.base.empty() || p == end || *p++ != '[') return std::nullopt;
    if (!readBound(p, end, out.first)) return std::nullopt;
    out.second = out.first;
    if (p != end && *p == ':' && !readBound(++p, end, out.second)) return std::nullopt;
    return p != end && *p == ']' && p + 1 == end ? std::optional(out) : std::nullopt;
}

bool hdnt::model::isWithinLimit(int first, int last) {
    return elementsOf(first, last) <= HDNTLimits::get().rangeElements;
}

void* HDNTNode::operator new(std::size_t size) { return hdnt::platform::allocateObject(size); }
void HDNTNode::operator delete(void* object, std::size_t size) noexcept { hdnt::platform::freeObject(object, size); }
void* HDNTNode::operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return hdnt::platform::allocateObject(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void HDNTNode::operator delete(void* object, const std::nothrow_t&) noexcept { hdnt::platform::freeObject(object); }

HDNTNode::~HDNTNode() {
    if (watched_) tellOfDeath();
}
void HDNTNode::check() {}
void HDNTNode::finalize() {}

bool HDNTNode::isMultipleInstances(const std::string& name) const {
    const auto isBracket = [](char c) { return c == '[' || c == ']'; };
    if (name.size() > TextEnds::most) return std::any_of(name.begin(), name.end(), isBracket);
    const TextEnds ends(name);
    const auto isIn = [&](char c) { return hasByte(ends.first, c) || hasByte(ends.last, c); };
    return isIn('[') || isIn(']');
}

bool HDNTNode::checkValidMultipleInstFormat(const std::string& name, std::string& baseName, int& first,
                                            int& second) const {
    const std::optional<RangedName> range = rangedName(name);
    if (!range) {
        HDNTError::InvalidArrayFormatName(getLocation(), name.c_str());
        return false;
    }
    baseName.assign(range->base);
    first = range->first;
    second = range->second;
    return true;
}

void HDNTNode::checkNames(const std::string& name, bool allowArrayFormat) const {
    if (!hdnt::model::judgesNames()) return;
    if (name.empty()) {
        HDNTError::NameCannotBeEmptyString(getLocation());
    } else if (isPlainName(name)) {
        return;
    } else if (!isMultipleInstances(name)) {
        HDNTError::InvalidName(getLocation(), name.c_str());
    } else if (!allowArrayFormat) {
        HDNTError::ArrayFormatDisallowed(getLocation(), name.c_str());
    } else {
        std::string baseName;
        int first = 0;
        int second = 0;
        checkValidMultipleInstFormat(name, baseName, first, second);
    }
}

bool HDNTNode::isPlainName(const std::string& name) {
    static constexpr auto isPart = [] {
        std::array<bool, 256> table{};
        for (unsigned c = 0; c < table.size(); ++c) table[c] = c == '@' || isPlainPart(static_cast<char>(c));
        return table;
    }();
    bool isPlain = !name.empty();
    for (const char c : name) isPlain &= isPart[static_cast<unsigned char>(c)]; // few are not: no need to leave early
    return isPlain;
}

bool HDNTNode::rangeOf(const std::string& name, std::string& baseName, int& first, int& last) const {
    if (!checkValidMultipleInstFormat(name, baseName, first, last)) return false;
    const std::string fault = faultOf(name, first, last);
    if (!fault.empty()) HDNTError::report({getLocation(), fault, {}, hdnt::DiagnosticCode::rangeElements});
    return fault.empty();
}

void HDNTNode::expandRangedNameNames(const std::string& name, std::vector<std::string>& names,
                                     std::vector<int>& indices) const {
    if (!isMultipleInstances(name)) {
        names.push_back(name);
        return;
    }
    std::string baseName;
    int first = 0;
    int last = 0;
    if (rangeOf(name, baseName, first, last)) appendElements(baseName, first, last, names, indices);
}

std::string HDNTNode::unfoldRangedName(const std::string& name, std::vector<std::string>& names,
                                       std::vector<int>& indices) const {
    if (!isMultipleInstances(name)) {
        names.push_back(name);
        return {};
    }
    const std::optional<RangedName> range = rangedName(name);
    if (!range)
        return "\"" + name +
               "\" is no name: with brackets it is letters, digits and \"_\" before one bit or a range, " +
               "as in D[3] or D[3:0].";
    std::string fault = faultOf(name, range->first, range->second);
    if (fault.empty()) appendElements(std::string(range->base), range->first, range->second, names, indices);
    return fault;
}

void HDNTNode::expandRangedNameVector(const std::vector<std::string>* inNames, std::vector<std::string>& names,
                                      std::vector<int>& indices) const {
    if (!inNames) return;
    for (const std::string& name : *inNames) expandRangedNameNames(name, names, indices);
}
