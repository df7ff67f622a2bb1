#pragma once

namespace Orvia::probe {

/// What vqm-module-probe writes to descriptor `resultDescriptor`, one line each. Words are separated by
/// single spaces; TEXT is percent-encoded, so that it is one word.
///
///     step NUMBER                                        begins now
///     record MAJOR MINOR BUILD ID TYPE PARTS FAMILIES    of the module's record, in decimal
///     record-name TEXT                                   absent when it is null
///     handed ID                                          there is an object, created with this id
///     version MAJOR MINOR BUILD                          absent when the object answers a null pointer
///     name TEXT                                          absent when the object answers a null pointer
///     id ID
///     defect RULE TEXT
///     note RULE TEXT
///     end                                                all was done that could be
inline constexpr int resultDescriptor = 3;

/// Plug-ins get ids from this one on, as they come.
inline constexpr int firstPlugInId = 10000;

enum class Step
{
    Open,
    GetInfo,
    Create,
    GetVersion,
    GetName,
    GetId,
    CheckInterface,
    Delete,
    Close,
    Count
};

} // namespace Orvia::probe
