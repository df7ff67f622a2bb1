#include "examples/instrument/GuiDll/LanguageSwitch.h"

#include "examples/instrument/SettingsDatabase.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QMenu>
#include <QTranslator>

namespace Orvia {

namespace {

constexpr const char *languageKey = "panel/language";
constexpr const char *sourceLanguage = "English";

/// The language to begin with; the list is not empty.
QString initialLanguage(const LanguageSwitch::Languages &languages, const SettingsDatabase *settings)
{
    const QString remembered =
        settings != nullptr ? QString::fromStdString(settings->value(languageKey, "")) : QString();
    for (const QString &name : {remembered, QString(sourceLanguage)})
        if (languages.contains(name))
            return name;
    return languages.begin()->first;
}

} // namespace

LanguageSwitch::LanguageSwitch(const Languages &languages, QMenu *menu, SettingsDatabase *settings,
                               Report report)
    : m_settings(settings), m_report(std::move(report))
{
    QActionGroup *group = new QActionGroup(this);
    for (const auto &[name, file] : languages) {
        QAction *action = menu->addAction(name);
        action->setCheckable(true);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, action, file = file] {
            if (install(action, file) && m_settings != nullptr)
                m_settings->set({{languageKey, action->text().toStdString()}});
        });
        if (name == initialLanguage(languages, settings))
            install(action, file);
    }
}

LanguageSwitch::~LanguageSwitch()
{
    if (m_translator != nullptr)
        QCoreApplication::removeTranslator(m_translator.get());
}

bool LanguageSwitch::install(QAction *action, const QString &file)
{
    auto translator = std::make_unique<QTranslator>();
    const bool isLoaded = translator->load(file);
    if (isLoaded) {
        if (m_translator != nullptr)
            QCoreApplication::removeTranslator(m_translator.get());
        m_translator = std::move(translator);
        QCoreApplication::installTranslator(m_translator.get());
        m_chosen = action;
    } else {
        m_report("the translation " + file + " cannot be read");
        action->setChecked(false);
    }
    if (m_chosen != nullptr)
        m_chosen->setChecked(true);
    return isLoaded;
}

} // namespace Orvia
