#include "examples/instrument/FrontPanel.h"
#include "examples/instrument/ScpiRegistry.h"
#include "platform/VQMSharedLibrary.h"
#include "tests/instrument/FakeSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <QTranslator>

#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <thread>

namespace Orvia {

namespace {

template <class Interface>
class FakeModule : public Interface
{
public:
    VQMModuleVersion *getInterfaceVersion() override { return &m_version; }
    const char *getModuleName() override { return "Fake"; }
    int getModuleId() override { return 0; }
    int initialize(VQMAnchorInterface *, int) override { return 0; }
    void terminate(VQMAnchorInterface *) override {}

private:
    VQMModuleVersion m_version{Interface::interfaceMajor, 0, 0};
};

class FakeRegistry : public FakeModule<ScpiRegistry>
{
public:
    void addCommands(const void *owner, ScpiTable table) override { tables.emplace(owner, std::move(table)); }
    void removeCommands(const void *owner) override { tables.erase(owner); }
    std::multimap<const void *, ScpiTable> tables;
};

class FakePanel : public FakeModule<FrontPanel>
{
public:
    void addPage(QWidget *page) override { pages.insert(page); }
    void removePage(QWidget *page) override { pages.erase(page); }
    std::set<QWidget *> pages;
};

class UpperCase : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return QString("%1:%2").arg(context, text).toUpper();
    }
};

/// The GUI thread serves events while `work` runs on another one.
template <class Work>
void runElsewhere(Work work)
{
    QEventLoop loop;
    QTimer::singleShot(20000, &loop, [&loop] { loop.exit(1); });
    std::thread thread([&] {
        work();
        QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
    });
    ASSERT_EQ(loop.exec(), 0);
    thread.join();
}

void type(QWidget *widget, const QString &text)
{
    for (const QChar character : text + '\r') {
        const int key = character == '\r' ? int(Qt::Key_Return) : character.toUpper().unicode();
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, character);
        QApplication::sendEvent(widget, &press);
    }
}

} // namespace

class ExtensionTest : public testing::Test
{
protected:
    ExtensionTest()
    {
        library.open(PULSE_MODULE, true, false);
        const auto create =
            reinterpret_cast<CreateInstanceFunction>(library.getProcAddress(createInstanceSymbol));
        object.reset(create(10000));
        anchor.databaseModule = &settings;
        anchor.scpiModule = &registry;
        anchor.guiModule = &panel;
    }

    VQMDllModuleInterface *module() { return static_cast<VQMDllModuleInterface *>(object.get()); }

    FakeSettings settings;
    FakeRegistry registry;
    FakePanel panel;
    VQMAnchorInterface anchor = {};
    VQMSharedLibrary library;
    std::unique_ptr<VQMModuleInterface> object;
};

TEST_F(ExtensionTest, EachPartComesUpOnceAndAllGoDown)
{
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(module()->initialize(&anchor, VQMDatabasePart), 0);
        EXPECT_TRUE(settings.rule && registry.tables.empty() && panel.pages.empty());
        for (int call = 0; call < 2; ++call) {
            EXPECT_EQ(module()->initialize(&anchor, VQMScpiPart | VQMGuiPart), 0);
            EXPECT_EQ(registry.tables.size(), 1U);
            EXPECT_EQ(panel.pages.size(), 1U);
        }
        runElsewhere([this] { module()->terminate(&anchor); });
        EXPECT_TRUE(!settings.rule && !settings.listener && registry.tables.empty() && panel.pages.empty());
    }
    // A module that is not complete is destroyed only; the window may have taken the page with it.
    module()->initialize(&anchor, VQMScpiPart | VQMGuiPart);
    delete *panel.pages.begin();
    runElsewhere([this] { object.reset(); });
    EXPECT_TRUE(!settings.listener && registry.tables.empty());
}

TEST_F(ExtensionTest, PageAndSettingsFollowEachOther)
{
    module()->initialize(&anchor, VQMDatabasePart | VQMScpiPart | VQMGuiPart);
    ASSERT_EQ(panel.pages.size(), 1U);
    QWidget *page = *panel.pages.begin();
    const auto editors = page->findChildren<QLineEdit *>();
    auto *box = page->findChild<QCheckBox *>();
    ASSERT_TRUE(editors.size() == 2 && box != nullptr);
    const auto texts = [&] { // without thin spaces
        QString all = editors[0]->text() + '|' + editors[1]->text();
        return all.remove(QChar(0x2009)).toStdString();
    };
    EXPECT_EQ(texts(), "10.0000 µs|1.0000 µs");

    runElsewhere([this] {
        settings.set({{"pulse/period", "0.002"}, {"pulse/width", "0.0005"}, {"pulse/state", "1"}}, nullptr);
    });
    EXPECT_EQ(texts(), "2.0000000 ms|500.0000 µs");
    EXPECT_TRUE(box->isChecked());

    box->click();
    type(editors[1], "80u");
    EXPECT_EQ(settings.values["pulse/state"], "0");
    EXPECT_EQ(settings.values["pulse/width"], "0.00008");
    type(editors[1], "3m"); // longer than the period
    EXPECT_EQ(settings.values["pulse/width"], "0.00008");
    EXPECT_EQ(texts(), "2.0000000 ms|80.0000 µs");

    settings.values["pulse/width"] = "1"; // from before there was a rule: keeps nothing else from being set
    EXPECT_TRUE(settings.set({{"source/level", "0"}}, nullptr));
    EXPECT_FALSE(settings.set({{"pulse/period", "1"}}, nullptr));

    EXPECT_EQ(page->windowTitle(), "Pulse");
    UpperCase translator;
    QApplication::installTranslator(&translator);
    QEvent change(QEvent::LanguageChange);
    QApplication::sendEvent(page, &change);
    EXPECT_EQ(page->windowTitle(), "PULSEPAGE:PULSE");
    EXPECT_EQ(box->text(), "PULSEPAGE:PULSE MODULATION");
    QApplication::removeTranslator(&translator);
    module()->terminate(&anchor);
}

} // namespace Orvia

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
