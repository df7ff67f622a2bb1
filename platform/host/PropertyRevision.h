#pragma once

namespace Orvia {

/// Another number after every change of a property: what was made of properties may be kept while it stays.
/// Any thread.
unsigned propertyRevision();

} // namespace Orvia
