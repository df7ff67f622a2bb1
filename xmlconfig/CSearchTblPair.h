#pragma once

#include <utility>

namespace Orvia {

/// One entry of an element table: the name of an element and the member operation that handles it. A table is
/// a static array in ascending order of name by character code.
template <typename Key, typename Handler>
struct CSearchTblPair
{
    CSearchTblPair(Key elementName, Handler elementHandler)
        : key(std::move(elementName)), handler(elementHandler)
    {
    }

    Key key;
    Handler handler;
};

} // namespace Orvia
