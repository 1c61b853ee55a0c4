#include "hdnt/model/Value.h"

#include "hdnt/platform/Text.h"

namespace hdnt {

std::string textOf(const Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return *text;
    if (const auto* const flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
    if (const auto* const number = std::get_if<int>(&value)) return std::to_string(*number);
    return platform::DoubleText(std::get<double>(value), platform::DoubleForm::FixedPoint).str();
}

} // namespace hdnt
