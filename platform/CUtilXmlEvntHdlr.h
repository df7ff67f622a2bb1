#pragma once

#include "platform/Export.h"
#include "xmlconfig/CSearchTblPair.h"

#include <QString>
#include <QXmlDefaultHandler>

#include <functional>
#include <string>
#include <vector>

namespace Orvia {

/// The frame of the XML readers: receives Qt's SAX events, keeps the stack of open elements (levels) and
/// hands every element start and end to a handler found by the element's name in the reader's table.
///
/// A handler calls incrLevel() with its element's name first thing at the start, does nothing more when that
/// is false, and calls decrLevel() at the end in any case. It returns 0 for an element taken or ignored, 1
/// for one refused; the parse goes on after either.
///
/// Any input ends in bounded time and memory: document type declarations and nesting past maxDepth end the
/// parse with an error. One object serves one parse on one thread.
class VQM_EXPORT CUtilXmlEvntHdlr : public QXmlDefaultHandler
{
public:
    using Handler = int (CUtilXmlEvntHdlr::*)(const QString &name, const QXmlAttributes &attributes,
                                              bool start);
    using TableEntry = CSearchTblPair<QString, Handler>;

    static constexpr int maxLevels = 64; ///< deeper elements are refused by incrLevel()
    static constexpr int maxDepth = 256; ///< deeper documents are refused as a whole

    CUtilXmlEvntHdlr();
    ~CUtilXmlEvntHdlr() override;

    bool startElement(const QString &namespaceUri, const QString &localName, const QString &qualifiedName,
                      const QXmlAttributes &attributes) override;
    bool endElement(const QString &namespaceUri, const QString &localName,
                    const QString &qualifiedName) override;
    bool startDTD(const QString &name, const QString &publicId, const QString &systemId) override;
    void setDocumentLocator(QXmlLocator *locator) override;
    bool warning(const QXmlParseException &exception) override;
    bool error(const QXmlParseException &exception) override;
    bool fatalError(const QXmlParseException &exception) override;
    QString errorString() const override;

    // The outer elements. A Module with a name other than setModuleName()'s refuses all levels inside it.
    virtual int elemRclRoot(const QString &name, const QXmlAttributes &attributes, bool start);
    virtual int elemRclInstrument(const QString &name, const QXmlAttributes &attributes, bool start);
    virtual int elemRclModule(const QString &name, const QXmlAttributes &attributes, bool start);
    /// Elements that the table does not hold.
    virtual int elemRclUnknown(const QString &name, const QXmlAttributes &attributes, bool start);

    /// The table is neither copied nor owned.
    void setElemTbl(int count, const TableEntry *table);
    void setModuleName(const QString &name) { m_moduleName = name; }
    /// The name that syntax errors are reported with.
    void setFileName(const QString &name) { m_fileName = name; }

    /// Reads the whole source; true when the document was read to its end without an error. What handlers
    /// have done before an error stays done. Throws nothing.
    bool parse(const QXmlInputSource *source);

    bool incrLevel(const char *name);
    void decrLevel();
    /// Whether the open element `level` levels outside the current one (0 is the current one itself, -1 its
    /// parent) is called `name`.
    bool isLevel(int level, const char *name) const;

    /// What became of an element at its start.
    enum class Outcome
    {
        Handled,      ///< its handler returned 0
        Refused,      ///< its handler returned 1
        LevelRefused, ///< it stands too deep or inside another module's section
        Foreign,      ///< the table does not hold it
    };
    using Observer = std::function<void(const QString &name, Outcome outcome, int line, int column)>;
    /// Told of every element start, after its handler.
    void setObserver(Observer observer) { m_observer = std::move(observer); }

protected:
    /// What a handler does for an element that only takes up a level.
    int levelOnly(const char *name, bool start);

private:
    Handler handlerOf(const QString &name, bool *known) const;
    bool dispatch(const QString &name, const QXmlAttributes &attributes, bool start);
    void report(const char *kind, const QXmlParseException &exception) const;

    const TableEntry *m_table = nullptr;
    int m_tableCount = 0;
    QString m_moduleName;
    QString m_fileName;
    QString m_reason; ///< why a handler of this class ended the parse
    QXmlLocator *m_locator = nullptr;
    Observer m_observer;
    std::vector<std::string> m_levels; ///< names of the innermost open levels that fit
    int m_depth = 0;                   ///< open levels, refused ones included
    int m_foreignModuleDepth = 0;      ///< depth of another module's section, 0 outside
    bool m_levelRefused = false;
};

} // namespace Orvia
