#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hdnt::author::guide {

/// For texts and attribute values of HTML and SVG: markup escaped, control characters and bytes that are no UTF-8 as
/// platform::printable has them.
std::string escaped(std::string_view text);

/// An element of a drawing, written as soon as it is complete. Attribute values and texts are escaped. Coordinates are
/// in user units, y downwards, and are written with at most two digits behind the point.
class Svg {
public:
    using Attributes = std::vector<std::pair<std::string_view, std::string>>;

    /// The outermost element, from (0, 0). The role is "img", or "group" for one with links in it; the label is its
    /// text alternative.
    Svg& start(std::string_view cssClass, double width, double height, std::string_view role, std::string_view label);
    /// Elements that follow are inside of it until close().
    Svg& open(std::string_view name, const Attributes& attributes = {});
    Svg& close();
    /// One without content.
    Svg& add(std::string_view name, const Attributes& attributes);
    Svg& line(double x1, double y1, double x2, double y2, std::string_view cssClass);
    Svg& rectangle(double x, double y, double width, double height, std::string_view cssClass);
    Svg& circle(double x, double y, double radius, std::string_view cssClass);
    /// Straight lines from point to point, as "x,y x,y".
    Svg& polyline(const std::string& points, std::string_view cssClass);
    /// `anchor` is start, middle or end.
    Svg& text(double x, double y, std::string_view anchor, std::string_view text, std::string_view cssClass);
    /// Text in the element that is open.
    Svg& write(std::string_view text);
    /// <title> of the element that is open: its text alternative.
    Svg& title(std::string_view text);

    const std::string& str() const { return text_; }

private:
    std::string text_;
    std::vector<std::string> open_;
};

/// A coordinate as attribute value: "12", "0.5".
std::string number(double value);

} // namespace hdnt::author::guide
