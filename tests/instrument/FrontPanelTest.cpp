#include "examples/instrument/FrontPanel.h"
#include "examples/instrument/SettingsDatabase.h"
#include "platform/ErrorManager.h"
#include "platform/VQMProperties.h"
#include "platform/VQMSharedLibrary.h"
#include "platform/VQMUtility.h"
#include "xmlconfig/CXmlParseLanguages.h"
#include "xmlconfig/CXmlParseMenuTree.h"
#include "xmlconfig/SMenuTree.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <atomic>
#include <memory>
#include <thread>

namespace Orvia {

namespace {

QStringList textsOf(const QList<QAction *> &actions)
{
    QStringList texts;
    for (const QAction *action : actions)
        texts << action->text().remove('&');
    return texts;
}

/// Runs `work` on another thread while this one serves events, as it does while modules go down.
void onOtherThread(const std::function<void()> &work)
{
    std::atomic<bool> isDone = false;
    std::thread thread([&] {
        work();
        isDone = true;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return isDone.load(); }));
    thread.join();
}

/// A module library with its object.
struct Module
{
    Module(const char *file, int id)
    {
        library.open(file, true, false);
        const auto create =
            reinterpret_cast<CreateInstanceFunction>(library.getProcAddress(createInstanceSymbol));
        object.reset(static_cast<VQMDllModuleInterface *>(create(id)));
    }
    VQMDllModuleInterface *operator->() const { return object.get(); }

    VQMSharedLibrary library;
    std::unique_ptr<VQMDllModuleInterface> object;
};

} // namespace

/// The Gui module with its window and the Database module, brought up and clicked through.
class FrontPanelTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QFile properties(m_folder.filePath("test.ini"));
        ASSERT_TRUE(properties.open(QIODevice::WriteOnly));
        properties.write("[Instrument]\nManufacturer=Orvia\nModel=SG-100\n[Database]\nfile=test.sqlite\n");
        properties.close();
        QString error;
        ASSERT_TRUE(VQMProperties::load(properties.fileName(), &error)) << error.toStdString();
        ErrorManager()->destroyAllAnnouncements();
        ASSERT_TRUE(CXmlParseMenuTree::parseProperties(INSTRUMENT_XML));
        ASSERT_TRUE(CXmlParseLanguages::parseProperties(INSTRUMENT_XML));
        ASSERT_EQ(database->initialize(&anchor, -1), 0);
        anchor.databaseModule = database.object.get();
        anchor.guiModule = gui.object.get();
    }

    void start()
    {
        ASSERT_EQ(gui->initialize(&anchor, -1), 0);
        gui->startGui(&anchor);
        window = qobject_cast<QMainWindow *>(gui->getMainWidget());
        ASSERT_TRUE(window != nullptr && QTest::qWaitForWindowExposed(window));
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }

    void TearDown() override
    {
        onOtherThread([this] {
            gui->terminate(&anchor);
            gui.object.reset();
            database->terminate(&anchor);
        });
        EXPECT_TRUE(window.isNull());
    }

    SettingsDatabase *settings() { return SettingsDatabase::of(&anchor); }
    QLineEdit *editor(const char *name) { return window->findChild<QLineEdit *>(name); }
    std::string stored(const char *key) { return settings()->value(key, "none"); }

    void type(const char *name, const char *text)
    {
        QTest::mouseClick(editor(name), Qt::LeftButton);
        QTest::keyClicks(editor(name), text);
        QTest::keyClick(editor(name), Qt::Key_Return);
    }

    /// The action whose texts in the menus are `path`.
    QAction *action(const QStringList &path)
    {
        QList<QAction *> actions = window->menuBar()->actions();
        QAction *found = nullptr;
        for (const QString &text : path) {
            const qsizetype index = textsOf(actions).indexOf(text);
            if (index < 0) {
                ADD_FAILURE() << "no " << path.join('>').toStdString() << " in "
                              << textsOf(actions).join(", ").toStdString();
                return nullptr;
            }
            found = actions[index];
            actions = found->menu() != nullptr ? found->menu()->actions() : QList<QAction *>();
        }
        return found;
    }

    void expectNothingCutOff();
    void expectDistinctMnemonics(const QList<QAction *> &actions);

    QTemporaryDir m_folder;
    VQMAnchorInterface anchor = {};
    Module database{DATABASE_MODULE, VQMDatabaseId};
    Module gui{GUI_MODULE, VQMGuiId};
    QPointer<QMainWindow> window;
};

