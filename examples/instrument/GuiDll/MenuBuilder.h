#pragma once

#include <QStringList>

#include <map>
#include <vector>

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace Orvia {

struct SMenuTree;

/// Fills a menu bar from the menu description: groups become menus, subgroups submenus, items actions, in the
/// order of their positions. Labels are English source texts, translated in the context "Menu".
class MenuBuilder
{
public:
    using Description = std::map<QString, SMenuTree *>;

    /// What the entries do: actions by "group:item", whatever the subgroup, and ready-made menus by key. Not
    /// owned.
    struct Known
    {
        std::map<QString, QAction *> actions;
        std::map<QString, QMenu *> menus;
    };

    explicit MenuBuilder(Known known) : m_known(std::move(known)) {}

    /// Items that are not known are shown but cannot be chosen. The answer tells of those, and of entries
    /// left out because their menu is missing. The description is not needed afterwards.
    QStringList build(const Description &description, QMenuBar *bar);
    /// Takes up the labels of the language that is installed now.
    void retranslate();

private:
    struct Entry
    {
        QStringList ids;
        const SMenuTree *node;
    };
    struct Label
    {
        QAction *action;
        QString source;
        bool isKnown;
    };

    QMenu *createMenu(const QString &key, const Entry &entry, QWidget *parent);
    QMenu *parentOf(const QStringList &ids) const;
    QAction *actionOf(const Entry &entry, QMenu *menu, QStringList *problems);

    Known m_known;
    std::map<QString, QMenu *> m_menus; ///< by key
    std::vector<Label> m_labels;
};

} // namespace Orvia
