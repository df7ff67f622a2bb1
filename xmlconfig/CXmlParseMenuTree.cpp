#include "xmlconfig/CXmlParseMenuTree.h"

#include "platform/VQMUtility.h"
#include "xmlconfig/RunReader.h"
#include "xmlconfig/SMenuTree.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace Orvia {

namespace {

using Reader = CXmlParseMenuTree;
using Frame = CUtilXmlEvntHdlr;

const Frame::TableEntry menuElements[] = {
    {"Group", static_cast<Frame::Handler>(&Reader::elemRclGroup)},
    {"Instrument", &Frame::elemRclInstrument},
    {"Item", static_cast<Frame::Handler>(&Reader::elemRclItem)},
    {"Menu", static_cast<Frame::Handler>(&Reader::elemRclMenu)},
    {"Module", &Frame::elemRclModule},
    {"Root", &Frame::elemRclRoot},
    {"Startup", static_cast<Frame::Handler>(&Reader::elemRclStartup)},
    {"SubGroup", static_cast<Frame::Handler>(&Reader::elemRclSubGroup)},
};

/// What a group, subgroup or item makes of its `id`: 0 or 1 is the handler's answer, -1 means go on.
int checkId(const QXmlAttributes &attributes)
{
    if (attributes.count() == 0)
        return 0;
    return attributes.index(QStringLiteral("id")) < 0 ? 1 : -1;
}

/// Never a null string: an empty id is a piece of the key all the same.
QString idOf(const QXmlAttributes &attributes)
{
    return QString("") + attributes.value("id");
}

QString keyOf(const QString &group, const QString &subGroup = {}, const QString &item = {})
{
    const QString none;
    return VQMUtility::buildString(group, subGroup, item, none, none, none, none, none, none, none, none,
                                   none, none, none, none);
}

} // namespace

CXmlParseMenuTree::CXmlParseMenuTree()
    : m_groupId(""), m_subGroupId(""), m_groupWeight(VQMUtility::getMenuLevelIndicator(0)),
      m_subGroupWeight(VQMUtility::getMenuLevelIndicator(1))
{
}

CXmlParseMenuTree::~CXmlParseMenuTree() = default;

bool CXmlParseMenuTree::parseProperties(const char *fileName)
{
    CXmlParseMenuTree reader;
    reader.useElementTable();
    return runReader(&reader, fileName);
}

void CXmlParseMenuTree::useElementTable()
{
    setElemTbl(std::size(menuElements), menuElements);
}

int CXmlParseMenuTree::elemRclStartup(const QString &, const QXmlAttributes &, bool start)
{
    return levelOnly("Startup", start);
}

int CXmlParseMenuTree::elemRclMenu(const QString &, const QXmlAttributes &, bool start)
{
    if (start)
        return incrLevel("Menu") ? startMenu() : 0;
    decrLevel();
    return 0;
}

int CXmlParseMenuTree::elemRclGroup(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (start)
        return incrLevel("Group") ? startGroup(attributes) : 0;
    decrLevel();
    return 0;
}

int CXmlParseMenuTree::elemRclSubGroup(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (start)
        return incrLevel("SubGroup") ? startSubGroup(attributes) : 0;
    decrLevel();
    return 0;
}

int CXmlParseMenuTree::elemRclItem(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (start)
        return incrLevel("Item") ? startItem(attributes) : 0;
    decrLevel();
    return 0;
}

int CXmlParseMenuTree::startMenu()
{
    if (!isLevel(-1, "Startup"))
        return 1;
    m_menu = new std::map<QString, SMenuTree *>;
    VQMUtility::setMenuDescription(m_menu);
    return 0;
}

int CXmlParseMenuTree::startGroup(const QXmlAttributes &attributes)
{
    if (m_menu == nullptr || !isLevel(-1, "Menu"))
        return 1;
    if (const int answer = checkId(attributes); answer >= 0)
        return answer;
    m_subGroup = 0;
    m_item = 0;
    ++m_group;
    m_groupId = idOf(attributes);
    enter(keyOf(m_groupId), attributes);
    return 0;
}

int CXmlParseMenuTree::startSubGroup(const QXmlAttributes &attributes)
{
    if (m_menu == nullptr || !isLevel(-1, "Group"))
        return 1;
    if (const int answer = checkId(attributes); answer >= 0)
        return answer;
    if (m_subGroup >= maxSubGroups)
        return 1;
    ++m_subGroup;
    m_item = 0;
    m_subGroupId = idOf(attributes);
    enter(keyOf(m_groupId, m_subGroupId), attributes);
    return 0;
}

int CXmlParseMenuTree::startItem(const QXmlAttributes &attributes)
{
    if (m_menu == nullptr || (!isLevel(-1, "SubGroup") && !isLevel(-1, "Group")))
        return 1;
    if (const int answer = checkId(attributes); answer >= 0)
        return answer;
    if (m_item >= maxItemNumber)
        return 1;
    m_item += 10;
    enter(keyOf(m_groupId, m_subGroupId, idOf(attributes)), attributes);
    return 0;
}

void CXmlParseMenuTree::enter(const QString &key, const QXmlAttributes &attributes)
{
    SMenuTree *&node = (*m_menu)[key];
    if (node == nullptr) // else a later element of the same key gives its values to the node that is there
        node = new SMenuTree;
    const qint64 position = qint64(m_groupWeight) * m_group + qint64(m_subGroupWeight) * m_subGroup + m_item;
    node->label = attributes.value("label");
    node->position = static_cast<int>(std::min<qint64>(position, std::numeric_limits<int>::max()));
    node->flag = false;
}

} // namespace Orvia
