#include "author/guide/Svg.internal.h"
#include "hdnt/platform/Text.h"

#include <cmath>

namespace hdnt::author::guide {

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : platform::printable(text)) {
        if (c == '&') result += "&amp;";
        else if (c == '<') result += "&lt;";
        else if (c == '>') result += "&gt;";
        else if (c == '"') result += "&quot;";
        else if (c == '\'') result += "&#39;";
        else result += c;
    }
    return result;
}

std::string number(double value) {
    const long hundredths = std::lround(value * 100);
    const long rest = std::labs(hundredths % 100);
    std::string text = (hundredths < 0 ? "-" : "") + std::to_string(std::labs(hundredths / 100));
    if (rest == 0) return text;
    text += rest < 10 ? ".0" : ".";
    text += std::to_string(rest % 10 == 0 && rest >= 10 ? rest / 10 : rest);
    return text;
}

Svg& Svg::start(std::string_view cssClass, double width, double height, std::string_view role, std::string_view label) {
    return open("svg", {{"class", std::string(cssClass)},
                        {"viewBox", "0 0 " + number(width) + " " + number(height)},
                        {"width", number(width)},
                        {"height", number(height)},
                        {"role", std::string(role)},
                        {"aria-label", std::string(label)}});
}

Svg& Svg::open(std::string_view name, const Attributes& attributes) {
    text_.append("<").append(name);
    for (const auto& [key, value] : attributes)
        text_.append(" ").append(key).append("=\"").append(escaped(value)).append("\"");
    text_ += ">";
    open_.emplace_back(name);
    return *this;
}

Svg& Svg::close() {
    text_.append("</").append(open_.back()).append(">");
    open_.pop_back();
    return *this;
}

Svg& Svg::add(std::string_view name, const Attributes& attributes) {
    open(name, attributes);
    open_.pop_back();
    text_.insert(text_.size() - 1, "/");
    return *this;
}

Svg& Svg::line(double x1, double y1, double x2, double y2, std::string_view cssClass) {
    return add("line", {{"x1", number(x1)},
                        {"y1", number(y1)},
                        {"x2", number(x2)},
                        {"y2", number(y2)},
                        {"class", std::string(cssClass)}});
}

Svg& Svg::rectangle(double x, double y, double width, double height, std::string_view cssClass) {
    return add("rect", {{"x", number(x)},
                        {"y", number(y)},
                        {"width", number(width)},
                        {"height", number(height)},
                        {"class", std::string(cssClass)}});
}

Svg& Svg::circle(double x, double y, double radius, std::string_view cssClass) {
    return add("circle",
               {{"cx", number(x)}, {"cy", number(y)}, {"r", number(radius)}, {"class", std::string(cssClass)}});
}

Svg& Svg::polyline(const std::string& points, std::string_view cssClass) {
    return add("polyline", {{"points", points}, {"class", std::string(cssClass)}});
}

Svg& Svg::text(double x, double y, std::string_view anchor, std::string_view text, std::string_view cssClass) {
    open("text",
         {{"x", number(x)}, {"y", number(y)}, {"text-anchor", std::string(anchor)}, {"class", std::string(cssClass)}});
    return write(text).close();
}

Svg& Svg::write(std::string_view text) {
    text_ += escaped(text);
    return *this;
}

Svg& Svg::title(std::string_view text) { return open("title").write(text).close(); }

} // namespace hdnt::author::guide
