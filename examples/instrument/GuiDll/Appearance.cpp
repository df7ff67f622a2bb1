#include "examples/instrument/GuiDll/Appearance.h"

namespace Orvia::Appearance {

namespace {

constexpr const char *sheet = R"(
* { font-size: 14px; color: #e6edf3; }
QMainWindow, QDialog, QMessageBox { background: #12171d; }
QLabel { background: transparent; }
QMessageBox QLabel { min-width: 300px; }
QToolTip { background: #2c3640; color: #e6edf3; border: 1px solid #4a5866; padding: 3px; }

QMenuBar { background: #1b222a; border-bottom: 1px solid #2c3640; }
QMenuBar::item { padding: 8px 14px; background: transparent; }
QMenuBar::item:selected { background: #2c3640; }
QMenu { background: #1b222a; border: 1px solid #4a5866; padding: 4px; }
QMenu::item { padding: 7px 36px 7px 28px; }
QMenu::item:selected { background: #2f5d8a; }
QMenu::item:disabled { color: #66727e; }
QMenu::separator { height: 1px; background: #2c3640; margin: 4px 8px; }
#brand { color: #8b98a5; padding: 8px 16px; }
QStatusBar { background: #1b222a; border-top: 1px solid #2c3640; }
QStatusBar::item { border: none; }
#lastError { color: #8b98a5; padding: 2px 8px; }
#lastError[errors="true"] { color: #ff8f80; }

#card { background: #1b222a; border: 1px solid #2c3640; border-radius: 8px; }
#caption { color: #8b98a5; font-size: 13px; font-weight: bold; }
#frequency, #level { font-size: 32px; background: #0c1014; border: 1px solid #2c3640;
    border-radius: 6px; padding: 8px 10px; color: #ffffff;
    selection-background-color: #2f7fd0; selection-color: #ffffff; }
#frequency:focus, #level:focus { border: 1px solid #2f7fd0; }
#frequency[refused="true"], #level[refused="true"] { border: 1px solid #ff5c49; color: #ff8f80; }
#frequency:disabled, #level:disabled { color: #66727e; }
#output { font-size: 22px; font-weight: bold; color: #8b98a5; background: #0c1014;
    border: 2px solid #4a5866; border-radius: 8px; }
#output:checked { color: #12171d; background: #ffb020; border-color: #ffb020; }
#output:focus { border-color: #2f7fd0; }

QTabWidget::pane { background: #1b222a; border: 1px solid #2c3640; border-radius: 8px; top: -1px; }
QTabBar::tab { background: #151b21; border: 1px solid #2c3640; padding: 8px 18px; margin-right: 4px;
    border-top-left-radius: 6px; border-top-right-radius: 6px; color: #8b98a5; }
QTabBar::tab:selected { background: #1b222a; border-bottom-color: #1b222a; color: #e6edf3; }
QTabBar::tab:focus { border-color: #2f7fd0; }

QPushButton { background: #2c3640; border: 1px solid #4a5866; border-radius: 5px; padding: 7px 18px; }
QPushButton:hover { background: #37434f; }
QPushButton:pressed { background: #232b33; }
QPushButton:focus { border-color: #2f7fd0; }
QPushButton:disabled { color: #66727e; }
QLineEdit, QAbstractSpinBox, QComboBox { background: #0c1014; border: 1px solid #4a5866;
    border-radius: 4px; padding: 5px 8px; selection-background-color: #2f7fd0; }
QLineEdit:focus, QAbstractSpinBox:focus, QComboBox:focus { border-color: #2f7fd0; }
QComboBox QAbstractItemView { background: #1b222a; selection-background-color: #2f5d8a; }
QCheckBox { spacing: 8px; }
QCheckBox::indicator { width: 18px; height: 18px; border: 1px solid #4a5866; border-radius: 4px;
    background: #0c1014; }
QCheckBox::indicator:checked { background: #ffb020; border-color: #ffb020; }
QCheckBox::indicator:focus { border-color: #2f7fd0; }

QTableView { background: #0c1014; border: 1px solid #2c3640; gridline-color: #2c3640;
    selection-background-color: #2f5d8a; }
QTableView::item { padding: 0 5px; }
QScrollBar { background: #12171d; border: none; }
QScrollBar:horizontal { height: 12px; }
QScrollBar:vertical { width: 12px; }
QScrollBar::handle { background: #4a5866; border-radius: 5px; min-width: 24px; min-height: 24px; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QHeaderView::section { background: #1b222a; color: #8b98a5; border: none; padding: 6px 8px;
    border-bottom: 1px solid #2c3640; }
)";

} // namespace

QString styleSheet()
{
    return QString::fromLatin1(sheet);
}

} // namespace Orvia::Appearance
