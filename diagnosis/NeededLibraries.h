#pragma once

#include <QString>
#include <QStringList>

namespace Orvia {

struct ElfLibrary;

/// What a library, and each of those that it needs, needs in vain: a text for each. Looks where the loader of
/// this process looks: among what is loaded already, by RPATH and RUNPATH (of the tokens, with $ORIGIN only),
/// LD_LIBRARY_PATH, /etc/ld.so.conf and the default folders; and, as programs of this project run on its
/// libraries, in ../lib beside this one. Any thread.
QStringList missingLibraries(const QString &path, const ElfLibrary &library);

} // namespace Orvia
