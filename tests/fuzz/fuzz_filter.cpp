// A map library's text for an architecture: lines of the file in their order, and nothing is left to be filtered.
#include "hdnt/frontend/MaplibFilter.h"
#include "tests/fuzz/quiet.h"
#include "tests/support/MemoryFile.h"

#include <cstdint>
#include <string>
#include <string_view>

using fuzz::require;

static std::string filtered(std::string_view text, const std::string& arch, bool& sections) {
    const support::MemoryFile file(text);
    std::string out = "before\n";
    sections = slurpAndFilterFile(file.path(), arch, out);
    require(out.starts_with("before\n"), "what stood there before is gone", out);
    return out.substr(7);
}

/// The first line is the architecture.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::string arch = input.substr(0, input.find('\n'));
    const std::string text = "\n" + input.substr(std::min(size, arch.size() + 1)); // no archive begins so
    bool sections = false;
    const std::string out = filtered(text, arch, sections);
    std::size_t at = 0;
    for (std::size_t begin = 0, end = 0; begin < out.size(); begin = end + 1) {
        end = out.find('\n', begin);
        require(end != out.npos, "a line without an end", out);
        const std::string line = out.substr(begin, end - begin);
        for (;; at = text.find('\n', at) + 1) {
            const bool fits = text.compare(at, line.size(), line) == 0;
            if (fits && (at + line.size() == text.size() || text[at + line.size()] == '\n')) break;
            require(text.find('\n', at) != text.npos, "a line that the file has not, or not there", out);
        }
        at = std::min(at + line.size() + 1, text.size());
    }
    require(sections || text.find("\n#endif") != text.npos || out == text || out == text + '\n',
            "lines are gone without a section", out);
    bool again = false;
    require(filtered("\n" + out, arch, again) == "\n" + out && !again, "filtered twice is other than once", out);
    return 0;
}
