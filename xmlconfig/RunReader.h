#pragma once

namespace Orvia {

class CUtilXmlEvntHdlr;

/// The longest configuration file that is read, in bytes: memory and time are bounded, too, for those that
/// consist of one name, or of a million elements.
inline constexpr int maxDocumentSize = 16777216;

/// Runs a reader, whose table is set, over a configuration file for the module "MainStartup". True when the
/// whole document was read; false too, with the reason in the trace, when the file cannot be read or is
/// too long. Throws nothing.
bool runReader(CUtilXmlEvntHdlr *reader, const char *fileName);

} // namespace Orvia
