// What is measured inside the library: the scanner as the parser has it, with tokens where they stand.
#include "bench/Subject.h"
#include "hdnt/frontend/ScannerState.internal.h"

namespace bench {

namespace {

using hdnt::frontend::Scanner;
using hdnt::frontend::SourceText;

/// Tokens with their place, lines stored. Of values only numbers are made; whoever wants a text looks at the token.
Work scanInPlace(const Corpus& corpus) {
    auto bytes = std::make_shared<const std::string>(corpus.text("btl"));
    auto text = std::make_shared<std::shared_ptr<SourceText>>();
    return {.prepare = [=] { *text = std::make_shared<SourceText>(SourceText{*bytes}); },
            .run =
                [=] {
                    Scanner& scanner = Scanner::instance();
                    scanner.beginText(std::move(*text));
                    scanner.init();
                    while (scanner.scan() != 0) {
                    }
                    scanner.endText();
                },
            .drop =
                [] {
                    Scanner::instance().destroy();
                    NtlFreeScannerMem();
                }};
}

} // namespace

std::vector<Subject> allSubjects() { return {{"scan-in-place", Subject::Sizes::All, scanInPlace}}; }

} // namespace bench
