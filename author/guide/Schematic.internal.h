#pragma once

#include <functional>
#include <string>
#include <string_view>

class HDNTBlock;
class HDNTExpansion;

namespace hdnt::author::guide {

struct Schematic {
    std::string svg;
    std::string reason; ///< why there is none; empty when there is one
};

/// The address of a block's page; empty: it has none.
using PageLink = std::function<std::string(const HDNTBlock&)>;

/// The mapping of a block, one level deep, as an SVG element: the block's pins at the edges, instances as boxes whose
/// names lead to the pages of their types, wires in right angles, bundles of bits thick. There is none when nothing is
/// in it, when it is too large to be looked at, and without Graphviz. `idPrefix` tells the element's ids from those of
/// others in one page. Same expansion, same bytes. Fonts are the style's, of fixed width and at most 0.6 em a
/// character.
///
/// Classes for styles: svg.schematic; in it
///   g.net: path.wire, path.wire.bus, circle.joint
///   g.box, also .missing and .kept: rect.body, line.rule below the names, circle.bubble of an inverted port,
///     polyline.wedge of a clock
///   g.pin, also .left and .right, the edge it stands at: polygon.tag
///   text.name (bold), text.type, both 11px; text.port 10px; text.value, text.tie, text.part 9px
Schematic schematicOf(const HDNTExpansion& expansion, const PageLink& link, std::string_view idPrefix);

} // namespace hdnt::author::guide
