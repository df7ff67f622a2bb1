#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>

class QAction;
class QMenu;
class QTranslator;

namespace Orvia {

class SettingsDatabase;

/// The languages of the user interface as a menu. The chosen one is installed at once and remembered.
class LanguageSwitch : public QObject
{
public:
    using Languages = std::map<QString, QString>; ///< path of the translation file by name
    using Report = std::function<void(const QString &problem)>;

    /// Fills `menu` and installs the language that was chosen last, else English, else any. `settings`, not
    /// owned, may be null. A file that cannot be read is reported and changes nothing.
    LanguageSwitch(const Languages &languages, QMenu *menu, SettingsDatabase *settings, Report report);
    /// The source texts show again.
    ~LanguageSwitch() override;

private:
    bool install(QAction *action, const QString &file);

    SettingsDatabase *m_settings;
    Report m_report;
    QAction *m_chosen = nullptr;
    std::unique_ptr<QTranslator> m_translator; ///< the one installed
};

} // namespace Orvia
