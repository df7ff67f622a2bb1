#include "examples/instrument/Extension/SettingsPage.h"

#include "examples/instrument/GuiDll/NumberEditor.h"

#include <QApplication>
#include <QCheckBox>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>

namespace Orvia {

SettingsPage::SettingsPage(SettingsDatabase *settings, const SettingsPageContent &content)
    : m_settings(settings), m_content(content)
{
    auto *form = new QFormLayout(this);
    form->setContentsMargins(16, 16, 16, 16);
    form->setSpacing(14);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    addSwitch(form);
    for (const SettingsPageRow &row : content.rows)
        addNumber(form, row);
    m_subscription = settings->subscribe(
        [this](const SettingsMap &) { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); });
    showSettings();
    retranslate();
}

SettingsPage::~SettingsPage()
{
    m_settings->unsubscribe(m_subscription);
}

/// Settings have changed, on whatever thread.
void SettingsPage::customEvent(QEvent * /*event*/)
{
    showSettings();
}

void SettingsPage::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        retranslate();
}

void SettingsPage::addSwitch(QFormLayout *form)
{
    auto *box = new QCheckBox(this);
    form->addRow(box);
    connect(box, &QCheckBox::clicked, this, [this](bool on) { store(m_content.switchSetting, on ? 1 : 0); });
    m_show.push_back(
        [this, box] { box->setChecked(storedNumber(*m_settings, m_content.switchSetting) != 0); });
    m_translate.push_back(
        [this, box] { box->setText(QCoreApplication::translate(m_content.context, m_content.switchLabel)); });
}

void SettingsPage::addNumber(QFormLayout *form, const SettingsPageRow &row)
{
    auto *label = new QLabel(this);
    auto *editor = new NumberEditor(row.quantity, row.stepExponent);
    label->setBuddy(editor);
    form->addRow(label, editor);
    editor->entered = [this, &row](double value) { store(row.quantity.setting, value); };
    editor->refused = [] { QApplication::beep(); };
    m_show.push_back(
        [this, editor, &row] { editor->setValue(storedNumber(*m_settings, row.quantity.setting)); });
    m_translate.push_back(
        [this, label, &row] { label->setText(QCoreApplication::translate(m_content.context, row.label)); });
}

/// A value that is refused gives way to the one that holds.
void SettingsPage::store(const NumberSetting &setting, double value)
{
    m_settings->set({{setting.key, numberText(value)}});
    showSettings();
}

void SettingsPage::showSettings()
{
    for (const auto &show : m_show)
        show();
}

void SettingsPage::retranslate()
{
    setWindowTitle(QCoreApplication::translate(m_content.context, m_content.title));
    for (const auto &translate : m_translate)
        translate();
}

} // namespace Orvia
