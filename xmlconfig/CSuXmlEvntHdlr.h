#pragma once

#include "platform/CUtilXmlEvntHdlr.h"

namespace Orvia {

class VQMMainStartupImplementation;

/// Reads the module load list: hands every module file that passes its checks to the startup object, every
/// registry key to the property store. What does not fit is skipped without a word; an option that the
/// hardware repository does not know is signalled as error 10008.
class VQM_EXPORT CSuXmlEvntHdlr : public CUtilXmlEvntHdlr
{
public:
    CSuXmlEvntHdlr();
    ~CSuXmlEvntHdlr() override;

    /// Not owned.
    void setStartup(VQMMainStartupImplementation *startup) { m_startup = startup; }
    /// Sets this reader's own table.
    void useElementTable();

    int elemRclModuleLoadList(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclStartup(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclDirectory(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclRegKey(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclFile(const QString &name, const QXmlAttributes &attributes, bool start);

private:
    bool isFitted(const QString &options, const QString &fileName) const;

    VQMMainStartupImplementation *m_startup = nullptr;
    QString m_directory; ///< ends in a slash or backslash once set
};

} // namespace Orvia
