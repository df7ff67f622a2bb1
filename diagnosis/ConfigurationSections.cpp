#include "diagnosis/ConfigurationSections.h"

#include "Startup/ModuleRules.h"
#include "platform/HwAbstractionLayer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlAttributes>

#include <utility>

namespace Orvia {

namespace {

constexpr int maxAttributes = 32;
constexpr int maxEntries = 99;   ///< subgroups of a group, items of a subgroup
constexpr int maxOfARule = 1000; ///< findings: a document may hold millions of faults

bool hasReadableAttributes(const ConfigurationElement &element)
{
    return element.attributes.count() >= 1 && element.attributes.count() <= maxAttributes;
}

/// The name of the element `level` elements further out, 1 for the parent.
QString around(const ConfigurationElement &element, int level)
{
    return element.open.value(element.open.size() - level);
}

QString withoutLeadingPath(QString name)
{
    while (!name.isEmpty() && QString("./\\").contains(name.front()))
        name.remove(0, 1);
    return name;
}

bool isNumber(const QString &text)
{
    bool ok = false;
    text.trimmed().toInt(&ok, text.contains("0x", Qt::CaseInsensitive) ? 16 : 10);
    return ok;
}

bool isUnknownOption(const QString &name)
{
    VQMHwRepository *repository = HwAbstractionLayer::m_repository;
    return repository == nullptr ||
           repository->findOption(name.toLatin1().constData(), 0) == VQMHwRepository::unknownOption;
}

bool hasOption(const QString &name)
{
    if (isUnknownOption(name))
        return false;
    VQMHwRepository *repository = HwAbstractionLayer::m_repository;
    const int option = repository->findOption(name.toLatin1().constData(), 0);
    return repository->hasOption(static_cast<unsigned short>(option), 0);
}

} // namespace

ConfigurationSections::ConfigurationSections(const QString &fileName, Findings *findings)
    : m_fileName(fileName), m_findings(findings)
{
}

void ConfigurationSections::add(Finding::Severity severity, const char *rule, const QString &text, int line,
                                int column)
{
    const int number = ++m_numbers[rule];
    if (number <= maxOfARule)
        m_findings->append({severity, rule, m_fileName, line, column, text});
    else if (number == maxOfARule + 1)
        m_findings->append({severity, rule, m_fileName, 0, 0, "there is more of this, which is not said"});
}

ConfigurationContents ConfigurationSections::contents() const
{
    ConfigurationContents contents;
    for (const ModuleFile &file : m_moduleFiles)
        contents.files.append(file.path);
    contents.languages = m_languages;
    contents.menu = m_menu;
    return contents;
}

void ConfigurationSections::take(const ConfigurationElement &element)
{
    constexpr std::pair<const char *, void (ConfigurationSections::*)(const ConfigurationElement &)> table[] =
        {
            {"Directory", &ConfigurationSections::takeDirectory},
            {"File", &ConfigurationSections::takeFile},
            {"RegKey", &ConfigurationSections::takeRegKey},
            {"Menu", &ConfigurationSections::takeMenu},
            {"Group", &ConfigurationSections::takeMenuEntry},
            {"SubGroup", &ConfigurationSections::takeMenuEntry},
            {"Item", &ConfigurationSections::takeMenuEntry},
            {"Languages", &ConfigurationSections::takeLanguages},
            {"Language", &ConfigurationSections::takeLanguage},
        };
    for (const auto &[name, operation] : table) {
        if (element.name == QLatin1String(name))
            (this->*operation)(element);
    }
}

// The load list

void ConfigurationSections::takeDirectory(const ConfigurationElement &element)
{
    const QString folder = element.attributes.value("nameLinux");
    if (hasReadableAttributes(element) && !folder.isEmpty())
        m_moduleFolder = folder.endsWith('/') || folder.endsWith('\\') ? folder : folder + '/';
    if (around(element, 1) == "Languages" && element.attributes.index(QStringLiteral("nameLinux")) >= 0)
        m_languageFolder = folder;
}

void ConfigurationSections::takeFile(const ConfigurationElement &element)
{
    if (!hasReadableAttributes(element) || !isFitted(element))
        return;
    const QString name = element.attributes.value("name");
    if (name.isEmpty() || around(element, 2) != "ModuleLoadList")
        return;
    const QString path = m_moduleFolder + withoutLeadingPath(name);
    m_moduleFiles.append({path, element.line, element.column});
    checkModuleFile(element, path);
}

bool ConfigurationSections::isFitted(const ConfigurationElement &element)
{
    const QString options = element.attributes.value("option");
    const QStringList names = options.split('|', Qt::SkipEmptyParts);
    if (names.isEmpty()) {
        if (element.attributes.index(QStringLiteral("option")) >= 0)
            defect(element, "option-empty", "attribute option names no option: the file is always loaded");
        return true;
    }
    bool fitted = false;
    bool allKnown = true;
    for (const QString &name : names) {
        fitted = fitted || hasOption(name);
        if (!isUnknownOption(name))
            continue;
        allKnown = false;
        defect(element, "option-unknown", "option \"" + name + "\" is unknown to the instrument");
    }
    if (!fitted && allKnown)
        note(element, "option-not-fitted",
             '"' + element.attributes.value("name") + "\" is not loaded: option " + names.join(" or ") +
                 " is not installed");
    return fitted;
}

void ConfigurationSections::checkModuleFile(const ConfigurationElement &element, const QString &path)
{
    const QString name = element.attributes.value("name");
    const QString taken = withoutLeadingPath(name);
    const QFileInfo file(path);
    if (taken.isEmpty()) {
        defect(element, "name-nothing-left", "name \"" + name + "\" consists of dots and slashes only");
        return;
    }
    if (taken != name) {
        const bool isSame = QDir::cleanPath(m_moduleFolder + name) == QDir::cleanPath(path);
        add(isSame ? Finding::Severity::Note : Finding::Severity::Defect, "name-stripped",
            "leading dots and slashes of a name are dropped: \"" + name + "\" becomes " + path, element.line,
            element.column);
    }
    if (file.baseName() == skippedBaseName) {
        note(element, "file-never-loaded", file.fileName() + " is never loaded");
        return;
    }
    if (QFile::encodeName(path) != path.toLatin1())
        defect(element, "file-encoding", path + " has characters that the loader gets in another encoding");
    else if (!file.exists())
        defect(element, "file-missing", path + " does not exist");
    else if (const int line = m_linesOfFiles.value(file.canonicalFilePath()); line > 0)
        defect(element, "file-twice", path + " stands in line " + QString::number(line) + " already");
    else
        m_linesOfFiles.insert(file.canonicalFilePath(), element.line);
}

// The start-up's keys

void ConfigurationSections::takeRegKey(const ConfigurationElement &element)
{
    const QString type = element.attributes.value("type");
    const QString value = element.attributes.value("value");
    if (!hasReadableAttributes(element) || around(element, 1) != "Startup" || type.isEmpty() ||
        element.attributes.index(QStringLiteral("value")) < 0)
        return;
    if (!QStringList{"defaultMaster", "preferedMaster", "requiredMemoryMB"}.contains(type)) {
        defect(element, "key-unknown", "type \"" + type + "\" is no key of the start-up: it is skipped");
        return;
    }
    if (type == "requiredMemoryMB" && !value.isEmpty() && !isNumber(value))
        defect(element, "key-no-number", "value \"" + value + "\" is no number: no memory is required");
    if (m_keysSet.contains(type))
        defect(element, "key-twice", type + " is set for a second time: this value replaces the first");
    m_keysSet.insert(type);
}

// The menu

void ConfigurationSections::takeMenu(const ConfigurationElement &element)
{
    if (around(element, 1) != "Startup")
        return;
    if (std::exchange(m_hasMenu, true))
        defect(element, "section-twice", "a second Menu: the first one is dropped");
    m_menu.clear();
}

void ConfigurationSections::takeMenuEntry(const ConfigurationElement &element)
{
    const QString parent = around(element, 1);
    const bool isGroup = element.name == "Group";
    const bool isItem = element.name == "Item";
    const bool isRead = isGroup ? parent == "Menu" : parent == "Group" || (isItem && parent == "SubGroup");
    if (!isRead)
        return;
    if (!m_hasMenu) {
        defect(element, "section-missing", "no Menu is being read: the entry is skipped");
        return;
    }
    if (element.attributes.index(QStringLiteral("id")) < 0 || !hasRoom(element))
        return;
    const QString id = element.attributes.value("id");
    if (isGroup) {
        m_group = id;
        m_subGroups = m_items = 0;
    } else if (!isItem) {
        m_subGroup = id;
        ++m_subGroups;
        m_items = 0;
    } else {
        ++m_items;
    }
    const QString key = isGroup ? m_group : m_group + ':' + m_subGroup + (isItem ? ':' + id : QString());
    if (isItem && parent == "Group" && !m_subGroup.isEmpty())
        note(element, "item-key", "an Item directly in a Group goes by the SubGroup before it: " + key);
    if (m_menu.count(key) != 0)
        defect(element, "menu-twice", "entry " + key + " exists already: this one replaces it");
    m_menu[key] = element.attributes.value("label");
}

bool ConfigurationSections::hasRoom(const ConfigurationElement &element)
{
    const bool isFull = element.name == "Group"  ? false
                        : element.name == "Item" ? m_items >= maxEntries
                                                 : m_subGroups >= maxEntries;
    if (isFull)
        defect(element, "menu-limit",
               QStringLiteral("%1 number %2: the limit is %3, it is skipped")
                   .arg(element.name)
                   .arg(maxEntries + 1)
                   .arg(maxEntries));
    return !isFull;
}

// The languages

void ConfigurationSections::takeLanguages(const ConfigurationElement &element)
{
    if (around(element, 1) != "Startup")
        return;
    if (std::exchange(m_hasLanguages, true))
        defect(element, "section-twice", "a second Languages: the first one is dropped");
    m_languages.clear();
}

void ConfigurationSections::takeLanguage(const ConfigurationElement &element)
{
    if (around(element, 1) != "Directory")
        return;
    if (!m_hasLanguages) {
        defect(element, "section-missing", "no Languages are being read: the language is skipped");
        return;
    }
    const QString name = element.attributes.value("name");
    const QString path = element.attributes.value("path");
    if (element.attributes.index(QStringLiteral("name")) < 0 || path.isEmpty())
        return;
    const QFileInfo file(m_languageFolder + (m_languageFolder.endsWith('/') ? "" : "/") + path);
    const bool isNamedWell = file.suffix() == "qm";
    if (!isNamedWell)
        defect(element, "language-suffix",
               "path \"" + path + "\" does not end in .qm: the language is skipped");
    if (!file.isFile())
        defect(element, "language-missing",
               file.filePath() + (file.exists() ? " is no file" : " does not exist") +
                   ": the language is skipped");
    if (!isNamedWell || !file.isFile())
        return;
    if (m_languages.count(name) != 0)
        defect(element, "language-twice",
               "language " + name + " is named twice: this one replaces the first");
    m_languages[name] = file.absoluteFilePath();
}

void ConfigurationSections::defect(const ConfigurationElement &element, const char *rule, const QString &text)
{
    add(Finding::Severity::Defect, rule, text, element.line, element.column);
}

void ConfigurationSections::note(const ConfigurationElement &element, const char *rule, const QString &text)
{
    add(Finding::Severity::Note, rule, text, element.line, element.column);
}

} // namespace Orvia
