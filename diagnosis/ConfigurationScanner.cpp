#include "diagnosis/ConfigurationScanner.h"

#include "diagnosis/ConfigurationElements.h"
#include "platform/CUtilXmlEvntHdlr.h"

#include <QXmlInputSource>
#include <QXmlSimpleReader>
#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

namespace Orvia {

namespace {

constexpr const char *ourModule = "MainStartup";
constexpr int maxAttributes = 32;
constexpr int maxAttributesStrictly = 256; ///< the strict reader's time grows with their square

/// Where the lines of the text start, by the reader's count: a line ends in LF, CR or CR LF.
std::vector<qsizetype> lineStarts(const QString &text)
{
    std::vector<qsizetype> starts{0};
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' || (text[i] == '\r' && text.mid(i + 1, 1) != "\n"))
            starts.push_back(i + 1);
    }
    return starts;
}

bool isForeignModule(const QString &name, const QXmlAttributes &attributes)
{
    const int index = attributes.index(QStringLiteral("name"));
    return name == "Module" && index >= 0 && attributes.value(index) != ourModule;
}

} // namespace

ConfigurationScanner::ConfigurationScanner(const QString &fileName) : m_sections(fileName, &m_findings) {}

void ConfigurationScanner::scan(const QByteArray &document)
{
    QXmlInputSource source;
    source.setData(document);
    m_text = source.data();
    m_lineStarts = lineStarts(m_text);
    QXmlSimpleReader reader;
    reader.setContentHandler(this);
    reader.setErrorHandler(this);
    reader.setLexicalHandler(this);
    m_complete = reader.parse(&source);
    m_locator = nullptr;
    if (m_complete)
        checkStrictly();
    if (m_sections.moduleFiles().isEmpty())
        m_sections.add(Finding::Severity::Defect, "no-modules", "no module file is listed: nothing starts");
}

ConfigurationContents ConfigurationScanner::expected() const
{
    ConfigurationContents contents = m_sections.contents();
    contents.complete = m_complete;
    return contents;
}

bool ConfigurationScanner::startElement(const QString &namespaceUri, const QString &, const QString &name,
                                        const QXmlAttributes &attributes)
{
    if (m_levels.size() >= CUtilXmlEvntHdlr::maxDepth) {
        m_rule = "nesting-too-deep";
        m_reason = QStringLiteral("elements are nested deeper than %1").arg(CUtilXmlEvntHdlr::maxDepth);
        return false;
    }
    const Level place = placeOfTag();
    const ConfigurationElement element{name, attributes, m_open, place.line, place.column};
    if (m_section != Section::Foreign)
        checkElement(element);
    else if (name != "Root" && name != "Instrument" && name != "Module" && elementRule(name) != nullptr)
        noteForeignSection(name);
    if (attributes.count() > maxAttributesStrictly && std::exchange(m_strict, false))
        add(Finding::Severity::Note, "not-checked",
            QStringLiteral("%1 has %2 attributes: whether other programs read the document is not checked")
                .arg(name)
                .arg(attributes.count()),
            place);
    if (m_section == Section::Ours && !namespaceUri.isEmpty() && !std::exchange(m_hasNamespace, true))
        add(Finding::Severity::Note, "namespace",
            name + " is in a namespace: it is read all the same, but means something else to other programs",
            place);
    m_open.append(name);
    m_levels.push_back(place);
    if (name == "Module" && m_section != Section::Foreign) {
        const bool isForeign = isForeignModule(name, attributes);
        if (isForeign || m_section == Section::Outside) {
            m_section = isForeign ? Section::Foreign : Section::Ours;
            m_sectionDepth = static_cast<int>(m_levels.size());
            m_foreignName = isForeign ? attributes.value("name") : QString();
        }
    }
    return true;
}

bool ConfigurationScanner::endElement(const QString &, const QString &, const QString &)
{
    m_open.removeLast();
    if (static_cast<int>(m_levels.size()) == m_sectionDepth) { // a foreign section may stand inside ours
        m_sectionDepth = static_cast<int>(m_open.indexOf("Module")) + 1;
        m_section = m_sectionDepth > 0 ? Section::Ours : Section::Outside;
    }
    m_levels.pop_back();
    return true;
}

bool ConfigurationScanner::characters(const QString &text)
{
    const QString words = text.simplified();
    if (m_section != Section::Ours || words.isEmpty() || m_levels.back().hasText)
        return true;
    m_levels.back().hasText = true;
    add(Finding::Severity::Defect, "stray-text",
        "text in " + m_open.last() + " that nobody reads: \"" + words.left(40) + '"', m_levels.back());
    return true;
}

bool ConfigurationScanner::startDTD(const QString &, const QString &, const QString &)
{
    m_rule = "document-type";
    m_reason = "document type declarations are not accepted";
    return false;
}

bool ConfigurationScanner::fatalError(const QXmlParseException &exception)
{
    const auto files = m_sections.moduleFiles().size();
    add(Finding::Severity::Defect, m_rule != nullptr ? m_rule : "not-well-formed",
        exception.message() + "; nothing behind it is read, " +
            (files == 0 ? QString("and no module file before it")
                        : QStringLiteral("the module files before it, %1, still start").arg(files)),
        {exception.lineNumber(), exception.columnNumber()});
    return false;
}

