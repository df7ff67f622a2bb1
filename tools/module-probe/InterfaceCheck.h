#pragma once

#include <cstdint>

namespace Orvia {
class VQMModuleInterface;
}

namespace Orvia::probe {

/// Reports when the object is not of the class, at its beginning, through which the start-up library will use
/// a module of this type; or that this cannot be told, its virtual table having no C++ type information.
void checkInterface(VQMModuleInterface *object, std::int32_t moduleType);

} // namespace Orvia::probe
