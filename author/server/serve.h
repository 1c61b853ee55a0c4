#pragma once

#include "hdnt/platform/Export.h"

namespace hdnt::author {

/// A server of the Language Server Protocol 3.17 for NTL texts: reads messages from a descriptor and writes answers to
/// another one, both blocking ones, until the client says "exit", the input ends, or nobody reads the output any more.
/// The result is the exit status that the protocol asks for: 0 after a "shutdown", else 1. The descriptors stay open.
///
/// Uses the scanner, which is process-wide: call from the loading thread. Whoever calls ignores SIGPIPE, and sees to it
/// that nobody else writes to the output.
HDNT_API int serve(int input, int output);

} // namespace hdnt::author
