#pragma once

#include "hdnt/platform/Export.h"

namespace hdnt::author {

/// A server of the Language Server Protocol 3.17 for NTL texts: reads messages from a descriptor and writes answers to
/// another one, until the client says "exit", the input ends and all is answered, or nobody reads the output any more.
/// The result is the exit status that the protocol asks for: 0 after a "shutdown", else 1. The descriptors stay open.
///
/// What the tree of a text says is said at once; 300 ms after the last change, its library is judged as `ntl lint`
/// does, with the parameters of this process, in a child process: HDNTCellviewLib::getGlobal() must not have been
/// called when projects may add tables of cells. No child is left at the end.
///
/// Uses the scanner, which is process-wide: call from the loading thread. Whoever calls ignores SIGPIPE, has no other
/// threads that hold locks of the library, and sees to it that nobody else writes to the output.
HDNT_API int serve(int input, int output);

} // namespace hdnt::author