TEST_F(FrontPanelTest, TypedValuesAreStored)
{
    start();
    type("frequency", "2.4g");
    EXPECT_EQ(stored("source/frequency"), "2400000000");
    EXPECT_EQ(editor("frequency")->text().remove(QChar(0x2009)), "2.40000000000 GHz");
    type("frequency", "5"); // in the unit shown
    EXPECT_EQ(stored("source/frequency"), "5000000000");
    type("frequency", "1,1 MHz"); // 1.1 times a million is not the nearest number to 1.1 MHz
    EXPECT_EQ(stored("source/frequency"), "1100000");
    type("level", "-101.255");
    EXPECT_EQ(stored("source/level"), "-101.26");

    for (const char *text : {"7 GHz", "99.9 kHz", "1 dBm", "abc", "1e999", "", "1.2.3 GHz", "nan"}) {
        type("frequency", text);
        QTest::keyClick(editor("frequency"), Qt::Key_Escape);
        EXPECT_EQ(stored("source/frequency"), "1100000") << text;
        EXPECT_TRUE(editor("frequency")->text().endsWith("MHz")) << text;
    }
    type("frequency", "7 GHz");
    EXPECT_EQ(editor("frequency")->text(), "7 GHz"); // stays for correction
    EXPECT_EQ(window->statusBar()->currentMessage(), "Frequency: enter a value from 100 kHz to 6 GHz");
    settings()->set({{"source/frequency", "3000000"}});
    QCoreApplication::processEvents();
    EXPECT_EQ(editor("frequency")->text(), "7 GHz");
    QTest::mouseClick(editor("level"), Qt::LeftButton);
    EXPECT_EQ(editor("frequency")->text().remove(QChar(0x2009)), "3.00000000 MHz");
}

