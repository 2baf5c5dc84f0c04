#pragma once
#include <QDialog>

class QPlainTextEdit;

namespace pelorin {

// A non-modal window showing a text report (a diagnostic listing) that the user can read, select
// and copy while going on with the main window.
class TextReportWindow : public QDialog {
    Q_OBJECT
public:
    TextReportWindow(const QString& title, const QString& text, QWidget* parent);
    QString text() const;

private:
    QPlainTextEdit* text_;
};

}  // namespace pelorin
