#pragma once

#include "hdnt/platform/HATAttrSpec.h"

#include <bit>
#include <cfloat>
#include <climits>
#include <vector>

/// The facets of a specification that is being made, put together before they are packed: a setter of HATAttrSpec moves
/// what stands behind its facet, which a loader of many thousands of properties should not do facet by facet. Internal.
///
/// Each facet is set at most once after begin(), in any order, and all listed values belong to one facet; unset ones
/// are as in a fresh HATAttrSpec. A draft can be used again and keeps its room.
class HDNT_LOCAL HATAttrSpec::Draft {
public:
    Draft() = default;
    Draft(const Draft&) = delete;
    ~Draft() { clear(); }

    /// For another attribute: forgets what was set for one that was never given it.
    void begin() noexcept {
        if (isBegun_) clear();
        isBegun_ = true;
    }

    void setDescription(std::string_view text) { description_ = HATOwnText(text); }
    void setUnit(std::string_view unit) {
        putText(UnitDefault, unit);
        unit_ = HSTUniqString(unit);
    }
    void setBitWidth(int bits) { width_ = bits; }
    void setPrecision(int digits) { precision_ = digits; }

    void setRange(int low, int high) { put(IntRange, pack(low, high), pack(INT_MIN, INT_MAX)); }
    void setDefault(int value) { put(IntDefault, pack(value, 0), 0); }
    void list(int value) { append(IntList, pack(value, 0)); }
    void setRange(double low, double high) {
        put(DoubleLow, bitsOf(low), bitsOf(-DBL_MAX));
        put(DoubleHigh, bitsOf(high), bitsOf(DBL_MAX));
    }
    void setDefault(double value) { put(DoubleDefault, bitsOf(value), bitsOf(0.0)); }
    void list(double value) { append(DoubleList, bitsOf(value)); }

    // For string, hex or binary; a string has no range.
    void setTextRange(HATAttrTypes::AttrType type, std::string_view low, std::string_view high) {
        const bool hex = type == HATAttrTypes::TypeBitHex;
        putText(hex ? HexLow : BinaryLow, low);
        putText(hex ? HexHigh : BinaryHigh, high);
    }
    void setTextDefault(HATAttrTypes::AttrType type, std::string_view value) {
        putText(ofType(type, StringDefault, HexDefault, BinaryDefault), value);
    }
    void listText(HATAttrTypes::AttrType type, std::string_view value) {
        HSTUniqString text(value);
        append(ofType(type, StringList, HexList, BinaryList), bitsOf(text.id()));
        text.detach();
    }

    /// Sets the facets of a specification that has none so far, and is empty again. Throws std::bad_alloc.
    void giveTo(HATAttrSpec& spec);

private:
    void clear() noexcept;
    static std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }
    static std::uint64_t bitsOf(const void* token) { return reinterpret_cast<std::uintptr_t>(token); }
    static Facet ofType(HATAttrTypes::AttrType type, Facet string, Facet hex, Facet binary) {
        return type == HATAttrTypes::TypeString ? string : type == HATAttrTypes::TypeBitHex ? hex : binary;
    }

    void put(Facet facet, std::uint64_t value, std::uint64_t absent) {
        if (value == absent) return;
        slots_[facet] = value;
        present_ |= 1U << facet;
    }
    void putText(Facet facet, std::string_view text) {
        if (!text.empty()) put(facet, bitsOf(HSTUniqString(text).detach()), 0);
    }
    void append(Facet list, std::uint64_t value) {
        items_.push_back(value);
        list_ = list;
    }

    std::uint64_t slots_[FirstList] = {};
    std::vector<std::uint64_t> items_; ///< of the facet list_
    Facet list_ = NumFacets;
    HSTUniqString unit_;
    HATOwnText description_;
    int width_ = 0;
    int precision_ = DefaultPrecision;
    std::uint32_t present_ = 0;
    bool isBegun_ = false;
};