TEST_F(FrontPanelTest, TheMarkedDigitIsStepped)
{
    start();
    type("level", "9.5");
    QLineEdit *level = editor("level");
    EXPECT_EQ(level->selectedText(), "9");
    QTest::keyClick(level, Qt::Key_Up);
    EXPECT_EQ(stored("source/level"), "10.5");
    EXPECT_EQ(level->selectedText(), "0"); // the same digit, further right
    QTest::keyClick(level, Qt::Key_Right); // over the point
    QTest::keyClick(level, Qt::Key_Right);
    QTest::keyClick(level, Qt::Key_Right); // the last one stays marked
    QTest::keyClick(level, Qt::Key_Down);
    EXPECT_EQ(stored("source/level"), "10.49");
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(level, Qt::Key_Left);
    QTest::keyClick(level, Qt::Key_Up);
    QTest::keyClick(level, Qt::Key_Up);
    EXPECT_EQ(stored("source/level"), "20"); // the end of the range

    const QPoint middle = level->rect().center();
    for (int angle : {60, -120, -120}) { // half a notch up, two down: one and a half
        QWheelEvent event(middle, level->mapToGlobal(middle), {}, {0, angle}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(level, &event);
    }
    EXPECT_EQ(stored("source/level"), "10");
}

TEST_F(FrontPanelTest, SettingsOfOtherThreadsAppear)
{
    start();
    QAbstractButton *output = window->findChild<QAbstractButton *>("output");
    EXPECT_EQ(output->text(), "RF OFF");
    onOtherThread([this] {
        settings()->set({{"source/frequency", "123456789.5"}, {"source/output", "1"}});
        settings()->set({{"source/level", "-7"}});
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor("level")->text() == "\u22127.00 dBm"; }));
    EXPECT_EQ(editor("frequency")->text().remove(QChar(0x2009)), "123.45678950 MHz");
    EXPECT_EQ(output->text(), "RF ON");

    QTest::mouseClick(output, Qt::LeftButton);
    EXPECT_EQ(stored("source/output"), "0");
    EXPECT_EQ(output->text(), "RF OFF");
    QTest::keyClick(window, Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(stored("source/output"), "1");
    action({"Signal", "Source", "Preset"})->trigger();
    EXPECT_EQ(stored("source/level"), "-30");
    EXPECT_EQ(output->text(), "RF OFF");
}

TEST_F(FrontPanelTest, MenusStandInTheOrderOfTheirPositions)
{
    std::map<QString, SMenuTree *> &menu = *VQMUtility::menuDescription();
    menu["Signal:Edit:Strange"] = new SMenuTree{"Strange", menu.at("Signal:Edit:Frequency")->position + 5};
    menu["View:Gone:Early"] = new SMenuTree{"", menu.at("View")->position + 10};
    menu["No:such:menu"] = new SMenuTree{"Lost", 5};
    start();
    const auto itemsOf = [this](const QStringList &path) {
        return textsOf(action(path)->menu()->actions()).join(' ');
    };
    EXPECT_EQ(textsOf(window->menuBar()->actions()).join(' '), "File Signal View Language Help");
    EXPECT_EQ(itemsOf({"Signal"}), "Enter value Source");
    EXPECT_EQ(itemsOf({"Signal", "Enter value"}), "Frequency Strange Level");
    EXPECT_EQ(itemsOf({"View"}), "Early Windows");
    EXPECT_EQ(itemsOf({"Help"}), "About");
    EXPECT_FALSE(action({"Signal", "Enter value", "Strange"})->isEnabled());
    EXPECT_EQ(action({"View", "Early"})->toolTip(), "Not available on this instrument");
    action({"Signal", "Enter value", "Level"})->trigger();
    EXPECT_EQ(QApplication::focusWidget(), editor("level"));
}

void FrontPanelTest::expectNothingCutOff()
{
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->window() != window)
            continue;
        const bool isText = qobject_cast<const QLabel *>(widget) != nullptr ||
                            qobject_cast<const QAbstractButton *>(widget) != nullptr;
        const std::string what =
            widget->metaObject()->className() + (' ' + widget->objectName().toStdString());
        if (isText && widget->objectName() != "lastError") {
            EXPECT_GE(widget->width(), widget->sizeHint().width()) << what;
            EXPECT_GE(widget->height(), widget->sizeHint().height()) << what;
        }
        if (const auto *line = qobject_cast<const QLineEdit *>(widget)) {
            EXPECT_GE(line->width() - 24, line->fontMetrics().horizontalAdvance(line->text())) << what;
        }
        if (!widget->isWindow()) {
            EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry())) << what;
        }
    }
    QList<QAction *> open = window->menuBar()->actions();
    EXPECT_LT(window->menuBar()->actionGeometry(open.last()).right(), 700);
    expectDistinctMnemonics(open);
}

void FrontPanelTest::expectDistinctMnemonics(const QList<QAction *> &actions)
{
    QStringList seen;
    for (const QAction *entry : actions) {
        const QString mnemonic = QKeySequence::mnemonic(entry->text()).toString();
        EXPECT_FALSE(seen.contains(mnemonic) && !entry->isCheckable()) << entry->text().toStdString();
        seen << mnemonic;
        if (entry->menu() != nullptr)
            expectDistinctMnemonics(entry->menu()->actions());
    }
}

