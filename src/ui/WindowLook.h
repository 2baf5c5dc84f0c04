#pragma once
#include <QColor>
#include <QString>

class QApplication;

namespace pelorin {

// The colours of the window, in one place so panes, views and dialogs agree.
namespace WindowColors {
inline QColor window() { return QColor(44, 62, 80); }
inline QColor browser() { return QColor(63, 58, 57); }
inline QColor pane() { return QColor(35, 47, 59); }
inline QColor field() { return QColor(28, 37, 46); }
inline QColor text() { return QColor(255, 255, 255); }
inline QColor dimText() { return QColor(176, 188, 199); }
inline QColor accent() { return QColor(95, 195, 255); }
inline QColor scrollTrack() { return QColor(76, 76, 76); }
}  // namespace WindowColors

// Applies the dark look to the whole application: palette and style sheet.
void applyWindowLook(QApplication& app);

}  // namespace pelorin
