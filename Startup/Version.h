#pragma once

#include "platform/Export.h"

/// Version of this library and when it was built ("Mmm dd yyyy", "hh:mm:ss"; with SOURCE_DATE_EPOCH set in
/// the build's environment, that moment). The firmware's version is in the section .fwversion.
extern "C" {
VQM_EXPORT extern const char VersionVersMain[];
VQM_EXPORT extern const char VersionDateMain[];
VQM_EXPORT extern const char VersionTimeMain[];
}
