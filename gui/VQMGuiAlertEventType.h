#pragma once

#include <QEvent>
#include <QString>

namespace Orvia {

/// An alert on its way to the GUI thread.
class VQMGuiAlertEventType : public QEvent
{
public:
    VQMGuiAlertEventType(const QString &caption, const QString &text);
    ~VQMGuiAlertEventType() override;

    QString m_caption;
    QString m_text;
};

} // namespace Orvia
