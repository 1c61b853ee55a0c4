#include "bindings/shared/Said.h"

#include "hdnt/frontend/Scanner.h"

namespace hdnt::scripts {

static Said saidAt(bool isError, const char* code, const yyltype* at, std::string_view message,
                   std::string_view detail) {
    Said said{isError, code, "", 0, 0, 0, std::string(message), std::string(detail), ""};
    if (!at) return said;
    said.file = at->fileName ? at->fileName : "";
    said.line = at->fileLine;
    said.column = at->first_column;
    said.lastColumn = at->last_column;
    if (at->first_line > 0)
        said.text = NtlGetLineNumbered(static_cast<unsigned long>(at->first_line) +
                                       static_cast<unsigned long>(at->storeOffset));
    return said;
}

Said saidBy(const HDNTReport& report) { return saidAt(true, "error", report.location, report.message, report.detail); }

Said saidBy(const HDNTNotice& notice) {
    struct Wording {
        const char* code;
        const char* before;
        const char* after;
    };
    // In the order of HDNTNotice::Kind.
    static constexpr Wording wordings[] = {
        {"include-skipped", "file \"", "\" was included before and is skipped"},
        {"include-not-found", "file \"", "\" is not found"},
        {"include-not-opened", "file \"", "\" cannot be opened"},
        {"unterminated-string", "string is not closed on its line: ", ""},
        {"unterminated-comment", "comment is not closed", ""},
        {"dropped-mapping", "mapping of block \"", "\" is dropped"},
    };
    const Wording& wording = wordings[static_cast<size_t>(notice.kind)];
    std::string message = wording.before;
    if (notice.kind != HDNTNotice::Kind::UnterminatedComment) message.append(notice.text).append(wording.after);
    return saidAt(false, wording.code, &notice.location, message, notice.detail);
}

} // namespace hdnt::scripts
