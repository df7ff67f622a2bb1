#pragma once

#include "diagnosis/ConfigurationSections.h"
#include "diagnosis/Finding.h"

#include <QXmlDefaultHandler>

#include <vector>

namespace Orvia {

struct ElementRule;

/// Reads a configuration once, on its own, and says everything that the readers skip, refuse or replace.
/// Files are looked for, options are asked of the hardware repository. One object serves one document.
class ConfigurationScanner : public QXmlDefaultHandler
{
public:
    /// `fileName` is what the findings are about.
    explicit ConfigurationScanner(const QString &fileName);

    void scan(const QByteArray &document);

    const Findings &findings() const { return m_findings; }
    const QList<ConfigurationSections::ModuleFile> &moduleFiles() const { return m_sections.moduleFiles(); }
    /// What the readers are expected to take.
    ConfigurationContents expected() const;

    bool startElement(const QString &namespaceUri, const QString &localName, const QString &qualifiedName,
                      const QXmlAttributes &attributes) override;
    bool endElement(const QString &namespaceUri, const QString &localName,
                    const QString &qualifiedName) override;
    bool characters(const QString &text) override;
    bool startDTD(const QString &name, const QString &publicId, const QString &systemId) override;
    void setDocumentLocator(QXmlLocator *locator) override { m_locator = locator; }
    bool fatalError(const QXmlParseException &exception) override;
    QString errorString() const override { return m_reason; }

private:
    /// An open element; the names are in m_open.
    struct Level
    {
        int line;
        int column;
        bool hasText = false; ///< said already
    };
    enum class Section
    {
        Outside, ///< of any Module
        Ours,
        Foreign, ///< of another module
    };

    Level placeOf(qsizetype offset) const;
    Level placeOfTag() const;
    void checkElement(const ConfigurationElement &element);
    void checkPlace(const ElementRule &rule, const ConfigurationElement &element);
    void checkAttributes(const ElementRule &rule, const ConfigurationElement &element);
    void noteForeignSection(const QString &element);
    void checkStrictly();
    void add(Finding::Severity severity, const char *rule, const QString &text, const Level &place);

    Findings m_findings;
    ConfigurationSections m_sections;
    bool m_complete = false;

    QString m_text; ///< the whole document
    std::vector<qsizetype> m_lineStarts;
    QXmlLocator *m_locator = nullptr;
    QStringList m_open;
    std::vector<Level> m_levels;
    Section m_section = Section::Outside;
    int m_sectionDepth = 0; ///< of the Module element that m_section is about
    bool m_hasNamespace = false;
    bool m_strict = true;         ///< the strict reader can be asked
    QString m_foreignName;        ///< of the foreign section, empty once it was noted
    const char *m_rule = nullptr; ///< of the reason
    QString m_reason;             ///< why the scanner itself ended the parse
};

} // namespace Orvia
