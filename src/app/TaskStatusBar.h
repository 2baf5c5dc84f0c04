#pragma once
#include "model/CommandResult.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace pelorin {

// The strip at the bottom of the window: while a command or an import runs, its title, a
// progress bar and a Cancel button; afterwards a one-line summary of what was written and
// skipped, with the reasons one click away.
class TaskStatusBar : public QWidget {
    Q_OBJECT
public:
    explicit TaskStatusBar(QWidget* parent = nullptr);

    void showTask(const QString& title);
    void showProgress(int done, int total);
    void showResult(const QString& title, const CommandResult& result, bool cancelled);
    void showMessage(const QString& text);

    QString summaryText() const;

signals:
    void cancelRequested();

private:
    void showDetails();

    QLabel* label_;
    QProgressBar* progress_;
    QPushButton* cancel_;
    QPushButton* details_;
    QString detailsTitle_;
    QString detailsText_;
};

}  // namespace pelorin
