#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

namespace hdnt::compare {
class TreeBuilder;
}

/// What an element of a model is. The order is that of the lists of a block and of a mapping.
enum class HDNTElementKind : unsigned char {
    library,
    function, ///< a function declaration
    block,
    pin,      ///< a pin declaration, ranged or not
    property, ///< of a block or of a pin
    mapping,
    preCall, ///< a call before the first instance of a mapping
    instance,
    signal, ///< as declared: a ranged declaration is one
    connect,
    pinAssign,
    blockAssign,
    ifStmt,
    branch,     ///< "then" or "else" of an if statement
    statements, ///< statements in braces
    call,       ///< a call behind the first instance, or among statements
    expression, ///< a bare one among statements
};

/// What is said of an element. The first two are of differences alone: the element as a whole, and the order of the
/// elements of a list.
enum class HDNTElementFacet : unsigned char {
    whole,
    order,
    name, ///< of the element at the top; below it, names are what elements are found by
    type,
    formals,
    test,
    internal,
    maturity,
    group,
    subgroup,
    legacyGroup,
    legacySubgroup,
    direction,
    range,
    requiredValue,
    abstract,
    width,
    minimum,
    maximum,
    values,
    defaultValue,
    precision,
    units,
    simulation,
    constraintsOnly,
    muxControl,
    description,
    section,
    pins,
    value,
    arguments,
    condition,
    disabled,
};

/// A library or a block as plain data: its elements with the texts of what was declared, and nothing that points into
/// the model, so that it outlives the model and can be handed to another process.
///
/// It holds what is content: not where something stands in memory or in the order of loading, nor what the
/// configuration supplied, nor mappings loaded from map libraries. Making one loads nothing.
///
/// A value; any number of threads may read one that none changes.
class HDNT_API HDNTModelTree {
public:
    /// A piece of the tree's text.
    struct Text {
        size_t begin = 0;
        size_t length = 0;
    };
    /// What is not as usual (a flag that is off, no unit) has no facet. Texts from the model are quoted where they may
    /// hold anything; numbers, bit vectors and expressions are not.
    struct Facet {
        HDNTElementFacet facet;
        Text text;
    };
    struct Element {
        HDNTElementKind kind;
        Text name;             ///< as a part of a path: `/`, `#` and `\` in it stand behind a `\`
        size_t firstFacet;     ///< position in facets()
        size_t numFacets;      ///< each facet at most once
        size_t numDescendants; ///< how many elements behind this one are below it
        Text file;             ///< empty when not known
        int line;              ///< of the file; 0 when not known
        int column;            ///< as the scanner counts; 0 when not known
    };

    /// Describes what a finished library holds itself, without its parents. Any thread, as its const queries.
    explicit HDNTModelTree(const HDNTLibrary& library);
    /// Describes one block of a finished library.
    explicit HDNTModelTree(const HDNTBlock& block);

    /// The element at the top first, each followed by what is below it.
    const std::vector<Element>& elements() const { return elements_; }
    const std::vector<Facet>& facets() const { return facets_; }
    /// Valid as long as the tree is not changed.
    std::string_view text(Text piece) const { return std::string_view(texts_).substr(piece.begin, piece.length); }
    /// The text of a facet of the element at that position; null when it has none.
    const Text* find(size_t element, HDNTElementFacet facet) const;

    /// The tree as bytes for another process of the same program.
    std::string toBytes() const;
    /// Reads them back. Throws HEXDataException "Not a model tree" for other bytes.
    static HDNTModelTree fromBytes(std::string_view bytes);

private:
    friend class hdnt::compare::TreeBuilder;
    HDNTModelTree() = default;

    std::vector<Element> elements_;
    std::vector<Facet> facets_;
    std::string texts_;
};
