#pragma once

#include "diagnosis/Finding.h"

#include <QHash>
#include <QSet>
#include <QStringList>

#include <map>

class QXmlAttributes;

namespace Orvia {

/// What the readers take from a configuration.
struct ConfigurationContents
{
    bool complete = false;                ///< the document was read to its end
    QStringList files;                    ///< module files in order, folder and name
    std::map<QString, QString> languages; ///< name and absolute path of the translation file
    std::map<QString, QString> menu;      ///< key and label
};

/// An element at its start.
struct ConfigurationElement
{
    const QString &name;
    const QXmlAttributes &attributes;
    const QStringList &open; ///< the elements around it, outermost first
    int line;
    int column;
};

/// Foretells what the readers make of the elements of the start-up's section and collects what is wrong with
/// them. Knows the rules on its own, so that it can be compared with the readers.
class ConfigurationSections
{
public:
    /// A module file that is taken, and where it stands.
    struct ModuleFile
    {
        QString path;
        int line;
        int column;
    };

    /// The findings, not owned, are about `fileName`.
    ConfigurationSections(const QString &fileName, Findings *findings);

    /// The next element that the readers know and do not refuse for its depth, in document order.
    void take(const ConfigurationElement &element);
    /// Of each rule, the first thousand.
    void add(Finding::Severity severity, const char *rule, const QString &text, int line = 0, int column = 0);

    const QList<ModuleFile> &moduleFiles() const { return m_moduleFiles; }
    /// Of what was taken so far.
    ConfigurationContents contents() const;

private:
    void takeDirectory(const ConfigurationElement &element);
    void takeFile(const ConfigurationElement &element);
    void takeRegKey(const ConfigurationElement &element);
    void takeMenu(const ConfigurationElement &element);
    void takeMenuEntry(const ConfigurationElement &element);
    void takeLanguages(const ConfigurationElement &element);
    void takeLanguage(const ConfigurationElement &element);

    bool isFitted(const ConfigurationElement &element);
    void checkModuleFile(const ConfigurationElement &element, const QString &path);
    bool hasRoom(const ConfigurationElement &element);
    void defect(const ConfigurationElement &element, const char *rule, const QString &text);
    void note(const ConfigurationElement &element, const char *rule, const QString &text);

    QString m_fileName;
    Findings *m_findings;
    QHash<QString, int> m_numbers; ///< of findings, by rule; those counted only included

    QList<ModuleFile> m_moduleFiles;
    QHash<QString, int> m_linesOfFiles; ///< by the path that a file really has
    QString m_moduleFolder;
    QSet<QString> m_keysSet;

    bool m_hasLanguages = false;
    QString m_languageFolder;
    std::map<QString, QString> m_languages;

    bool m_hasMenu = false;
    std::map<QString, QString> m_menu;
    QString m_group;
    QString m_subGroup;
    int m_subGroups = 0;
    int m_items = 0;
};

} // namespace Orvia
