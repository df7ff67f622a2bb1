#pragma once

#include "platform/Export.h"

class QWidget;

namespace Orvia {

/// The application's main widget: closing it quits the application. Null when there is none or it has been
/// destroyed. GUI thread.
VQM_EXPORT QWidget *mainWidget();
/// Not owned; null for none.
VQM_EXPORT void setMainWidget(QWidget *widget);

} // namespace Orvia
