#pragma once

#include "hdnt/compare/HDNTModelTree.h"

#include <optional>
#include <string>
#include <vector>

/// One difference between two models.
struct HDNTDifference {
    enum class Change : unsigned char { added, removed, changed };
    /// What it means for designs that use a primitive: instantiate it by name, connect its pins, set its properties.
    enum class Effect : unsigned char {
        breaking,   ///< such a design may fail, or mean something else
        compatible, ///< such a design means what it meant
        textOnly,   ///< nothing but what people read
    };
    struct Place {
        std::string file; ///< empty when not known
        int line = 0;     ///< of the file; 0 when not known
        int column = 0;   ///< as the scanner counts; 0 when not known
    };

    Effect effect;
    HDNTElementKind element;
    /// `whole` for an element that was added or removed, with all below it; `order` for a list whose elements stand in
    /// another order, where `element` is the kind of the elements and the path that of their owner.
    HDNTElementFacet facet;
    Change change;
    /// The block it is in, as in the path; empty for what stands in the library itself.
    std::string block;
    /// `BLOCK/PIN/PROPERTY`, `BLOCK/mapping/U0/WIDTH`: the names from the block on, a part `NAME#2` for the second
    /// element of one kind and name. `/`, `#` and `\` in a name stand behind a `\`. Empty for the library itself.
    std::string path;
    /// The facet's text as in HDNTModelTree, or for one that is not there the word that says so ("none", "false"). Of
    /// an element its facets in short, empty on the side where it is not. Of an order the first names that moved.
    std::string oldValue;
    std::string newValue;
    /// Of the element, or of the owner of the list. Not known on the side where the element is not.
    Place oldPlace;
    Place newPlace;
};

/// Compares two models element by element: all that was declared, exactly (numbers bit for bit, texts as written,
/// expressions by structure and type), and nothing else: see HDNTModelTree. Libraries that differ only in the layout of
/// their text are equal.
///
/// Elements are found by kind and name (case matters), and among several of one name by their order; calls and if
/// statements first by what they say. A renamed element is one removed and one added. An added or removed element is
/// one difference, and so is a list in another order.
class HDNT_API HDNTComparison {
public:
    /// In the order of the old model, what was added behind it; the same on every run. Empty when they are equal. The
    /// trees may be of libraries or of blocks, both of the same.
    static std::vector<HDNTDifference> compare(const HDNTModelTree& before, const HDNTModelTree& after);
    /// The same for finished models. Only reads and loads nothing; any thread, as the models' const queries.
    static std::vector<HDNTDifference> compare(const HDNTLibrary& before, const HDNTLibrary& after);
    static std::vector<HDNTDifference> compare(const HDNTBlock& before, const HDNTBlock& after);

    /// Where a change leads, seen from a design that was good before.
    enum class Trend : unsigned char {
        more, ///< at least what was allowed still is: a wider range, a flag that restricted is gone, a new element
        less, ///< something is refused, missing or asked for that was not
        same, ///< neither: the same things in another order
        other ///< cannot be told, or is no matter of more and less
    };
    /// One line of the table that gives a difference its effect: the first one that fits holds.
    struct Rule {
        std::optional<HDNTElementKind> element; ///< none: any
        std::optional<HDNTElementFacet> facet;
        std::optional<Trend> trend;
        HDNTDifference::Effect effect;
        const char* reason;
    };
    static const std::vector<Rule>& rules();

    // Names for people and scripts, valid for the life of the process: those of the enumerators, with blanks ("pin
    // assign", "default value").
    static const char* nameOf(HDNTElementKind kind);
    static const char* nameOf(HDNTElementFacet facet);
    static const char* nameOf(HDNTDifference::Change change);
    static const char* nameOf(HDNTDifference::Effect effect);
    static const char* nameOf(Trend trend);
};
