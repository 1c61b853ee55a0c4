#pragma once

/// The types an attribute may have. The numbers are part of the interface; the gaps are types no library text can name.
struct HATAttrTypes {
    enum AttrType : int {
        TypeBool = 0,
        TypeInt = 1,
        TypeDouble = 2,
        TypeString = 3,
        TypeBitHex = 7,
        TypeBitBinary = 8,
    };
    /// Whether values are texts of digits, hexadecimal or binary.
    static constexpr bool isBitVector(AttrType type) { return type == TypeBitHex || type == TypeBitBinary; }
};

/// Where an attribute's value may come from. The host gives the codes their meaning; here they are numbers 0 to 31.
struct HATSrcInfo {
    enum HATSrcType : int {};
    static constexpr int NumSourceTypes = 32;
};
