#include "gui/EGuiEventType.h"
#include "gui/VQMGuiAlertEventType.h"
#include "gui/VQMMainGui.h"
#include "tests/unit/GuiFixture.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QThread>

#include <memory>
#include <thread>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QEvent::Type typeOf(int number)
{
    return static_cast<QEvent::Type>(number);
}

/// An application whose message boxes are noted as they open and closed by pressing their button.
class MainGuiTest : public GuiTest
{
protected:
    MainGuiTest()
    {
        QApplication::setQuitOnLastWindowClosed(false); // the closing of a box must not end the event loop
        application.installEventFilter(&boxes);
    }

    class Boxes : public QObject
    {
    public:
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            auto *box = qobject_cast<QMessageBox *>(watched);
            if (box != nullptr && event->type() == QEvent::Show) {
                EXPECT_EQ(box->icon(), QMessageBox::Critical);
                EXPECT_EQ(box->standardButtons(), QMessageBox::Ok);
                EXPECT_TRUE(box->isModal());
                EXPECT_EQ(box->parent(), nullptr);
                EXPECT_EQ(QThread::currentThread(), qApp->thread());
                opened.push_back((box->windowTitle() + " | " + box->text()).toStdString());
                QTimer::singleShot(0, box, [box] { box->button(QMessageBox::Ok)->click(); });
            }
            return false;
        }
        std::vector<std::string> opened;
    };

    /// Runs the event loop over all that has been posted to the object.
    void runPosted(QObject *receiver)
    {
        QTimer::singleShot(0, qApp,
                           [receiver] { QApplication::postEvent(receiver, new QEvent(typeOf(eQuit))); });
        EXPECT_TRUE(isQuit());
    }

    Boxes boxes;
};

TEST_F(MainGuiTest, ShowsAlertsOfAnyThreadInTheOrderPosted)
{
    VQMMainGui gui(&startup);
    for (const char *caption : {"first", "second"})
        std::thread([caption] { VQMMainGui::showAlert(caption, QString("text of ") + caption); }).join();
    EXPECT_EQ(startup.dumpError(10001, "third", "text"), 10001);
    EXPECT_EQ(startup.dumpError(10003, "not shown", "text"), 10003);
    EXPECT_THAT(boxes.opened, IsEmpty()); // the caller does not wait
    runPosted(&gui);
    EXPECT_THAT(boxes.opened,
                ElementsAre("first | text of first", "second | text of second", "third | text"));
    EXPECT_THAT(calls.of("alert"), IsEmpty());
}

TEST_F(MainGuiTest, QuitsWithAndWithoutAMessage)
{
    VQMMainGui gui(&startup);
    QApplication::postEvent(&gui, new QEvent(typeOf(eQuit)));
    EXPECT_TRUE(isQuit());
    EXPECT_THAT(boxes.opened, IsEmpty());
    QApplication::postEvent(&gui, new QEvent(typeOf(eMessageAndQuit)));
    EXPECT_TRUE(isQuit());
    EXPECT_THAT(boxes.opened, ElementsAre("caption | message"));
}

TEST_F(MainGuiTest, SwallowsEveryOtherEvent)
{
    struct Gui : VQMMainGui
    {
        using VQMMainGui::VQMMainGui;
        bool event(QEvent *event) override { return reached.push_back(event->type()), QObject::event(event); }
        std::vector<int> reached;
    } gui(&startup);
    for (int type :
         {999, 1000, 1003, 1005, static_cast<int>(QEvent::Timer), static_cast<int>(QEvent::User)}) {
        QEvent event(typeOf(type)); // 1003 that carries no alert, too
        EXPECT_TRUE(QApplication::sendEvent(&gui, &event)) << type;
    }
    EXPECT_THAT(gui.reached, IsEmpty());
    EXPECT_THAT(boxes.opened, IsEmpty());
    EXPECT_THAT(calls.all, IsEmpty());
}

TEST_F(MainGuiTest, AlertsGoToTheReceiverOrElseToTheHook)
{
    VQMMainGui::showAlert("before", "any");
    auto first = std::make_unique<VQMMainGui>(nullptr);
    EXPECT_EQ(VQMMainGui::receiver, first.get());
    auto second = std::make_unique<VQMMainGui>(nullptr);
    EXPECT_EQ(VQMMainGui::receiver, second.get());
    first.reset(); // is not the receiver any more
    EXPECT_EQ(VQMMainGui::receiver, second.get());
    VQMMainGui::showAlert("with", "receiver");
    runPosted(second.get());
    VQMMainGui::showAlert("inherited", "from its receiver");
    second.reset();
    EXPECT_EQ(VQMMainGui::receiver, nullptr);
    VQMMainGui::showAlert("after", "it");
    answers.hookInstalled = false;
    VQMMainGui::showAlert("no", "hook");
    EXPECT_THAT(calls.of("alert"),
                ElementsAre("before | any", "inherited | from its receiver", "after | it"));
    EXPECT_THAT(boxes.opened, ElementsAre("with | receiver"));
}

} // namespace
} // namespace Orvia
