#include "hdnt/frontend/MaplibFilter.h"

#include "hdnt/frontend/ArchDirective.h"
#include "hdnt/frontend/SourceInput.internal.h"
#include "hdnt/platform/HEX.h"

#include <string_view>

bool slurpAndFilterFile(const std::string& path, const std::string& arch, std::string& out) {
    std::string text;
    std::string reason;
    if (!hdnt::frontend::readSource(path, text, reason)) throw HEXAlgException("Failed to open file " + path);
    out.reserve(out.size() + text.size() + 1);
    const std::string quotedArch = '"' + arch + '"';
    bool keep = true;
    bool found = false;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        const std::string_view line(text.data() + start, end - start);
        start = end + 1;
        if (hdnt::frontend::endsArchSection(line)) {
            keep = true;
        } else if (keep && hdnt::frontend::beginsArchSection(line)) {
            found = true;
            keep = !arch.empty() && line.find(quotedArch) != std::string_view::npos;
        } else if (keep) {
            out.append(line).push_back('\n');
        }
    }
    return found;
}
