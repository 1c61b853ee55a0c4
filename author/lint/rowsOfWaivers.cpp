#include "author/lint/LintRows.internal.h"

namespace hdnt::author {

using C = LintCode;
static constexpr Severity W = Severity::warning;

static constexpr LintRow rows[] = {
    {C::waiverForm,
     {"waiver-form", W, "waiver without effect: %",
      "A comment that begins with \"ntl: allow\" waives nothing, since it has another form than "
      "\"ntl: allow CODE, CODE until YEAR-MONTH-DAY: reason\", whose date may be missing, names a code that there is "
      "not or that cannot be waived, or has nothing behind it.",
      R"(library "example" {
  // ntl: allow pin-lower-case
  block "EXAMPLE_GATE" { pin "I" input; }
})",
      R"(library "example" {
  // ntl: allow pin-lower-case: the netlists of the old family have such names
  block "EXAMPLE_GATE" { pin "i" input; }
})"}},
    {C::waiverExpired,
     {"waiver-expired", W, "the waiver ended on %",
      "The last day of a waiver is over, and it waives nothing any more. Mend what it was about, or set another date.",
      R"(library "example" {
  // ntl: allow pin-lower-case until 2020-06-30: renamed with the next release
  block "EXAMPLE_GATE" { pin "I" input; }
})",
      R"(library "example" {
  // ntl: allow pin-lower-case until 9999-06-30: renamed with the next release
  block "EXAMPLE_GATE" { pin "i" input; }
})"}},
    {C::waiverUnused,
     {"waiver-unused", W, "nothing here is %, which the waiver allows",
      "A waiver has nothing to waive. Take it out, so that it does not hide what comes later.",
      R"(library "example" {
  // ntl: allow pin-lower-case: the netlists of the old family have such names
  block "EXAMPLE_GATE" { pin "I" input; }
})",
      R"(library "example" {
  block "EXAMPLE_GATE" { pin "I" input; }
})"}},
};
static_assert(areInOrder(rows, C::waiverUnused));

std::span<const LintRow> waiverRows() { return rows; }

} // namespace hdnt::author