ConfigurationScanner::Level ConfigurationScanner::placeOf(qsizetype offset) const
{
    const auto next = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
    return {static_cast<int>(next - m_lineStarts.begin()), static_cast<int>(offset - *(next - 1)) + 1};
}

/// The tag just read ends at the locator's place, and no tag holds another "<".
ConfigurationScanner::Level ConfigurationScanner::placeOfTag() const
{
    const int line = std::clamp<int>(m_locator->lineNumber(), 1, static_cast<int>(m_lineStarts.size()));
    const qsizetype end = m_lineStarts[static_cast<std::size_t>(line) - 1] + m_locator->columnNumber() - 1;
    return placeOf(std::max<qsizetype>(m_text.lastIndexOf('<', std::min(end, m_text.size() - 1)), 0));
}

void ConfigurationScanner::checkElement(const ConfigurationElement &element)
{
    const Level place{element.line, element.column};
    const ElementRule *rule = elementRule(element.name);
    if (rule == nullptr) {
        if (m_section == Section::Ours)
            add(Finding::Severity::Defect, "element-unknown",
                "element " + element.name + " is unknown: it is skipped", place);
        else if (m_levels.empty())
            add(Finding::Severity::Note, "place-unusual",
                "the outermost element is " + element.name + ", not Root: it is read all the same", place);
        return;
    }
    checkPlace(*rule, element);
    checkAttributes(*rule, element);
    if (m_levels.size() < CUtilXmlEvntHdlr::maxLevels)
        m_sections.take(element);
    else
        add(Finding::Severity::Defect, "level-too-deep",
            QStringLiteral("%1 is nested deeper than %2: it is skipped")
                .arg(element.name)
                .arg(CUtilXmlEvntHdlr::maxLevels),
            place);
}

void ConfigurationScanner::checkPlace(const ElementRule &rule, const ConfigurationElement &element)
{
    if (isInPlace(rule, element.open))
        return;
    const bool isRead = isReadOutOfPlace(rule, element.open);
    add(isRead ? Finding::Severity::Note : Finding::Severity::Defect,
        isRead ? "place-unusual" : "place-wrong",
        element.name + " belongs inside " + placesText(rule) + ": here it is " +
            (isRead ? "read all the same" : "skipped"),
        {element.line, element.column});
}

void ConfigurationScanner::checkAttributes(const ElementRule &rule, const ConfigurationElement &element)
{
    const Level place{element.line, element.column};
    for (const AttributeRule &attribute : rule.attributes) {
        if (attribute.ifMissing == nullptr)
            continue;
        const int index = element.attributes.index(QString(attribute.name));
        if (index < 0)
            add(Finding::Severity::Defect, "attribute-missing",
                element.name + " lacks attribute " + attribute.name + ": " + attribute.ifMissing, place);
        else if (element.attributes.value(index).isEmpty())
            add(Finding::Severity::Defect, "attribute-empty",
                element.name + " has an empty attribute " + attribute.name + ": " +
                    (attribute.ifEmpty != nullptr ? attribute.ifEmpty : attribute.ifMissing),
                place);
    }
    if (element.attributes.count() > maxAttributes) {
        add(Finding::Severity::Defect, "attribute-count",
            QStringLiteral("%1 has %2 attributes, %3 at most are read")
                .arg(element.name)
                .arg(element.attributes.count())
                .arg(maxAttributes),
            place);
        return;
    }
    if (rule.isFree || isForeignModule(element.name, element.attributes))
        return;
    for (int i = 0; i < element.attributes.count(); ++i) {
        const bool known = std::any_of(
            std::begin(rule.attributes), std::end(rule.attributes), [&](const AttributeRule &attribute) {
                return attribute.name != nullptr && element.attributes.qName(i) == attribute.name;
            });
        if (!known)
            add(Finding::Severity::Defect, "attribute-unknown",
                element.name + " has an attribute that nobody reads: " + element.attributes.qName(i), place);
    }
}

void ConfigurationScanner::noteForeignSection(const QString &element)
{
    if (m_foreignName.isNull())
        return;
    add(Finding::Severity::Note, "module-foreign",
        "the section is of module \"" + m_foreignName + "\", not " + ourModule + ": its " + element +
            " and the like are not read here",
        m_levels[static_cast<std::size_t>(m_sectionDepth) - 1]);
    m_foreignName = QString();
}

/// The readers' own parser lets some things pass that are no XML.
void ConfigurationScanner::checkStrictly()
{
    if (const qsizetype offset = m_text.indexOf(QChar::ReplacementCharacter); offset >= 0)
        add(Finding::Severity::Defect, "not-strict-xml", "bytes that are no text in the document's encoding",
            placeOf(offset));
    if (!m_strict)
        return;
    QXmlStreamReader reader(m_text);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError())
        add(Finding::Severity::Defect, "not-strict-xml",
            "start-up reads it, other programs do not: " + reader.errorString().simplified(),
            {static_cast<int>(reader.lineNumber()), static_cast<int>(reader.columnNumber())});
}

void ConfigurationScanner::add(Finding::Severity severity, const char *rule, const QString &text,
                               const Level &place)
{
    m_sections.add(severity, rule, text, place.line, place.column);
}

} // namespace Orvia
