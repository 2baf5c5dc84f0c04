#include "app/TextReportWindow.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace pelorin {

TextReportWindow::TextReportWindow(const QString& title, const QString& text, QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("textReportWindow"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title);
    setModal(false);
    resize(620, 520);
    auto* layout = new QVBoxLayout(this);
    text_ = new QPlainTextEdit(this);
    text_->setReadOnly(true);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text_->setPlainText(text);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(text_, 1);
    layout->addWidget(buttons);
}

QString TextReportWindow::text() const
{
    return text_->toPlainText();
}

}  // namespace pelorin
