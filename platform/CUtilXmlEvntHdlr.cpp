#include "platform/CUtilXmlEvntHdlr.h"

#include "platform/Debug.h"
#include "platform/VQMUtility.h"

#include <QXmlSimpleReader>

#include <algorithm>

namespace Orvia {

CUtilXmlEvntHdlr::CUtilXmlEvntHdlr() = default;
CUtilXmlEvntHdlr::~CUtilXmlEvntHdlr() = default;

void CUtilXmlEvntHdlr::setElemTbl(int count, const TableEntry *table)
{
    m_tableCount = count;
    m_table = table;
}

bool CUtilXmlEvntHdlr::parse(const QXmlInputSource *source)
{
    QXmlSimpleReader reader;
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    reader.setContentHandler(this);
    reader.setErrorHandler(this);
    reader.setLexicalHandler(this);
    m_levels.clear();
    m_depth = m_foreignModuleDepth = 0;
    m_reason.clear();
    bool complete = false;
    try {
        complete = reader.parse(source);
    } catch (...) {
        // What Qt itself throws is out of memory; handlers are guarded in dispatch().
    }
    m_locator = nullptr;
    return complete;
}

bool CUtilXmlEvntHdlr::startElement(const QString &, const QString &, const QString &qualifiedName,
                                    const QXmlAttributes &attributes)
{
    if (m_depth >= maxDepth) {
        m_reason = QStringLiteral("elements are nested deeper than %1").arg(maxDepth);
        return false;
    }
    return dispatch(qualifiedName, attributes, true);
}

bool CUtilXmlEvntHdlr::endElement(const QString &, const QString &, const QString &qualifiedName)
{
    return dispatch(qualifiedName, QXmlAttributes(), false);
}

bool CUtilXmlEvntHdlr::startDTD(const QString &, const QString &, const QString &)
{
    // Entities can be made to expand without bound and content models to overflow Qt's stack.
    m_reason = QStringLiteral("document type declarations are not accepted");
    return false;
}

void CUtilXmlEvntHdlr::setDocumentLocator(QXmlLocator *locator)
{
    m_locator = locator;
}

bool CUtilXmlEvntHdlr::warning(const QXmlParseException &exception)
{
    report("warning", exception);
    return true;
}

bool CUtilXmlEvntHdlr::error(const QXmlParseException &exception)
{
    report("error", exception);
    return true;
}

bool CUtilXmlEvntHdlr::fatalError(const QXmlParseException &exception)
{
    report("error", exception);
    return false;
}

QString CUtilXmlEvntHdlr::errorString() const
{
    return m_reason;
}

int CUtilXmlEvntHdlr::elemRclRoot(const QString &, const QXmlAttributes &, bool start)
{
    return levelOnly("Root", start);
}

int CUtilXmlEvntHdlr::elemRclInstrument(const QString &, const QXmlAttributes &, bool start)
{
    return levelOnly("Instrument", start);
}

int CUtilXmlEvntHdlr::elemRclModule(const QString &, const QXmlAttributes &attributes, bool start)
{
    levelOnly("Module", start);
    if (start && m_foreignModuleDepth == 0) {
        const int name = attributes.index(QStringLiteral("name"));
        if (name >= 0 && attributes.value(name) != m_moduleName)
            m_foreignModuleDepth = m_depth;
    }
    return 0;
}

int CUtilXmlEvntHdlr::elemRclUnknown(const QString &name, const QXmlAttributes &, bool start)
{
    return levelOnly(start ? name.toUtf8().constData() : "", start);
}

bool CUtilXmlEvntHdlr::incrLevel(const char *name)
{
    if (m_levels.size() < maxLevels)
        m_levels.emplace_back(name);
    ++m_depth;
    m_levelRefused = m_depth > maxLevels || m_foreignModuleDepth != 0;
    return !m_levelRefused;
}

void CUtilXmlEvntHdlr::decrLevel()
{
    if (m_depth == 0)
        return;
    if (m_depth == m_foreignModuleDepth)
        m_foreignModuleDepth = 0;
    if (static_cast<int>(m_levels.size()) == m_depth)
        m_levels.pop_back();
    --m_depth;
}

bool CUtilXmlEvntHdlr::isLevel(int level, const char *name) const
{
    const int index = m_depth - 1 + level;
    return index >= 0 && index < static_cast<int>(m_levels.size()) && m_levels[index] == name;
}

CUtilXmlEvntHdlr::Handler CUtilXmlEvntHdlr::handlerOf(const QString &name, bool *known) const
{
    const TableEntry *end = m_table + m_tableCount;
    const TableEntry *found =
        std::find_if(m_table, end, [&](const TableEntry &entry) { return entry.key == name; });
    *known = found != end;
    return *known ? found->handler : &CUtilXmlEvntHdlr::elemRclUnknown;
}

bool CUtilXmlEvntHdlr::dispatch(const QString &name, const QXmlAttributes &attributes, bool start)
{
    // Qt's reader loses its own strings when an exception passes through it, hence the guard out here.
    try {
        bool known = false;
        const Handler handler = handlerOf(name, &known);
        m_levelRefused = false;
        const int result = (this->*handler)(name, attributes, start);
        if (start && m_observer) {
            const Outcome outcome = !known           ? Outcome::Foreign
                                    : m_levelRefused ? Outcome::LevelRefused
                                    : result != 0    ? Outcome::Refused
                                                     : Outcome::Handled;
            m_observer(name, outcome, m_locator ? m_locator->lineNumber() : -1,
                       m_locator ? m_locator->columnNumber() : -1);
        }
        return true;
    } catch (const std::exception &exception) {
        m_reason = QStringLiteral("element %1: %2").arg(name, QString::fromLocal8Bit(exception.what()));
    } catch (...) {
        m_reason = QStringLiteral("element %1: unknown exception").arg(name);
    }
    return false;
}

int CUtilXmlEvntHdlr::levelOnly(const char *name, bool start)
{
    if (start)
        incrLevel(name);
    else
        decrLevel();
    return 0;
}

void CUtilXmlEvntHdlr::report(const char *kind, const QXmlParseException &exception) const
{
    // All at once: a file may be called "%2".
    const QString text = QStringLiteral("%1:%2:%3: XML %4: %5; what was read before it stays in effect")
                             .arg(m_fileName, QString::number(exception.lineNumber()),
                                  QString::number(exception.columnNumber()), kind, exception.message());
    if (Debug::isActive(1, 1, 0))
        Debug::println(1, 0, text, 1, 0, nullptr, -1);
    VQMUtility::traceMessage(text.toLatin1().constData());
}

} // namespace Orvia
