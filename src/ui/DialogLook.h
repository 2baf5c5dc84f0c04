#pragma once

#include <QList>
#include <QString>

class QFormLayout;
class QHBoxLayout;
class QLabel;
class QLayout;
class QPushButton;
class QScrollArea;
class QWidget;

namespace pelorin {

// The kinds of field a dialog holds beside its labels and buttons. Only those it has get rules:
// a dialog's sheet also reaches the file, font and colour choosers opened over it.
enum class DialogFields { None, LineEdits };

// The dark sheet of the dialogs (background, labels, push buttons and, if asked, line edits),
// then the dialog's own rules; those come last, so they win over the shared ones.
QString dialogStyleSheet(const QString& extraRules, DialogFields fields = DialogFields::None);

// The dark sheet of an editor panel: its frame and scrolling content (by their objectNames),
// framed sections, captions, text fields and a thin scroll bar, then the panel's own rules.
QString editorPanelStyleSheet(const QString& viewName, const QString& contentName, const QString& extraRules);

// Gives a dialog or panel the 10-point font the sheets are drawn for, and the sheet.
void applyLook(QWidget* widget, const QString& styleSheet);

// Fills an editor panel with its content in a vertical scroll area, under fixedRow (the panel's
// buttons, which do not scroll) when there is one. Returns the scroll area.
QScrollArea* fillPanelWithScrollArea(QWidget* panel, QWidget* content, const QString& scrollName,
                                     QLayout* fixedRow = nullptr);

// A push button of a dialog. Only the default one answers Enter; the others do not take it over
// when they have the focus, so Enter in a field always means the default.
QPushButton* dialogButton(QWidget* parent, const QString& text, const char* objectName,
                          bool isDefault = false);

// The buttons at the right end of a row, in the given order. With three or more, a gap can set
// the leading ones apart from the closing pair (Cancel, Save).
QHBoxLayout* trailingButtonRow(const QList<QWidget*>& buttons, int gapBeforeLastTwo = 0);

// A form with right-aligned labels whose fields take all the width they are given.
QFormLayout* alignedFormLayout(int horizontalSpacing = 12, int verticalSpacing = 8);

// A label the sheets style by its "role" property (heading, caption, hint…).
QLabel* labelWithRole(const QString& text, const char* role, QWidget* parent);

}  // namespace pelorin
