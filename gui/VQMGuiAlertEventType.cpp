#include "gui/VQMGuiAlertEventType.h"

#include "gui/EGuiEventType.h"

namespace Orvia {

VQMGuiAlertEventType::VQMGuiAlertEventType(const QString &caption, const QString &text)
    : QEvent(static_cast<QEvent::Type>(eAlert)), m_caption(caption), m_text(text)
{
}

VQMGuiAlertEventType::~VQMGuiAlertEventType() = default;

} // namespace Orvia
