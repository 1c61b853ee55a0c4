// Any bytes are refused for what is wrong with them, or come out with the same tokens and other blanks.
#include "author/format/HDNTFormatter.h"
#include "tests/fuzz/quiet.h"
#include "tests/support/Tokens.h"

#include <cstdint>
#include <string>

using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isQuiet = (fuzz::beQuiet(), true);
    (void)isQuiet;
    const std::string text(reinterpret_cast<const char*>(data), size);
    HDNTError::numErrors = 0;
    std::string once;
    std::string twice;
    HDNTFormatProblem problem;
    if (!HDNTFormatter::format(text, once, problem)) {
        require(problem.count > 0 && problem.line > 0 && problem.column > 0, "refused without a place", text);
        require(problem.reason.find("please report") == std::string::npos, problem.reason.c_str(), text);
        return 0;
    }
    require(HDNTError::numErrors == 0, "a report was counted", text);
    require(support::inkOf(text) == support::inkOf(once), "more than blanks was changed", once);
    require(support::tokensOf(text) == support::tokensOf(once), "tokens were changed", once);
    require(HDNTFormatter::format(once, twice, problem) && once == twice, "not a fixed point", once);
    NtlFreeScannerMem();
    return 0;
}
