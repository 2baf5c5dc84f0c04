#include "app/DateDialog.h"

#include "app/DateFieldParsing.h"
#include "ui/DialogLook.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

namespace pelorin {
namespace {

constexpr QSize kPreviewSize(160, 120);

const char* const kLook = R"(
QLabel[role="hint"] { color: #AEB6BF; font-size: 9pt; }
QLabel#datePreview { background-color: #23292F; border: 1px solid #4F6275; color: #7F8C97; }
)";

}  // namespace

DateDialog::DateDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("changeDateWindow"));
    setWindowTitle(QStringLiteral("Change Date"));
    applyLook(this, dialogStyleSheet(QString::fromLatin1(kLook), DialogFields::LineEdits));

    preview_ = new QLabel(QStringLiteral("No preview"), this);
    preview_->setObjectName(QStringLiteral("datePreview"));
    preview_->setFixedSize(kPreviewSize);
    preview_->setAlignment(Qt::AlignCenter);
    fileName_ = new QLabel(this);
    fileName_->setObjectName(QStringLiteral("dateFileName"));
    fileName_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    fileName_->setFixedWidth(kPreviewSize.width());

    original_ = new QLineEdit(this);
    original_->setObjectName(QStringLiteral("orignalDatelab"));
    digitized_ = new QLineEdit(this);
    digitized_->setObjectName(QStringLiteral("diginalDatelab"));
    for (QLineEdit* field : {original_, digitized_})
        field->setMinimumWidth(dateFieldMinimumWidth(field->fontMetrics()));

    fromFileNote_ = labelWithRole(QStringLiteral("No capture date in the photo; these are its file dates."),
                                  "hint", this);
    fromFileNote_->setObjectName(QStringLiteral("fileDatesNote"));
    fromFileNote_->setWordWrap(true);
    fromFileNote_->hide();

    QFormLayout* form = alignedFormLayout();
    form->addRow(QStringLiteral("Date taken:"), original_);
    form->addRow(QStringLiteral("Date digitized:"), digitized_);
    form->addRow(QString(), labelWithRole(QStringLiteral("YYYY:MM:DD HH:MM:SS"), "hint", this));
    form->addRow(QString(), fromFileNote_);

    auto* photoColumn = new QVBoxLayout;
    photoColumn->setSpacing(6);
    photoColumn->addWidget(preview_);
    photoColumn->addWidget(fileName_);
    photoColumn->addStretch(1);

    auto* fieldsColumn = new QVBoxLayout;
    fieldsColumn->addSpacing(8);
    fieldsColumn->addLayout(form);
    fieldsColumn->addStretch(1);

    auto* content = new QHBoxLayout;
    content->setSpacing(20);
    content->addLayout(photoColumn);
    content->addLayout(fieldsColumn, 1);

    QPushButton* fileDatesButton =
        dialogButton(this, QStringLiteral("Save File Dates Only"), "createdDateSaveButton");
    QPushButton* cancelButton = dialogButton(this, QStringLiteral("Cancel"), "dateCancelButton");
    QPushButton* saveButton = dialogButton(this, QStringLiteral("Save"), "dateSaveButton", true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(16);
    layout->addLayout(content, 1);
    layout->addLayout(trailingButtonRow({fileDatesButton, cancelButton, saveButton}, 12));

    connect(saveButton, &QPushButton::clicked, this, &DateDialog::saveRequested);
    connect(fileDatesButton, &QPushButton::clicked, this, &DateDialog::saveFileDatesRequested);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

void DateDialog::setPhoto(const QImage& thumbnail, const QString& fileName)
{
    if (thumbnail.isNull()) {
        preview_->setPixmap(QPixmap());
        preview_->setText(QStringLiteral("No preview"));
    } else {
        // Inside the frame's border, so the picture never covers it.
        const QSize room = kPreviewSize - QSize(2, 2);
        preview_->setPixmap(QPixmap::fromImage(
            thumbnail.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    }
    fileName_->setText(
        fileName_->fontMetrics().elidedText(fileName, Qt::ElideMiddle, kPreviewSize.width()));
    fileName_->setToolTip(fileName);
}

void DateDialog::setDates(const PhotoDateTexts& dates)
{
    original_->setText(dates.original);
    digitized_->setText(dates.digitized);
    fromFileNote_->setVisible(dates.fromFile);
}

PhotoDateEdit DateDialog::edit() const
{
    return {original_->text(), digitized_->text()};
}

}  // namespace pelorin
