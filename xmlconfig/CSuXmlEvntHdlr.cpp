#include "xmlconfig/CSuXmlEvntHdlr.h"

#include "Startup/StartupErrors.h"
#include "Startup/VQMMainStartupImplementation.h"
#include "platform/ErrorManager.h"
#include "platform/HwAbstractionLayer.h"
#include "xmlconfig/RegKeyElement.h"

#include <QStringList>

#include <iterator>

namespace Orvia {

namespace {

using Reader = CSuXmlEvntHdlr;
using Frame = CUtilXmlEvntHdlr;

const Frame::TableEntry loadListElements[] = {
    {"Directory", static_cast<Frame::Handler>(&Reader::elemRclDirectory)},
    {"File", static_cast<Frame::Handler>(&Reader::elemRclFile)},
    {"Instrument", &Frame::elemRclInstrument},
    {"Module", &Frame::elemRclModule},
    {"ModuleLoadList", static_cast<Frame::Handler>(&Reader::elemRclModuleLoadList)},
    {"RegKey", static_cast<Frame::Handler>(&Reader::elemRclRegKey)},
    {"Root", &Frame::elemRclRoot},
    {"Startup", static_cast<Frame::Handler>(&Reader::elemRclStartup)},
};

bool isSeparator(QChar character)
{
    return character == '/' || character == '\\';
}

/// The name without the dots, slashes and backslashes at its front: nothing leads out of the directory.
QString withoutLeadingPath(const QString &name)
{
    int start = 0;
    while (start < name.size() && (name[start] == '.' || isSeparator(name[start])))
        ++start;
    return name.mid(start);
}

} // namespace

CSuXmlEvntHdlr::CSuXmlEvntHdlr() = default;

CSuXmlEvntHdlr::~CSuXmlEvntHdlr()
{
    m_startup = nullptr;
}

void CSuXmlEvntHdlr::useElementTable()
{
    setElemTbl(std::size(loadListElements), loadListElements);
}

int CSuXmlEvntHdlr::elemRclModuleLoadList(const QString &, const QXmlAttributes &, bool start)
{
    return levelOnly("ModuleLoadList", start);
}

int CSuXmlEvntHdlr::elemRclStartup(const QString &, const QXmlAttributes &, bool start)
{
    return levelOnly("Startup", start);
}

int CSuXmlEvntHdlr::elemRclDirectory(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (!start) {
        decrLevel();
        return 0;
    }
    if (!incrLevel("Directory") || !hasReadableAttributes(attributes))
        return 0;
    QString directory = attributes.value(QStringLiteral("nameLinux"));
    if (directory.isEmpty())
        return 0;
    if (!isSeparator(directory.back()))
        directory += '/';
    m_directory = directory;
    return 0;
}

int CSuXmlEvntHdlr::elemRclRegKey(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (!start) {
        decrLevel();
        return 0;
    }
    if (incrLevel("RegKey") && hasReadableAttributes(attributes) && isLevel(-1, "Startup"))
        applyRegKey(attributes);
    return 0;
}

int CSuXmlEvntHdlr::elemRclFile(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (!start) {
        decrLevel();
        return 0;
    }
    if (!incrLevel("File") || !hasReadableAttributes(attributes))
        return 0;
    const QString name = attributes.value(QStringLiteral("name"));
    // Before the place is looked at: unknown options of misplaced files are reported, too.
    if (!isFitted(attributes.value(QStringLiteral("option")), name))
        return 0;
    if (!name.isEmpty() && isLevel(-2, "ModuleLoadList") && m_startup != nullptr)
        m_startup->addLoadListFile(m_directory + withoutLeadingPath(name));
    return 0;
}

bool CSuXmlEvntHdlr::isFitted(const QString &options, const QString &fileName) const
{
    const QStringList names = options.split('|', Qt::SkipEmptyParts);
    if (names.isEmpty())
        return true;
    VQMHwRepository *repository = HwAbstractionLayer::m_repository;
    for (const QString &name : names) {
        const int option = repository != nullptr ? repository->findOption(name.toLatin1().constData(), 0)
                                                 : VQMHwRepository::unknownOption;
        if (option == VQMHwRepository::unknownOption)
            ErrorManager()->signal(StartupUnknownOption, "> " + name + " for module " + fileName);
        else if (repository->hasOption(static_cast<unsigned short>(option), 0))
            return true;
    }
    return false;
}

} // namespace Orvia
