#include "diagnosis/ConfigurationReaders.h"

#include "Startup/VQMIntegrationStartup.h"
#include "platform/ErrorManager.h"
#include "platform/VQMProperties.h"
#include "platform/VQMUtility.h"
#include "xmlconfig/CXmlParseLanguages.h"
#include "xmlconfig/CXmlParseMenuTree.h"
#include "xmlconfig/SMenuTree.h"

#include <algorithm>

namespace Orvia {

namespace {

QStringList rows(const std::map<QString, QString> &values)
{
    QStringList list;
    for (const auto &[key, value] : values)
        list.append(key + " = " + value);
    return list;
}

QString rowText(const QStringList &list, qsizetype row)
{
    return row < list.size() ? '"' + list[row] + '"' : QString("nothing");
}

QString difference(const char *what, const QStringList &expected, const QStringList &read)
{
    for (qsizetype row = 0; row < std::max(expected.size(), read.size()); ++row) {
        if (row >= expected.size() || row >= read.size() || expected[row] != read[row])
            return QStringLiteral("%1 %2: expected %3, read %4")
                .arg(what)
                .arg(row + 1)
                .arg(rowText(expected, row), rowText(read, row));
    }
    return QString();
}

} // namespace

/// A startup object that loads nothing.
class LoadListCollector final : public VQMIntegrationStartup
{
public:
    explicit LoadListCollector(const char *fileName) : VQMIntegrationStartup(-1)
    {
        loadListName = fileName;
        parseLoadList();
    }
    void addLoadListFile(const QString &path) override { files.append(path); }

    QStringList files;
};

ConfigurationContents readConfiguration(const QString &fileName)
{
    const QByteArray name = fileName.toUtf8(); // as the readers take it
    VQMProperties::setIntegerProperty("DebugServer", "level.1", 0, 0);
    VQMUtility::setLanguageList(nullptr);
    VQMUtility::setMenuDescription(nullptr);

    ConfigurationContents contents;
    contents.files = LoadListCollector(name.constData()).files;
    const bool menuComplete = CXmlParseMenuTree::parseProperties(name.constData());
    contents.complete = CXmlParseLanguages::parseProperties(name.constData()) && menuComplete;
    if (VQMUtility::languageList() != nullptr)
        contents.languages = *VQMUtility::languageList();
    if (VQMUtility::menuDescription() != nullptr) {
        for (const auto &[key, entry] : *VQMUtility::menuDescription())
            contents.menu[key] = entry->label;
    }
    ErrorManager()->destroyAllAnnouncements(); // the unknown options
    return contents;
}

QString firstDifference(const ConfigurationContents &expected, const ConfigurationContents &read)
{
    for (const QString &text : {difference("module file", expected.files, read.files),
                                difference("language", rows(expected.languages), rows(read.languages)),
                                difference("menu entry", rows(expected.menu), rows(read.menu))}) {
        if (!text.isEmpty())
            return text;
    }
    if (expected.complete != read.complete)
        return read.complete ? "the document was expected to be broken, but is not"
                             : "the document is broken and was not expected to be";
    return QString();
}

} // namespace Orvia
