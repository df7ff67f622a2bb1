#pragma once

#include "examples/instrument/GuiDll/Quantity.h"
#include "examples/instrument/SettingsDatabase.h"

#include <QWidget>

#include <functional>
#include <span>
#include <vector>

class QFormLayout;

namespace Orvia {

/// A row of a page: a number with its label.
struct SettingsPageRow
{
    const char *label; ///< to be translated
    Quantity quantity;
    int stepExponent; ///< the digit that the arrow keys change at first, as a power of ten
};

/// What a page shows. Texts are translated in the context and kept as pointers, as are the rows.
struct SettingsPageContent
{
    const char *context;
    const char *title;
    const char *switchLabel;
    NumberSetting switchSetting;
    std::span<const SettingsPageRow> rows;
};

/// A page of the front panel for a switch and some numbers, bound to the settings both ways. Its window title
/// is the page's name; texts follow the language. GUI thread; settings change on any.
class SettingsPage : public QWidget
{
public:
    /// `settings` outlives the page.
    SettingsPage(SettingsDatabase *settings, const SettingsPageContent &content);
    ~SettingsPage() override;

protected:
    void customEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void addSwitch(QFormLayout *form);
    void addNumber(QFormLayout *form, const SettingsPageRow &row);
    void store(const NumberSetting &setting, double value);
    void showSettings();
    void retranslate();

    SettingsDatabase *m_settings;
    const SettingsPageContent &m_content;
    std::vector<std::function<void()>> m_show;      ///< for each control: its setting
    std::vector<std::function<void()>> m_translate; ///< for each control: its text
    int m_subscription = 0;
};

} // namespace Orvia
