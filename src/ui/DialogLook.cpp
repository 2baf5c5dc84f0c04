#include "ui/DialogLook.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace pelorin {
namespace {

const char* const kDialogRules = R"(
QDialog { background-color: #34495E; }
QLabel { color: #FFFFFF; }
QPushButton { background-color: #46627D; color: #FFFFFF; border: 1px solid #5C7A96;
    border-radius: 4px; padding: 5px 14px; }
QPushButton:hover { background-color: #52708D; }
QPushButton:pressed { background-color: #3A5068; }
QPushButton:default { background-color: #2F80C0; border-color: #5FC3FF; }
)";

const char* const kDialogLineEditRules = R"(
QLineEdit { background-color: #23292F; color: #ECF0F1; border: 1px solid #5A6B7C;
    border-radius: 3px; padding: 4px 6px; selection-background-color: #2F80C0; }
QLineEdit:focus { border-color: #5FC3FF; }
)";

// %1 and %2 name the panel and its content, so those rules stay inside the panel they are given to.
const char* const kPanelRules = R"(
QFrame#%1 { background-color: rgb(44, 62, 80); border-left: 1px solid #1F2D3A; }
QWidget#%2 { background-color: rgb(44, 62, 80); }
QScrollArea { background: transparent; border: none; }
QFrame[role="section"] { background-color: #34495E; border: 1px solid #415A72; border-radius: 6px; }
QLabel { color: #FFFFFF; background: transparent; border: none; }
QLabel[role="heading"] { color: #8FD3FF; font-weight: bold; font-size: 11pt; }
QLabel[role="caption"] { color: #C9D3DC; }
QLineEdit, QPlainTextEdit { background-color: #23292F; color: #ECF0F1; border: 1px solid #5A6B7C;
    border-radius: 3px; padding: 3px 6px; selection-background-color: #2F80C0; }
QLineEdit:focus, QPlainTextEdit:focus { border-color: #5FC3FF; }
QScrollBar:vertical { background: rgb(44, 62, 80); width: 10px; margin: 0; }
QScrollBar::handle:vertical { background: #5A6F84; border-radius: 4px; min-height: 30px; margin: 2px; }
QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }
QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }
)";

}  // namespace

QString dialogStyleSheet(const QString& extraRules, DialogFields fields)
{
    QString sheet = QString::fromLatin1(kDialogRules);
    if (fields == DialogFields::LineEdits)
        sheet += QString::fromLatin1(kDialogLineEditRules);
    return sheet + extraRules;
}

QString editorPanelStyleSheet(const QString& viewName, const QString& contentName, const QString& extraRules)
{
    return QString::fromLatin1(kPanelRules).arg(viewName, contentName) + extraRules;
}

void applyLook(QWidget* widget, const QString& styleSheet)
{
    QFont base = widget->font();
    base.setPointSize(10);
    widget->setFont(base);
    widget->setStyleSheet(styleSheet);
}

QScrollArea* fillPanelWithScrollArea(QWidget* panel, QWidget* content, const QString& scrollName, QLayout* fixedRow)
{
    auto* scroll = new QScrollArea(panel);
    scroll->setObjectName(scrollName);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(content);

    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(1, 0, 0, 0);  // keeps the panel's left border line visible
    layout->setSpacing(0);
    if (fixedRow)
        layout->addLayout(fixedRow);
    layout->addWidget(scroll, 1);
    return scroll;
}

QPushButton* dialogButton(QWidget* parent, const QString& text, const char* objectName, bool isDefault)
{
    auto* button = new QPushButton(text, parent);
    button->setObjectName(QString::fromLatin1(objectName));
    if (isDefault)
        button->setDefault(true);
    else
        button->setAutoDefault(false);
    return button;
}

QHBoxLayout* trailingButtonRow(const QList<QWidget*>& buttons, int gapBeforeLastTwo)
{
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    const qsizetype gapAt = buttons.size() > 2 && gapBeforeLastTwo > 0 ? buttons.size() - 2 : -1;
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        if (i == gapAt)
            row->addSpacing(gapBeforeLastTwo);
        row->addWidget(buttons[i]);
    }
    return row;
}

QFormLayout* alignedFormLayout(int horizontalSpacing, int verticalSpacing)
{
    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setHorizontalSpacing(horizontalSpacing);
    form->setVerticalSpacing(verticalSpacing);
    return form;
}

QLabel* labelWithRole(const QString& text, const char* role, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setProperty("role", QString::fromLatin1(role));
    return label;
}

}  // namespace pelorin