TEST_F(FrontPanelTest, LanguagesAreSwitchedAtRunTimeAndRemembered)
{
    settings()->set({{"source/frequency", "5888888888.88"}, {"source/level", "-108.88"}});
    start();
    QTabWidget *pages = window->findChild<QTabWidget *>();
    expectNothingCutOff();
    action({"Language", "Deutsch"})->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->menuBar()->actions()[0]->text() == "&Datei"; }));
    EXPECT_EQ(textsOf(window->menuBar()->actions()).join(' '), "Datei Signal Ansicht Sprache Hilfe");
    EXPECT_EQ(window->findChild<QAbstractButton *>("output")->text(), "HF AUS");
    EXPECT_EQ(window->findChild<QLabel *>("lastError")->text(), "Keine Fehler");
    EXPECT_TRUE(action({"Sprache", "Deutsch"})->isChecked());
    EXPECT_FALSE(pages->isVisible());
    expectNothingCutOff();
    EXPECT_EQ(stored("panel/language"), "Deutsch");

    onOtherThread([this] { gui->terminate(&anchor); });
    start();
    EXPECT_EQ(window->menuBar()->actions()[0]->text(), "&Datei");
    (*VQMUtility::languageList())["Deutsch"] = "/nonexistent.qm";
    onOtherThread([this] { gui->terminate(&anchor); });
    start(); // with the source texts
    EXPECT_EQ(window->menuBar()->actions()[0]->text(), "&File");
    EXPECT_FALSE(action({"Language", "Deutsch"})->isChecked());
}

TEST_F(FrontPanelTest, ErrorsShowInTheStatusBarAndTheList)
{
    start();
    const QLabel *lastError = window->findChild<QLabel *>("lastError");
    EXPECT_EQ(lastError->text(), "No errors");
    ErrorManager()->signal(61002, "first");
    ErrorManager()->signal(61001, QString(500, 'x'));
    EXPECT_TRUE(QTest::qWaitFor([&] { return lastError->text().contains("61001"); }));
    EXPECT_LT(lastError->sizeHint().width(), window->width());

    action({"View", "Windows", "Error list"})->trigger();
    QDialog *list = window->findChild<QDialog *>("errorList");
    ASSERT_TRUE(QTest::qWaitForWindowExposed(list));
    const QTableWidget *table = list->findChild<QTableWidget *>();
    ASSERT_EQ(table->rowCount(), 2);
    EXPECT_EQ(table->item(0, 0)->text(), "61002");
    EXPECT_EQ(table->item(0, 3)->text(), "first");
    QTest::mouseClick(list->findChild<QAbstractButton *>("clearErrors"), Qt::LeftButton);
    EXPECT_EQ(table->rowCount(), 0);
    EXPECT_TRUE(ErrorManager()->announcements().isEmpty());
    EXPECT_EQ(lastError->text(), "No errors");
}

TEST_F(FrontPanelTest, PagesComeAndGo)
{
    start();
    FrontPanel *panel = FrontPanel::of(&anchor);
    ASSERT_NE(panel, nullptr);
    QTabWidget *pages = window->findChild<QTabWidget *>();
    QWidget first, second;
    first.setWindowTitle("first");
    panel->addPage(&first);
    panel->addPage(&second);
    second.setWindowTitle("renamed");
    EXPECT_TRUE(first.isVisible());
    EXPECT_EQ(pages->tabText(0), "first");
    EXPECT_EQ(pages->tabText(1), "renamed");
    panel->removePage(&first);
    panel->removePage(&first); // ignored
    EXPECT_EQ(first.parentWidget(), nullptr);
    EXPECT_EQ(pages->count(), 1);
    first.setWindowTitle("nobody's");
    panel->removePage(&second);
    EXPECT_FALSE(pages->isVisible());

    QPointer<QWidget> left = new QWidget;
    panel->addPage(left);
    QWidget *address = left;
    delete window; // as the library does with a main widget that is replaced
    EXPECT_TRUE(left.isNull());
    panel->removePage(address);
    panel->addPage(&first);
    EXPECT_EQ(gui->getMainWidget(), nullptr);
}

TEST_F(FrontPanelTest, ClosedWindowsStayUntilTheModuleGoesDown)
{
    start();
    std::atomic<bool> isDown = false;
    std::thread client([this, &isDown] {
        for (int i = 0; !isDown; ++i)
            settings()->set({{"source/level", std::to_string(-(i % 100))}});
    });
    action({"File", "Quit"})->trigger();
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->isHidden(); }));
    EXPECT_EQ(gui->getMainWidget(), window);
    onOtherThread([this] { gui->terminate(&anchor); });
    isDown = true;
    client.join();
    EXPECT_TRUE(window.isNull());
    EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

} // namespace Orvia

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
