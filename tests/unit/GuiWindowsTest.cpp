#include "gui/EGuiEventType.h"
#include "gui/MainWidget.h"
#include "gui/VQMMainGui.h"
#include "gui/VQMStartupWindow.h"
#include "tests/unit/GuiFixture.h"

#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QScrollBar>
#include <QTextEdit>
#include <QThread>

#include <memory>
#include <thread>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string notesProperty = "StartupProcess/ReleaseNotes";

constexpr int other = 1005; ///< an event that is nobody's

/// A startup window that notes what reaches it.
struct Window : VQMStartupWindow
{
    bool event(QEvent *event) override
    {
        const int type = event->type();
        if (type == QEvent::Show || type == eShowWindow || type == other) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            reached.push_back(type);
        }
        return VQMStartupWindow::event(event);
    }
    std::vector<int> reached;
};

class GuiWindowsTest : public GuiTest
{
protected:
    /// The visible release notes windows once the event loop has run.
    std::vector<QWidget *> notesOf(const QString &file, int callCount = 1)
    {
        answers.properties[notesProperty] = file;
        for (int i = 0; i < callCount; ++i)
            gui.displayReleaseNotes();
        EXPECT_THAT(visible(), IsEmpty());                            // before the loop runs
        for (const QWidget *window : QApplication::topLevelWidgets()) // a screen may move them later
            EXPECT_EQ(window->geometry(), QRect(0, 20, 800, 580));
        QApplication::processEvents();
        return visible();
    }
    static std::vector<QWidget *> visible()
    {
        std::vector<QWidget *> windows;
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->isVisible())
                windows.push_back(window);
        }
        return windows;
    }
    QString write(const char *file, const QByteArray &text) const
    {
        QFile notes(folder.filePath(file));
        EXPECT_TRUE(notes.open(QIODevice::WriteOnly) && notes.write(text) == text.size());
        return notes.fileName();
    }

    VQMMainGui gui{&startup};
};

TEST_F(GuiWindowsTest, StartupWindowsAreShownByTheEventLoopWhoeverAsks)
{
    const std::vector<std::function<void(Window *)>> ways = {
        [](Window *window) { window->show(); },
        [](Window *window) { static_cast<QWidget *>(window)->show(); },
        [](Window *window) { window->setVisible(true); },
    };
    for (const auto &show : ways) {
        for (bool fromOtherThread : {false, true}) {
            Window window;
            if (fromOtherThread)
                std::thread(show, &window).join();
            else
                show(&window);
            EXPECT_FALSE(window.isVisible());
            EXPECT_THAT(window.reached, IsEmpty());
            QApplication::processEvents();
            EXPECT_TRUE(window.isVisible());
            EXPECT_THAT(window.reached, ElementsAre(QEvent::Show)); // and its own event is swallowed
            static_cast<QWidget *>(&window)->hide();                // at once
            EXPECT_FALSE(window.isVisible());
        }
    }
}

TEST_F(GuiWindowsTest, StartupWindowsTakeShowsTwiceTooLateAndOtherEventsAsUsual)
{
    Window window;
    EXPECT_TRUE(window.isWindow());
    window.show();
    window.show();
    QEvent event(static_cast<QEvent::Type>(other));
    QApplication::sendEvent(&window, &event);
    QApplication::processEvents();
    EXPECT_TRUE(window.isVisible());
    EXPECT_THAT(window.reached, ElementsAre(other, QEvent::Show));
    auto gone = std::make_unique<Window>();
    gone->show();
    gone.reset();
    QApplication::processEvents();
    EXPECT_THAT(visible(), ElementsAre(&window));
}

TEST_F(GuiWindowsTest, ClosingTheMainWidgetQuitsUnlessItRefuses)
{
    struct Stubborn : QWidget
    {
        void closeEvent(QCloseEvent *event) override { event->setAccepted(accepts); }
        bool accepts = false;
    } widget;
    QWidget bystander;
    auto next = std::make_unique<QWidget>();
    EXPECT_EQ(mainWidget(), nullptr);
    setMainWidget(&widget);
    EXPECT_EQ(mainWidget(), &widget);
    widget.show();
    bystander.show();
    const auto close = [](QWidget *closed, bool quits) {
        QTimer::singleShot(0, closed, [closed] { closed->close(); });
        EXPECT_EQ(isQuit(quits ? 10000 : 50), quits);
    };
    close(&widget, false);    // refuses
    close(&bystander, false); // is nobody
    widget.hide();
    EXPECT_FALSE(isQuit(50)); // hiding is not closing
    widget.show();
    widget.accepts = true;
    close(&widget, true);

    widget.show();
    next->show();
    setMainWidget(next.get());
    close(&widget, false); // not the main widget any more
    close(next.get(), true);
    next.reset();
    EXPECT_EQ(mainWidget(), nullptr);
    setMainWidget(&bystander);
    setMainWidget(nullptr);
    EXPECT_EQ(mainWidget(), nullptr);
}

TEST_F(GuiWindowsTest, ReleaseNotesStandInAWindowOfTheirOwn)
{
    const QByteArray text = "first\n" + QByteArray(1000, 'x') + "\n" + QByteArray("line\n").repeated(200);
    const std::vector<QWidget *> windows = notesOf(write("notes.txt", text), 2);
    ASSERT_EQ(windows.size(), 2u);
    for (QWidget *window : windows) {
        EXPECT_NE(dynamic_cast<VQMStartupWindow *>(window), nullptr);
        EXPECT_EQ(window->windowTitle(), "VQM Firmware Demonstration Notes");
        auto *view = window->findChild<QTextEdit *>();
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(view->toPlainText().toUtf8(), text);
        EXPECT_EQ(view->size(), window->size()); // no margin
        const QFont font = view->font();
        EXPECT_EQ(font.family(), "Courier");
        EXPECT_EQ(font.pointSize(), 10);
        EXPECT_EQ(font.weight(), QFont::Normal);
        EXPECT_FALSE(font.italic());
        EXPECT_GT(view->horizontalScrollBar()->maximum(), 0); // not wrapped
        EXPECT_EQ(view->textCursor().position(), 0);
        EXPECT_FALSE(view->isReadOnly());
    }
    windows[0]->close(); // only hides it
    EXPECT_THAT(visible(), ElementsAre(windows[1]));
    EXPECT_TRUE(QApplication::topLevelWidgets().contains(windows[0]));
}

TEST_F(GuiWindowsTest, ReleaseNotesNeedAFileThatCanBeRead)
{
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    gui.displayReleaseNotes(); // not set
    EXPECT_THAT(calls.of("asked"), ElementsAre(notesProperty + ", else y:\\VQM-Gui\\vqm_release_notes.txt"));
    for (const char *file : {"<null>", "", "no such file", "."}) {
        write("<null>", "off all the same");
        EXPECT_THAT(notesOf(file), IsEmpty()) << file;
    }
    for (const char *file : {"<NULL>", "y:\\VQM-Gui\\vqm_release_notes.txt"}) { // an empty one will do
        write(file, "");
        const std::vector<QWidget *> windows = notesOf(file);
        ASSERT_EQ(windows.size(), 1u) << file;
        EXPECT_EQ(windows[0]->findChild<QTextEdit *>()->toPlainText(), "");
        delete windows[0];
    }
    EXPECT_THAT(calls.of({"debug", "alert", "error"}), IsEmpty());
}

} // namespace
} // namespace Orvia
