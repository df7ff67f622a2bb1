#include "examples/instrument/GuiDll/SourcePanel.h"

#include "examples/instrument/GuiDll/NumberEditor.h"
#include "examples/instrument/GuiDll/OutputSketch.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace Orvia {

SourcePanel::SourcePanel(SettingsDatabase *settings, OutputSketch *sketch)
    : m_settings(settings), m_sketch(sketch), m_frequencyCaption(new QLabel), m_levelCaption(new QLabel),
      m_frequency(new NumberEditor(frequencyQuantity, 6)), m_level(new NumberEditor(levelQuantity, 0)),
      m_output(new QPushButton)
{
    m_frequency->setObjectName("frequency");
    m_level->setObjectName("level");
    m_output->setObjectName("output");
    m_output->setCheckable(true);
    m_output->setFixedWidth(150);
    m_output->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    connect(m_output, &QPushButton::clicked, this,
            [this](bool checked) { store(outputKey, checked ? "1" : "0"); });
    m_frequency->entered = [this](double value) { store(frequencySetting.key, numberText(value)); };
    m_level->entered = [this](double value) { store(levelSetting.key, numberText(value)); };
    connectEditor(m_frequency, m_frequencyCaption);
    connectEditor(m_level, m_levelCaption);

    QHBoxLayout *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    layout->addWidget(card(m_frequencyCaption, m_frequency), 3);
    layout->addWidget(card(m_levelCaption, m_level), 2);
    layout->addWidget(m_output);
    setEnabled(m_settings != nullptr);
    retranslate();
}

void SourcePanel::refresh()
{
    double frequency = frequencySetting.defaultValue;
    double level = levelSetting.defaultValue;
    bool isOn = false;
    if (m_settings != nullptr) {
        frequency = storedNumber(*m_settings, frequencySetting);
        level = storedNumber(*m_settings, levelSetting);
        isOn = m_settings->value(outputKey, "0") == "1";
    }
    m_frequency->setValue(frequency);
    m_level->setValue(level);
    m_output->setChecked(isOn);
    m_output->setText(isOn ? tr("RF ON") : tr("RF OFF"));
    m_sketch->setOutput(frequency, level, isOn);
}

void SourcePanel::preset()
{
    if (m_settings != nullptr)
        m_settings->set(defaultSourceSettings());
    refresh();
}

void SourcePanel::toggleOutput()
{
    m_output->click();
}

void SourcePanel::editFrequency()
{
    m_frequency->setFocus(Qt::ShortcutFocusReason);
}

void SourcePanel::editLevel()
{
    m_level->setFocus(Qt::ShortcutFocusReason);
}

void SourcePanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

QWidget *SourcePanel::card(QLabel *caption, NumberEditor *editor)
{
    caption->setObjectName("caption");
    caption->setBuddy(editor);
    QFrame *frame = new QFrame;
    frame->setObjectName("card");
    QVBoxLayout *layout = new QVBoxLayout(frame);
    layout->addWidget(caption);
    layout->addWidget(editor);
    return frame;
}

void SourcePanel::connectEditor(NumberEditor *editor, QLabel *caption)
{
    const Quantity &quantity = editor == m_frequency ? frequencyQuantity : levelQuantity;
    editor->refused = [this, caption, &quantity] {
        notice(tr("%1: enter a value from %2 to %3")
                   .arg(caption->text().remove('&'), shortText(quantity, quantity.setting.minimum),
                        shortText(quantity, quantity.setting.maximum)));
    };
}

/// When it cannot be stored the Database module announces the error, and the old value is shown again.
void SourcePanel::store(const char *key, const std::string &value)
{
    m_settings->set({{key, value}});
    refresh();
}

void SourcePanel::retranslate()
{
    m_frequencyCaption->setText(tr("Fre&quency"));
    m_levelCaption->setText(tr("L&evel"));
    m_frequency->setToolTip(tr("Type a value with its unit and press Enter, or step the marked digit "
                               "with the wheel or the up and down keys"));
    m_level->setToolTip(m_frequency->toolTip());
    refresh();
}

} // namespace Orvia
