#pragma once

#include "platform/ErrorManager.h"

#include <QCoreApplication>
#include <QDialog>

#include <functional>

class QPushButton;
class QTableWidget;

namespace Orvia {

/// The window of the errors that wait to be read, oldest first. Looks twice a second for new ones, hidden
/// too.
class ErrorList : public QDialog
{
    Q_DECLARE_TR_FUNCTIONS(ErrorList)

public:
    using Errors = QList<CErrorManager::Announcement>;

    /// `changed` is called whenever there are others than before.
    ErrorList(QWidget *parent, std::function<void(const Errors &errors)> changed);

    /// Looks now.
    void poll();

protected:
    void changeEvent(QEvent *event) override;

private:
    void fill();
    void retranslate();

    std::function<void(const Errors &)> m_changed;
    Errors m_errors;
    QTableWidget *m_table;
    QPushButton *m_clear;
    QPushButton *m_close;
};

} // namespace Orvia
