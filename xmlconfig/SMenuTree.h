#pragma once

#include <QString>

namespace Orvia {

/// One entry of the menu description.
struct SMenuTree
{
    QString label;
    int position = 0;  ///< orders the entries: rises in document order within each level
    bool flag = false; ///< for the users of the description; the reader leaves it false
};

} // namespace Orvia
