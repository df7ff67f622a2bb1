#pragma once

#include "examples/instrument/GuiDll/ErrorList.h"
#include "examples/instrument/GuiDll/LanguageSwitch.h"
#include "examples/instrument/GuiDll/MenuBuilder.h"

#include <QCoreApplication>
#include <QMainWindow>

#include <memory>

class QLabel;
class QTabWidget;

namespace Orvia {

class OutputSketch;
class SettingsDatabase;
class SourcePanel;

/// The window of the instrument: menus, the controls of the source, pages of plug-ins, the last error.
/// Everything on the GUI thread.
class FrontPanelWindow : public QMainWindow
{
    Q_DECLARE_TR_FUNCTIONS(FrontPanel)

public:
    using Log = std::function<void(const QString &text)>;

    /// Takes menus and languages from the utility library's descriptions. `settings`, not owned, may be null.
    FrontPanelWindow(SettingsDatabase *settings, Log log);
    ~FrontPanelWindow() override;

    /// Shows the settings as they are stored now.
    void refresh();
    void addPage(QWidget *page);
    void removePage(QWidget *page);

protected:
    void changeEvent(QEvent *event) override;

private:
    void layOut();
    void buildMenus();
    QAction *action(const QString &shortcut, std::function<void()> work);
    MenuBuilder::Known knownEntries();
    void showErrorList();
    void showAbout();
    void showLastError(const ErrorList::Errors &errors);
    void retranslate();

    SettingsDatabase *m_settings;
    Log m_log;
    OutputSketch *m_sketch;
    SourcePanel *m_source;
    QTabWidget *m_pages;
    QLabel *m_lastError;
    ErrorList *m_errorList;
    ErrorList::Errors m_errors;
    std::unique_ptr<MenuBuilder> m_menus;
    std::unique_ptr<LanguageSwitch> m_languages;
};

} // namespace Orvia
