#include "examples/instrument/GuiDll/MenuBuilder.h"

#include "xmlconfig/SMenuTree.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>

namespace Orvia {

namespace {

enum Depth
{
    Group = 1,
    SubGroup = 2,
    Item = 3,
};

} // namespace

QStringList MenuBuilder::build(const Description &description, QMenuBar *bar)
{
    std::vector<Entry> entries;
    for (const auto &[key, node] : description)
        entries.push_back({key.split(':'), node});
    std::stable_sort(entries.begin(), entries.end(), [](const Entry &one, const Entry &other) {
        return one.node->position < other.node->position;
    });

    // All menus first: where an id occurs twice, a menu may stand behind its own items.
    for (const Entry &entry : entries)
        if (entry.ids.size() <= SubGroup)
            createMenu(entry.ids.join(':'), entry, bar);

    QStringList problems;
    for (const Entry &entry : entries) {
        QMenu *parent = parentOf(entry.ids);
        if (entry.ids.size() == Group)
            bar->addMenu(m_menus.at(entry.ids.front()));
        else if (parent == nullptr || entry.ids.size() > Item)
            problems << "menu entry " + entry.ids.join(':') + " stands in no menu";
        else if (entry.ids.size() == SubGroup)
            parent->addMenu(m_menus.at(entry.ids.join(':')));
        else
            parent->addAction(actionOf(entry, parent, &problems));
    }
    retranslate();
    return problems;
}

void MenuBuilder::retranslate()
{
    for (const Label &label : m_labels) {
        label.action->setText(QCoreApplication::translate("Menu", label.source.toUtf8().constData()));
        if (!label.isKnown)
            label.action->setToolTip(
                QCoreApplication::translate("FrontPanel", "Not available on this instrument"));
    }
}

QMenu *MenuBuilder::createMenu(const QString &key, const Entry &entry, QWidget *parent)
{
    const auto known = m_known.menus.find(key);
    QMenu *menu = known != m_known.menus.end() ? known->second : new QMenu(parent);
    menu->setToolTipsVisible(true);
    m_labels.push_back({menu->menuAction(), entry.node->label, true});
    if (entry.node->label.isEmpty())
        m_labels.back().source = entry.ids.back();
    return m_menus[key] = menu;
}

/// An item that stands in a group directly may name a subgroup of an earlier group in its key.
QMenu *MenuBuilder::parentOf(const QStringList &ids) const
{
    for (qsizetype length = ids.size() - 1; length > 0; --length) {
        const auto found = m_menus.find(ids.first(length).join(':'));
        if (found != m_menus.end())
            return found->second;
    }
    return nullptr;
}

QAction *MenuBuilder::actionOf(const Entry &entry, QMenu *menu, QStringList *problems)
{
    const auto known = m_known.actions.find(entry.ids.front() + ':' + entry.ids.back());
    const bool isKnown = known != m_known.actions.end();
    QAction *action = isKnown ? known->second : new QAction(menu);
    if (!isKnown) {
        action->setEnabled(false);
        *problems << "menu entry " + entry.ids.join(':') + " is not known to the front panel";
    }
    const QString &label = entry.node->label;
    m_labels.push_back({action, label.isEmpty() ? entry.ids.back() : label, isKnown});
    return action;
}

} // namespace Orvia
