#pragma once

#include "platform/CUtilXmlEvntHdlr.h"
#include "tests/unit/StartupFixture.h"

#include <QFile>
#include <QXmlInputSource>

namespace Orvia {

/// Documents for the readers of the configuration file, and what the readers make of their elements.
class ReaderTest : public StartupTest
{
protected:
    using Texts = std::vector<std::string>;

    QByteArray write(const QByteArray &document, const char *name = "document.xml") const
    {
        QByteArray path = folder.filePath(name).toLocal8Bit();
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(document) == document.size());
        return path;
    }

    /// Lets a reader read a document that is well formed. The result has the elements of its table except the
    /// outer ones, in order, each with what its handler returned: "Group0 Item1".
    template <typename Reader>
    std::string resultsOf(const QByteArray &document, const std::function<void()> &afterElement = {})
    {
        std::string results;
        Reader reader;
        reader.useElementTable();
        reader.setModuleName("MainStartup");
        reader.setObserver([&](const QString &name, CUtilXmlEvntHdlr::Outcome outcome, int, int) {
            if (afterElement)
                afterElement();
            if (outcome == CUtilXmlEvntHdlr::Outcome::Foreign || name == "Root" || name == "Startup")
                return;
            const bool refused = outcome == CUtilXmlEvntHdlr::Outcome::Refused;
            results += (results.empty() ? "" : " ") + name.toStdString() + (refused ? "1" : "0");
        });
        QXmlInputSource source;
        source.setData(document);
        EXPECT_TRUE(reader.parse(&source)) << document.constData();
        return results;
    }
};

} // namespace Orvia
