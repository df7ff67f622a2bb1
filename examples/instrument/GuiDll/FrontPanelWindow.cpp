#include "examples/instrument/GuiDll/FrontPanelWindow.h"

#include "examples/instrument/GuiDll/Appearance.h"
#include "examples/instrument/GuiDll/OutputSketch.h"
#include "examples/instrument/GuiDll/Quantity.h"
#include "examples/instrument/GuiDll/SourcePanel.h"
#include "platform/VQMProperties.h"
#include "platform/VQMUtility.h"

#include <QAction>
#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>

#include <chrono>

namespace Orvia {

namespace {

constexpr QSize windowSize(1024, 600); // of the display in the instrument's front
constexpr std::chrono::milliseconds noticeTime(6000);

QString instrumentProperty(const char *key)
{
    return VQMProperties::getStringProperty("Instrument", key, QString(), 0, nullptr);
}

QString instrumentName()
{
    return QString(instrumentProperty("Manufacturer") + ' ' + instrumentProperty("Model")).trimmed();
}

} // namespace

FrontPanelWindow::FrontPanelWindow(SettingsDatabase *settings, Log log)
    : m_settings(settings), m_log(std::move(log)), m_sketch(new OutputSketch),
      m_source(new SourcePanel(settings, m_sketch)), m_pages(new QTabWidget), m_lastError(new QLabel),
      m_errorList(new ErrorList(this, [this](const ErrorList::Errors &errors) { showLastError(errors); }))
{
    setObjectName("frontPanel");
    setWindowTitle(instrumentName());
    setStyleSheet(Appearance::styleSheet());
    setFixedSize(windowSize);
    layOut();
    buildMenus();
    m_source->notice = [this](const QString &message) {
        statusBar()->showMessage(message, static_cast<int>(noticeTime.count()));
    };
    retranslate();
    m_errorList->poll();
}

FrontPanelWindow::~FrontPanelWindow() = default;

void FrontPanelWindow::refresh()
{
    m_source->refresh();
}

void FrontPanelWindow::addPage(QWidget *page)
{
    m_pages->addTab(page, page->windowTitle());
    connect(page, &QWidget::windowTitleChanged, m_pages,
            [this, page](const QString &title) { m_pages->setTabText(m_pages->indexOf(page), title); });
    m_pages->show();
}

void FrontPanelWindow::removePage(QWidget *page)
{
    const int index = m_pages->indexOf(page); // the page may be gone, only its address is looked at
    if (index < 0)
        return;
    disconnect(page, &QWidget::windowTitleChanged, m_pages, nullptr);
    m_pages->removeTab(index);
    page->setParent(nullptr);
    m_pages->setVisible(m_pages->count() > 0);
}

void FrontPanelWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QMainWindow::changeEvent(event);
}

void FrontPanelWindow::layOut()
{
    QFrame *sketchCard = new QFrame;
    sketchCard->setObjectName("card");
    (new QVBoxLayout(sketchCard))->addWidget(m_sketch);
    m_pages->hide();

    QWidget *centre = new QWidget;
    QVBoxLayout *rows = new QVBoxLayout(centre);
    rows->setContentsMargins(16, 16, 16, 16);
    rows->setSpacing(14);
    rows->addWidget(m_source);
    QHBoxLayout *lowerRow = new QHBoxLayout;
    lowerRow->setSpacing(14);
    lowerRow->addWidget(sketchCard, 1);
    lowerRow->addWidget(m_pages, 1);
    rows->addLayout(lowerRow, 1);
    setCentralWidget(centre);

    m_lastError->setObjectName("lastError");
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(m_lastError, 1);
}

void FrontPanelWindow::buildMenus()
{
    QLabel *brand = new QLabel(instrumentName());
    brand->setObjectName("brand");
    menuBar()->setCornerWidget(brand);

    const MenuBuilder::Known known = knownEntries();
    const std::map<QString, QString> *languages = VQMUtility::languageList();
    m_languages =
        std::make_unique<LanguageSwitch>(languages != nullptr ? *languages : LanguageSwitch::Languages(),
                                         known.menus.at("Language"), m_settings, m_log);
    m_menus = std::make_unique<MenuBuilder>(known);
    if (const auto *description = VQMUtility::menuDescription()) {
        for (const QString &problem : m_menus->build(*description, menuBar()))
            m_log(problem);
    }
}

QAction *FrontPanelWindow::action(const QString &shortcut, std::function<void()> work)
{
    QAction *action = new QAction(this);
    action->setShortcut(QKeySequence(shortcut));
    connect(action, &QAction::triggered, this, [work = std::move(work)] { work(); });
    return action;
}

MenuBuilder::Known FrontPanelWindow::knownEntries()
{
    return {{{"File:Quit", action("Ctrl+Q", [this] { close(); })},
             {"Signal:Frequency", action("Ctrl+F", [this] { m_source->editFrequency(); })},
             {"Signal:Level", action("Ctrl+L", [this] { m_source->editLevel(); })},
             {"Signal:Output", action("Ctrl+R", [this] { m_source->toggleOutput(); })},
             {"Signal:Preset", action("Ctrl+P", [this] { m_source->preset(); })},
             {"View:ErrorList", action("Ctrl+E", [this] { showErrorList(); })},
             {"Help:About", action("F1", [this] { showAbout(); })}},
            {{"Language", new QMenu(this)}}};
}

void FrontPanelWindow::showErrorList()
{
    m_errorList->show();
    m_errorList->raise();
    m_errorList->activateWindow();
}

void FrontPanelWindow::showAbout()
{
    QMessageBox *box = new QMessageBox(QMessageBox::NoIcon, tr("About"), QString(), QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setText("<h2>" + instrumentName().toHtmlEscaped() + "</h2>" + tr("Signal generator"));
    box->setInformativeText(tr("Serial number: %1").arg(instrumentProperty("Serial")) + '\n' +
                            tr("Frequency range: %1 to %2")
                                .arg(shortText(frequencyQuantity, frequencySetting.minimum),
                                     shortText(frequencyQuantity, frequencySetting.maximum)));
    box->open();
}

void FrontPanelWindow::showLastError(const ErrorList::Errors &errors)
{
    m_errors = errors;
    QString text = tr("No errors");
    if (!errors.isEmpty()) {
        const CErrorManager::Announcement &last = errors.back();
        const QString detail = last.detail.isEmpty() ? QString() : " - " + last.detail;
        text = tr("Last error: %1 %2").arg(last.code).arg(last.text + detail).simplified();
    }
    m_lastError->setToolTip(errors.isEmpty() ? QString() : text.toHtmlEscaped());
    m_lastError->setText(m_lastError->fontMetrics().elidedText(text, Qt::ElideRight, width() - 40));
    m_lastError->setProperty("errors", !errors.isEmpty());
    m_lastError->style()->polish(m_lastError);
}

void FrontPanelWindow::retranslate()
{
    m_menus->retranslate();
    showLastError(m_errors);
}

} // namespace Orvia
