#pragma once

#include "platform/CUtilXmlEvntHdlr.h"

#include <map>

namespace Orvia {

struct SMenuTree;

/// Reads the menu tree: groups, subgroups and items become one map from key ("group", "group:subgroup",
/// "group:subgroup:item") to label and position.
class VQM_EXPORT CXmlParseMenuTree : public CUtilXmlEvntHdlr
{
public:
    static constexpr int maxSubGroups = 99;   ///< in one group
    static constexpr int maxItemNumber = 990; ///< in one subgroup, or in a group before its first one

    CXmlParseMenuTree();
    ~CXmlParseMenuTree() override;

    /// Hands the map to the utility library and fills it while reading. True when the whole document was
    /// read. GUI thread.
    static bool parseProperties(const char *fileName);
    /// Sets this reader's own table.
    void useElementTable();

    int elemRclStartup(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclMenu(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclGroup(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclSubGroup(const QString &name, const QXmlAttributes &attributes, bool start);
    int elemRclItem(const QString &name, const QXmlAttributes &attributes, bool start);

private:
    int startMenu();
    int startGroup(const QXmlAttributes &attributes);
    int startSubGroup(const QXmlAttributes &attributes);
    int startItem(const QXmlAttributes &attributes);
    void enter(const QString &key, const QXmlAttributes &attributes);

    std::map<QString, SMenuTree *> *m_menu = nullptr; ///< the utility library's, with its nodes
    int m_group = 0;
    int m_subGroup = 0;
    int m_item = 0;
    QString m_groupId;
    QString m_subGroupId;
    int m_groupWeight;
    int m_subGroupWeight;
};

} // namespace Orvia
