#pragma once

#include <QCoreApplication>
#include <QWidget>

#include <functional>

class QLabel;
class QPushButton;

namespace Orvia {

class NumberEditor;
class OutputSketch;
class SettingsDatabase;

/// The controls of the signal source, bound to the settings: what is entered is stored at once, and what is
/// shown is what is stored.
class SourcePanel : public QWidget
{
    Q_DECLARE_TR_FUNCTIONS(FrontPanel)

public:
    /// `settings`, not owned, may be null: the defaults are shown and nothing can be set. `sketch`, not
    /// owned, is kept up to date.
    SourcePanel(SettingsDatabase *settings, OutputSketch *sketch);

    /// Shows what is stored now.
    void refresh();
    void preset();
    void toggleOutput();
    void editFrequency();
    void editLevel();

    /// Called with what the user must know, already translated.
    std::function<void(const QString &message)> notice;

protected:
    void changeEvent(QEvent *event) override;

private:
    QWidget *card(QLabel *caption, NumberEditor *editor);
    void connectEditor(NumberEditor *editor, QLabel *caption);
    void store(const char *key, const std::string &value);
    void retranslate();

    SettingsDatabase *m_settings;
    OutputSketch *m_sketch;
    QLabel *m_frequencyCaption;
    QLabel *m_levelCaption;
    NumberEditor *m_frequency;
    NumberEditor *m_level;
    QPushButton *m_output;
};

} // namespace Orvia
