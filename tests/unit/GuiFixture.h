#pragma once

#include "gui/MainWidget.h"
#include "tests/unit/StartupFixture.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

namespace Orvia {

/// An application without a screen around each test. Windows left over go down with it.
class GuiTest : public StartupTest
{
protected:
    GuiTest() { QApplication::setQuitOnLastWindowClosed(false); } // whoever quits shall have meant it
    ~GuiTest() override
    {
        setMainWidget(nullptr);
        for (QWidget *window : QApplication::topLevelWidgets())
            delete window;
    }

    /// Runs the event loop until it is quit; false when nothing quits it in time.
    static bool isQuit(int milliseconds = 10000)
    {
        QTimer limit;
        QObject::connect(&limit, &QTimer::timeout, [] { QCoreApplication::exit(99); });
        limit.start(milliseconds);
        return QApplication::exec() == 0;
    }

    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QApplication application{argc, argv};
};

} // namespace Orvia
