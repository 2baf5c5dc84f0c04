#include "app/TaskStatusBar.h"

#include "app/ResultSummary.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>

namespace pelorin {

TaskStatusBar::TaskStatusBar(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("taskStatusBar"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 2, 10, 2);
    label_ = new QLabel(this);
    label_->setObjectName(QStringLiteral("taskSummary"));
    label_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    progress_ = new QProgressBar(this);
    progress_->setObjectName(QStringLiteral("taskProgress"));
    progress_->setFixedWidth(220);
    progress_->setFixedHeight(16);
    progress_->hide();
    cancel_ = new QPushButton(QStringLiteral("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("taskCancelButton"));
    cancel_->hide();
    details_ = new QPushButton(QStringLiteral("Details…"), this);
    details_->setObjectName(QStringLiteral("taskDetailsButton"));
    details_->hide();
    layout->addWidget(label_, 1);
    layout->addWidget(details_);
    layout->addWidget(progress_);
    layout->addWidget(cancel_);
    connect(cancel_, &QPushButton::clicked, this, &TaskStatusBar::cancelRequested);
    connect(details_, &QPushButton::clicked, this, &TaskStatusBar::showDetails);
}

void TaskStatusBar::showTask(const QString& title)
{
    label_->setText(title + QStringLiteral("…"));
    progress_->setRange(0, 0);
    progress_->show();
    cancel_->show();
    cancel_->setEnabled(true);
    details_->hide();
}

void TaskStatusBar::showProgress(int done, int total)
{
    if (total <= 0)
        return;
    progress_->setRange(0, total);
    progress_->setValue(done);
}

void TaskStatusBar::showResult(const QString& title, const CommandResult& result, bool cancelled)
{
    progress_->hide();
    cancel_->hide();
    label_->setText(QStringLiteral("%1: %2").arg(title, resultHeadline(result, cancelled)));
    detailsTitle_ = title;
    detailsText_ = resultDetails(result);
    // A lone note already shown as the headline needs no Details button.
    const bool noteIsHeadline = result.written.isEmpty() && result.skipped.isEmpty() && result.notes.size() == 1;
    details_->setVisible(!detailsText_.isEmpty() && !noteIsHeadline);
}

void TaskStatusBar::showMessage(const QString& text)
{
    progress_->hide();
    cancel_->hide();
    details_->hide();
    label_->setText(text);
}

QString TaskStatusBar::summaryText() const
{
    return label_->text();
}

void TaskStatusBar::showDetails()
{
    auto* box = new QMessageBox(window());
    box->setObjectName(QStringLiteral("commandDetails"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::NonModal);
    box->setWindowTitle(detailsTitle_);
    box->setText(label_->text());
    box->setDetailedText(detailsText_);
    box->setInformativeText(detailsText_.section(QLatin1Char('\n'), 0, 7));
    box->addButton(QStringLiteral(" Ok "), QMessageBox::AcceptRole);
    box->show();
}

}  // namespace pelorin
