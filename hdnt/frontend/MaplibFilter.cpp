#include "hdnt/frontend/MaplibFilter.h"

#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/frontend/ArchDirective.h"
#include "hdnt/frontend/MaplibFilter.internal.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <string_view>

namespace hdnt::frontend {

using Run = diagnostics::FilteredText::Run;

bool readMapLibrary(const std::string& path, const std::string& arch, MapLibrary& out, std::string& reason) {
    std::string text;
    if (!diagnostics::readSource(path, text, reason)) return false;
    out.text.reserve(out.text.size() + text.size() + 1);
    out.origin.file = path;
    const std::string quotedArch = '"' + arch + '"';
    bool keep = true;
    bool follows = false; // the line before was kept, too
    Run next{1, 1, out.text.size(), 0};
    for (size_t start = 0; start < text.size(); ++next.fileLine) {
        const size_t end = std::min(text.find('\n', start), text.size());
        const std::string_view line(text.data() + start, end - start);
        next.fileOffset = start;
        start = end + 1;
        bool kept = false;
        if (endsArchSection(line)) {
            keep = true;
        } else if (keep && beginsArchSection(line)) {
            out.hasArchitectures = true;
            keep = !arch.empty() && line.find(quotedArch) != std::string_view::npos;
        } else {
            kept = keep;
        }
        if (kept) {
            if (!follows) out.origin.runs.push_back(next);
            out.text.append(line).push_back('\n');
            ++next.line;
            next.offset = out.text.size();
        }
        follows = kept;
    }
    return true;
}

} // namespace hdnt::frontend

bool slurpAndFilterFile(const std::string& path, const std::string& arch, std::string& out) {
    hdnt::frontend::MapLibrary library;
    library.text = std::move(out);
    std::string reason;
    const bool read = hdnt::frontend::readMapLibrary(path, arch, library, reason);
    out = std::move(library.text);
    if (!read) throw HEXAlgException("Failed to open file " + path);
    return library.hasArchitectures;
}
