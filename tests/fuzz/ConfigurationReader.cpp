#include "Startup/VQMIntegrationStartup.h"
#include "diagnosis/ConfigurationScanner.h"
#include "platform/ErrorManager.h"
#include "platform/HwAbstractionLayer.h"
#include "platform/VQMProperties.h"
#include "platform/VQMUtility.h"
#include "tests/fuzz/Fuzz.h"
#include "xmlconfig/CXmlParseLanguages.h"
#include "xmlconfig/CXmlParseMasterRegKeys.h"
#include "xmlconfig/CXmlParseMenuTree.h"
#include "xmlconfig/RunReader.h"
#include "xmlconfig/SMenuTree.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

// One of the four readers of the configuration, which READER names: the input is a document. Read twice it is
// the same; the scanner of the configuration check, which has rules of its own, foretells what the reader
// takes; and what is wrong has a place.

namespace Orvia {

namespace {

/// What became of a document.
struct Reading
{
    QStringList taken;
    QStringList errors; ///< that were said of the document

    bool operator==(const Reading &) const = default;
};

class ErrorCollector final : public VQMTraceListener
{
public:
    explicit ErrorCollector(QStringList *errors) : m_errors(errors) { VQMUtility::setTraceListener(this); }
    ~ErrorCollector() override { VQMUtility::setTraceListener(nullptr); }
    void traced(std::int64_t, int, const char *, const char *text) override
    {
        if (QLatin1String(text).contains(QLatin1String(": XML ")))
            m_errors->append(QString::fromLatin1(text));
    }

private:
    QStringList *m_errors;
};

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

constexpr const char *masterKeys[] = {"DefaultMaster", "PreferedMaster", "RequiredMemoryMB"};

QStringList rows(const std::map<QString, QString> &values)
{
    QStringList list;
    for (const auto &[key, value] : values)
        list.append(key + " = " + value);
    return list;
}

// The readers: read() returns whether the document was read to its end, none if that is not said.

struct LoadList
{
    static std::optional<bool> read(const char *fileName, QStringList *taken)
    {
        *taken = LoadListCollector(fileName).files;
        return std::nullopt;
    }
    static QStringList expected(const char *, const ConfigurationContents &contents)
    {
        return contents.files;
    }
};

struct MenuTree
{
    static std::optional<bool> read(const char *fileName, QStringList *taken)
    {
        VQMUtility::setMenuDescription(nullptr);
        const bool complete = CXmlParseMenuTree::parseProperties(fileName);
        if (VQMUtility::menuDescription() != nullptr) {
            for (const auto &[key, entry] : *VQMUtility::menuDescription()) {
                require(entry->position >= 0, "the positions of menu entries are not negative");
                taken->append(key + " = " + entry->label);
            }
        }
        return complete;
    }
    static QStringList expected(const char *, const ConfigurationContents &contents)
    {
        return rows(contents.menu);
    }
};

struct Languages
{
    static std::optional<bool> read(const char *fileName, QStringList *taken)
    {
        VQMUtility::setLanguageList(nullptr);
        const bool complete = CXmlParseLanguages::parseProperties(fileName);
        if (VQMUtility::languageList() != nullptr)
            *taken = rows(*VQMUtility::languageList());
        return complete;
    }
    static QStringList expected(const char *, const ConfigurationContents &contents)
    {
        return rows(contents.languages);
    }
};

struct MasterRegKeys
{
    static std::optional<bool> read(const char *fileName, QStringList *taken)
    {
        clear();
        const bool complete = CXmlParseMasterRegKeys::parseProperties(fileName);
        *taken = stored();
        return complete;
    }
    /// What the reader of the load list makes of the same keys.
    static QStringList expected(const char *fileName, const ConfigurationContents &)
    {
        clear();
        const LoadListCollector reader(fileName);
        return stored();
    }

private:
    static void clear()
    {
        for (const char *key : masterKeys)
            VQMProperties::setStringProperty("StartupProcess", key, "not set", 0);
    }
    static QStringList stored()
    {
        QStringList values;
        for (const char *key : masterKeys)
            values.append(VQMProperties::getStringProperty("StartupProcess", key, QString(), 0, nullptr));
        return values;
    }
};

Reading readDocument(const InputFile &file)
{
    Reading reading;
    const ErrorCollector collector(&reading.errors);
    const std::optional<bool> complete = READER::read(file.name(), &reading.taken);
    require(!complete || *complete == reading.errors.isEmpty(),
            "a document is read to its end if nothing is wrong with it, and only then");
    return reading;
}

void checkErrors(const InputFile &file, const QStringList &errors)
{
    static const QRegularExpression place(QRegularExpression::escape(file.name()) +
                                          ":[1-9]\\d*:[1-9]\\d*: XML error: .");
    require(errors.size() <= 1, "there is one error at most, which ends the reading");
    require(errors.isEmpty() || errors[0].contains(place), "an error has the document's name and a place");
}

void checkFindings(const Findings &findings, bool complete)
{
    static const QStringList ending = {"not-well-formed", "document-type", "nesting-too-deep"};
    int ends = 0;
    for (const Finding &finding : findings) {
        const QString text = toText(finding);
        require(!finding.rule.isEmpty() && !finding.text.isEmpty(), "a finding has a rule and a text");
        require(std::none_of(text.begin(), text.end(),
                             [](QChar c) { return c.category() == QChar::Other_Control; }),
                "a finding is one line of text");
        require(finding.line >= 0 && (finding.line == 0) == (finding.column == 0),
                "a place is a line and a column");
        if (!ending.contains(finding.rule))
            continue;
        require(finding.line > 0, "what ends the reading has a place");
        ++ends;
    }
    require(ends == (complete ? 0 : 1), "there is a finding for what ends the reading");
}

const InputFile &prepare(const std::uint8_t *data, std::size_t size)
{
    static InputFile file;
    static const bool once = [] {
        VQMProperties::setIntegerProperty("DebugServer", "level.1", 0, 0);
        VQMProperties::setStringProperty("Hardware", "knownOptions", "K1|K2", 0);
        VQMProperties::setStringProperty("Hardware", "installedOptions", "K1", 0);
        HwAbstractionLayer::createHostRepository();
        return true;
    }();
    require(once, "the services are there");
    file.write(data, size);
    return file;
}

} // namespace

} // namespace Orvia

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace Orvia;
    const TimeLimit limit;
    const InputFile &file = prepare(data, size);
    const Reading reading = readDocument(file);
    require(readDocument(file) == reading, "the document read twice is the same");
    checkErrors(file, reading.errors);

    if (size > maxDocumentSize) // which the scanner is not asked about
        return 0;
    ConfigurationScanner scanner(file.name());
    scanner.scan({reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)});
    require(scanner.expected().complete == reading.errors.isEmpty(),
            "the scanner and the reader agree whether the document is well formed");
    require(READER::expected(file.name(), scanner.expected()) == reading.taken,
            "the reader takes what is foretold");
    checkFindings(scanner.findings(), scanner.expected().complete);
    ErrorManager()->destroyAllAnnouncements(); // the unknown options
    return 0;
}
