#pragma once

#include "platform/CUtilXmlEvntHdlr.h"

#include <map>

namespace Orvia {

/// Extension of a translation file, and the usual name of their folder.
VQM_EXPORT extern const QString fileExtension;
VQM_EXPORT extern const QString languageDir;

/// Reads the list of user-interface languages: name and absolute path of each translation file that exists.
class VQM_EXPORT CXmlParseLanguages : public CUtilXmlEvntHdlr
{
public:
    CXmlParseLanguages();
    ~CXmlParseLanguages() override;

    /// Hands the list to the utility library and fills it while reading. True when the whole document was
    /// read. GUI thread.
    static bool parseProperties(const char *fileName);
    /// Sets this reader's own table.
    void useElementTable();

    int elemRclStartup(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclLanguages(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclDirectory(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclLanguage(const QString &name, const QXmlAttributes &attributes, bool start);

private:
    int startLanguages();
    int startDirectory(const QXmlAttributes &attributes);
    int startLanguage(const QXmlAttributes &attributes);

    std::map<QString, QString> *m_languages = nullptr; ///< the utility library's
    QString m_directory;
};

} // namespace Orvia
