#pragma once

#include "platform/JoinedText.h"

namespace Orvia {

/// A line of progress of the debug output and the trace, like suDebugMsgOut() with level 3, put together of
/// pieces in Latin-1: debugProgress({"Initializing ", name}). The trace takes it as it is; a QString is made
/// only when the debug output wants it. Any thread.
void debugProgress(const JoinedText &line);

} // namespace Orvia
