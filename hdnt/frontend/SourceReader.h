#pragma once

#include "hdnt/frontend/SourceItems.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::frontend {

/// Takes a text apart piece by piece, for those who need not have all of it at once.
///
/// Has the scanner, which is process-wide, from the first items to the last: use on the loading thread, not during a
/// parse, and one at a time. No file is opened, nothing is printed, HDNTError::numErrors and the stored lines stay as
/// they are, and no listener hears of it; the listener is another one meanwhile.
class HDNT_API SourceReader {
public:
    /// Where something is refused is appended to `refusals`, unless it is null.
    explicit SourceReader(std::string text, std::vector<std::uint32_t>* refusals = nullptr);
    ~SourceReader();
    SourceReader(const SourceReader&) = delete;
    SourceReader& operator=(const SourceReader&) = delete;

    /// The text, with sixteen bytes behind its end that may be read.
    std::string_view text() const { return bytes_; }
    /// Appends some items. Of comments, endsLine is set; of other items neither that nor startsLine. False when there
    /// were no more, or none at all can be read.
    bool more(std::vector<SourceItem>& items);
    /// What was refused so far.
    const SourceProblem& problem() const { return problem_; }
    /// The text, when it was read to its end.
    std::string takeText();

private:
    friend class SourceItems;
    class Session;

    std::shared_ptr<diagnostics::SourceText> text_;
    std::string_view bytes_; ///< of text_
    SourceProblem problem_;
    std::unique_ptr<Session> session_; ///< until the end is reached
};

} // namespace hdnt::frontend
