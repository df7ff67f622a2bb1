#pragma once

class QXmlAttributes;

namespace Orvia {

/// Whether an element carries as many attributes as the readers look at: 1 to 32.
bool hasReadableAttributes(const QXmlAttributes &attributes);

/// Hands the registry key of a RegKey element to the property store. False when `type` or `value` is missing
/// or the type is none of the three; the value is passed on unchanged.
bool applyRegKey(const QXmlAttributes &attributes);

} // namespace Orvia
