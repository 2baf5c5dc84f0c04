#include "ui/WindowLook.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace pelorin {

namespace {

QString styleSheet()
{
    using namespace WindowColors;
    return QStringLiteral(R"(
QMainWindow, QDialog { background: %1; }
QWidget { color: %2; }
QToolTip { color: #FFFFFF; background: #1C252E; border: 1px solid #5FC3FF; }
QFrame#leftPane, QFrame#mediaPane, QFrame#inspectorPane { background: %3; border-radius: 6px; }
QLabel[role="heading"] { color: %4; font-weight: bold; }
QLabel[role="hint"] { color: %4; }
QLineEdit, QSpinBox, QComboBox, QPlainTextEdit {
    background: %5; color: #FFFFFF; border: 1px solid #4A6075; border-radius: 4px; padding: 3px 5px;
    selection-background-color: #2F80B5;
}
QLineEdit:focus, QComboBox:focus { border-color: %6; }
QLineEdit:read-only { color: %4; }
QTreeView, QTableView, QListView {
    background: %5; alternate-background-color: #223040; color: #FFFFFF; border: none;
    selection-background-color: #2F80B5; selection-color: #FFFFFF;
}
QTreeView::item { padding: 2px 0; }
QListView#localImageBrowserView, QListView#imageBrowserView { background: %7; }
QHeaderView::section { background: #1C252E; color: %4; border: none; border-right: 1px solid #2C3E50; padding: 4px 6px; }
QPushButton {
    background: #3B5268; color: #FFFFFF; border: 1px solid #4F6A84; border-radius: 4px; padding: 4px 14px;
}
QPushButton:hover { background: #46627C; }
QPushButton:default { border-color: %6; }
QPushButton:checked { background: #2F80B5; border-color: %6; }
QToolButton { color: #FFFFFF; border: none; padding: 3px; }
QToolButton:hover { background: rgba(95, 195, 255, 40); border-radius: 6px; }
QMenu { background: #24313E; color: #FFFFFF; border: 1px solid #3B5268; }
QMenu::item { padding: 5px 22px; }
QMenu::item:selected { background: #2F80B5; }
QMenu::item:disabled { color: #7A8A99; }
QMenuBar { background: #1C252E; color: #FFFFFF; }
QMenuBar::item:selected { background: #2F80B5; }
QStatusBar { background: #1C252E; color: %4; }
QProgressBar { background: %5; border: 1px solid #4A6075; border-radius: 4px; text-align: center; color: #FFFFFF; }
QProgressBar::chunk { background: #2F80B5; border-radius: 3px; }
QScrollBar:vertical { background: %8; width: 10px; margin: 0; }
QScrollBar:horizontal { background: %8; height: 10px; margin: 0; }
QScrollBar::handle { background: #8A8F94; border-radius: 4px; min-height: 24px; min-width: 24px; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: none; }
QSplitter::handle { background: %1; }
QMessageBox { background: #34495E; }
)")
        .arg(window().name(), text().name(), pane().name(), dimText().name(), field().name(), accent().name(),
             browser().name(), scrollTrack().name());
}

}  // namespace

void applyWindowLook(QApplication& app)
{
    app.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette;
    palette.setColor(QPalette::Window, WindowColors::window());
    palette.setColor(QPalette::WindowText, WindowColors::text());
    palette.setColor(QPalette::Base, WindowColors::field());
    palette.setColor(QPalette::AlternateBase, QColor(34, 48, 64));
    palette.setColor(QPalette::Text, WindowColors::text());
    palette.setColor(QPalette::Button, QColor(59, 82, 104));
    palette.setColor(QPalette::ButtonText, WindowColors::text());
    palette.setColor(QPalette::Highlight, QColor(47, 128, 181));
    palette.setColor(QPalette::HighlightedText, WindowColors::text());
    palette.setColor(QPalette::PlaceholderText, QColor(120, 136, 150));
    palette.setColor(QPalette::ToolTipBase, QColor(28, 37, 46));
    palette.setColor(QPalette::ToolTipText, WindowColors::text());
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(120, 130, 140));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(120, 130, 140));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(120, 130, 140));
    app.setPalette(palette);
    app.setStyleSheet(styleSheet());
}

}  // namespace pelorin
