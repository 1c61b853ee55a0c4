// Text to tokens, with their values and places.
#include "bench/FlexState.h"
#include "bench/Subject.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/hdnt.h"

#include <cstring>
#include <memory>

namespace bench {

namespace {

bool ownsText(int token) { return token == T_StringConstant || token == T_HexConstant || token == T_BinaryConstant; }

size_t scan(const std::string& text) {
    NtlFreeScannerMem();
    YY_BUFFER_STATE const buffer = yy_scan_bytes(text.data(), static_cast<int>(text.size()));
    NtlInitScanner();
    size_t tokens = 0;
    while (const int token = HDNTParserlex()) {
        ++tokens;
        if (ownsText(token)) delete HDNTParserlval.text;
    }
    yy_delete_buffer(buffer);
    return tokens;
}

size_t scanGenerated(const std::string& text) {
    oracle::OracleState& state = oracle::OracleState::instance();
    state.start(text);
    oracle::ntloracleStart();
    size_t tokens = 0;
    while (const int token = oracle::ntloracleNext()) {
        ++tokens;
        if (ownsText(token)) delete state.value.text;
    }
    oracle::ntloracleStop();
    return tokens;
}

size_t countLines(const std::string& text) {
    size_t lines = 0;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end; ++at, ++lines) {
        at = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
        if (!at) break;
    }
    return lines;
}

template <size_t (*pass)(const std::string&)>
Work passOver(const Corpus& corpus) {
    auto text = std::make_shared<const std::string>(corpus.text("btl"));
    const size_t expected = pass(*text);
    if (pass == scanGenerated && expected != scan(*text)) fail("the scanners do not find the same tokens");
    return {.run = [=] {
        if (pass(*text) != expected) fail("a pass over the same text gives another count");
    }};
}

} // namespace

void addScanSubjects(std::vector<Subject>& subjects) {
    subjects.push_back({"scan", Subject::Sizes::All, passOver<scan>});
    subjects.push_back({"scan-flex", Subject::Sizes::All, passOver<scanGenerated>});
    subjects.push_back({"scan-memchr", Subject::Sizes::All, passOver<countLines>});
}

} // namespace bench
