#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author {

/// Which rules speak, and how severely. What the library reports as an error, and faults of syntax, are always said and
/// always errors; everything else can be turned off, raised and lowered: rules of lint, also those that are errors, the
/// library's warnings, and differences of models.
///
/// The operations that take a code return why it is refused, in a line without a full stop; empty when it was taken. A
/// code that there is not is refused with those near to it. Reads: any thread.
class HDNT_API RuleControl {
public:
    /// Of the rules that can be turned off, those speak that this was called for, and no others.
    std::string only(std::string_view code);
    std::string turnOff(std::string_view code);
    /// A later word on a code wins, also over turnOff().
    std::string setSeverity(std::string_view code, Severity severity);
    /// The same in a word: "error", "warning", "note" or "off".
    std::string set(std::string_view code, std::string_view word);

    /// What the other says wins over what this says.
    void add(const RuleControl& stronger);
    /// Whether anything but only() for other codes was said of the code.
    bool speaksOf(std::string_view code) const;

    /// Takes out what is off, and gives the rest its severity.
    void apply(std::vector<Diagnostic>& findings) const;

private:
    HDNT_LOCAL bool isOff(const Diagnostic& finding) const;

    std::set<std::string, std::less<>> only_;
    std::map<std::string, std::optional<Severity>, std::less<>> severities_; ///< none: off
};

/// Why findings of the code cannot be turned off, lowered or waived; empty when they can. See RuleControl.
HDNT_API std::string refusalOfControl(std::string_view code);

} // namespace hdnt::author
