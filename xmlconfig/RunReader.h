#pragma once

namespace Orvia {

class CUtilXmlEvntHdlr;

/// Runs a reader, whose table is set, over a configuration file for the module "MainStartup". True when the
/// whole document was read; a file that cannot be read counts as an empty document, which is an error. Throws
/// nothing.
bool runReader(CUtilXmlEvntHdlr *reader, const char *fileName);

} // namespace Orvia
