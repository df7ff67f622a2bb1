#pragma once

#include <initializer_list>
#include <string_view>

namespace Orvia {

/// A line of progress of the debug output and the trace, like suDebugMsgOut() with level 3, put together of
/// pieces in Latin-1. The trace takes it as it is; a QString is made only when the debug output wants it. Any
/// thread.
void debugProgress(std::initializer_list<std::string_view> pieces);

} // namespace Orvia
