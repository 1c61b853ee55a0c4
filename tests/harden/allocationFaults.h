#pragma once

#include <cstddef>

/// Memory that runs out when it is told to. A program that links this, or is preloaded with it, gets its memory through
/// it: malloc and its kin, operator new over them, and mmap of nameless pages.
///
/// HDNT_FAIL_ALLOCATION=N in the environment arms it before the program begins; with 0, nothing fails, and the number
/// of allocations stands in the file HDNT_FAULT_REPORT when the program ends. There stands "failed" as soon as one did.
namespace faults {

/// The count-th allocation from here on fails, once; 0: none does. Those that a library makes which is known to end
/// the process when it gets nothing are left out: `sparedLibraries`.
void arm(std::size_t count);
/// Nothing fails any more. Whether something did since arm().
bool disarm();
/// Allocations that could have failed since arm().
std::size_t counted();
/// Pieces of memory that were taken and not given back.
long live();
/// Where the failing one is asked for is said on standard error.
void tellWhere(bool wanted);

} // namespace faults
