#pragma once

#include "hdnt/hdnt.h"

#include <memory>
#include <string>
#include <vector>

namespace support {

/// Takes reports as "line:first-last message" instead of letting them be printed, in order, with the notices beside.
class Reports : public HDNTErrorListener {
public:
    Reports() : previous_(HDNTError::setListener(this)) {}
    ~Reports() override { HDNTError::setListener(previous_); }

    bool report(const HDNTReport& report) override {
        std::string place;
        if (const yyltype* at = report.location)
            place = std::to_string(at->first_line) + ':' + std::to_string(at->first_column) + '-' +
                    std::to_string(at->last_column) + ' ';
        texts.push_back(place + std::string(report.message));
        details.emplace_back(report.detail);
        return true;
    }
    void notice(const HDNTNotice& notice) override { notices.push_back(notice.kind); }

    /// The reports since the last call.
    std::vector<std::string> take() { return std::exchange(texts, {}); }

    std::vector<std::string> texts;
    std::vector<std::string> details;
    std::vector<HDNTNotice::Kind> notices;

private:
    HDNTErrorListener* previous_;
};

using Texts = std::vector<std::string>;

/// A library of its own over `parent`, parsed from a text; not finalized.
inline std::unique_ptr<HDNTLibrary> parsed(const std::string& text, int expected = 0, HDNTLibrary* parent = nullptr) {
    auto library = std::make_unique<HDNTLibrary>(parent);
    if ((library->parseString(text) == 0) != (expected == 0)) return nullptr;
    return library;
}

/// The same, finalized and checked with diagnostics on.
inline std::unique_ptr<HDNTLibrary> loaded(const std::string& text, HDNTLibrary* parent = nullptr) {
    HDNTLibraryMgr::m_diagnostics = true;
    auto library = parsed(text, 0, parent);
    if (library) {
        library->finalize();
        library->check();
    }
    return library;
}

inline std::string inBlock(const std::string& entities) {
    return "library \"L\" {\nblock \"ADD\" {\n" + entities + "\n}\n}\n";
}

} // namespace support
