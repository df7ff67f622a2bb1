#pragma once

#include "platform/Export.h"

#include <QMainWindow>

namespace Orvia {

/// A top-level window that shows itself when the GUI thread's event loop next runs, however and on whatever
/// thread it is told to. Everything else happens on the GUI thread.
class VQM_EXPORT VQMStartupWindow : public QMainWindow
{
public:
    VQMStartupWindow();
    ~VQMStartupWindow() override;

    /// Any thread. Returns at once.
    void show();
    /// Deferred like show() when `visible`, else at once.
    void setVisible(bool visible) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace Orvia
