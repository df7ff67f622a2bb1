#pragma once

namespace Orvia {

class CUtilXmlEvntHdlr;

/// Runs a reader, whose table is set, over a configuration file for the module "MainStartup". True when the
/// whole document was read; false too, with the reason in the trace, when the file cannot be read. Throws
/// nothing.
bool runReader(CUtilXmlEvntHdlr *reader, const char *fileName);

} // namespace Orvia
