#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/model/Value.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace ntl {

using Json = nlohmann::ordered_json;

/// The version of every JSON document the tool writes. Goes up when a key goes away or changes its meaning; new keys do
/// not count. Keys are the names of fields in the script packages, with a capital for "_x": docs/scripting.md.
constexpr int jsonVersion = 2;

/// The head of a document: version and command.
Json jsonHead(const std::string& command);
/// Indented by two, with a final newline. Bytes that are no UTF-8 become U+FFFD.
std::string jsonText(const Json& json);
/// Null when the place is not known.
Json jsonOf(const hdnt::Place& place);
/// With its place, related places and, where there is one, its detail.
Json jsonOf(const hdnt::Diagnostic& diagnostic);
Json jsonOf(const hdnt::Value& value);
/// Null for 0, an empty text, or none.
Json orNull(int number);
Json orNull(std::string_view text);
Json orNull(const char* text);

} // namespace ntl
