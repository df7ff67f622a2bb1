#pragma once

#include "platform/CUtilXmlEvntHdlr.h"

namespace Orvia {

/// Reads only the registry keys of a configuration file; for firmware modules that need them on their own.
class VQM_EXPORT CXmlParseMasterRegKeys : public CUtilXmlEvntHdlr
{
public:
    CXmlParseMasterRegKeys();
    ~CXmlParseMasterRegKeys() override;

    /// Hands the keys to the property store in document order. True when the whole document was read.
    static bool parseProperties(const char *fileName);
    /// Sets this reader's own table.
    void useElementTable();

    int elemRclStartup(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclRegKey(const QString &name, const QXmlAttributes &attributes, bool start);
};

} // namespace Orvia
