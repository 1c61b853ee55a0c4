#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/model/Value.h"
#include "hdnt/platform/Export.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

class HDNTBlock;
class HDNTNode;

// What the model says, as JSON. This header and those that include it need nlohmann-json; author.h does not.
namespace hdnt::author {

/// Texts are as the library has them: bytes that are no UTF-8 are replaced, or refused, when a document is written.
using Json = nlohmann::ordered_json;

HDNT_API Json jsonOf(const Value& value);
/// Null for 0, an empty text, or none.
HDNT_API Json orNull(int number);
HDNT_API Json orNull(std::string_view text);
HDNT_API Json orNull(const char* text);
/// Where something was declared: file and line, or null.
HDNT_API Json locationOf(const HDNTNode& node);

/// All that a block, its buses, pins and properties answer; docs/ntl.md says what each key means. For the architecture
/// in force, if any. Its mapping is the one that is attached; what asks for more of it may load map libraries and print
/// what is wrong with them. Places are asked of `places`, which remembers files. The loading thread's.
HDNT_API Json jsonOf(HDNTBlock& block, SourcePlaces& places);

} // namespace hdnt::author
