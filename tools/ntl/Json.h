#pragma once

#include "author/exchange/BlockJson.h"
#include "hdnt/diagnostics/Diagnostic.h"

#include <string>

namespace ntl {

using hdnt::author::Json, hdnt::author::jsonOf, hdnt::author::locationOf, hdnt::author::orNull;

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

} // namespace ntl
