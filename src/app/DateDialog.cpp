#include "app/DateDialog.h"

#include "app/DateFieldParsing.h"

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
QDialog { background-color: #34495E; }
QLabel { color: #FFFFFF; }
QLabel[role="hint"] { color: #AEB6BF; font-size: 9pt; }
QLabel#datePreview { background-color: #23292F; border: 1px solid #4F6275; color: #7F8C97; }
QLineEdit { background-color: #23292F; color: #ECF0F1; border: 1px solid #5A6B7C;
    border-radius: 3px; padding: 4px 6px; selection-background-color: #2F80C0; }
QLineEdit:focus { border-color: #5FC3FF; }
QPushButton { background-color: #46627D; color: #FFFFFF; border: 1px solid #5C7A96;
    border-radius: 4px; padding: 5px 14px; }
QPushButton:hover { background-color: #52708D; }
QPushButton:pressed { background-color: #3A5068; }
QPushButton:default { background-color: #2F80C0; border-color: #5FC3FF; }
)";

QLabel* hint(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setProperty("role", QStringLiteral("hint"));
    return label;
}

}  // namespace

DateDialog::DateDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("changeDateWindow"));
    setWindowTitle(QStringLiteral("Change Date"));
    QFont base = font();
    base.setPointSize(10);
    setFont(base);
    setStyleSheet(QString::fromLatin1(kLook));

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

    fromFileNote_ = hint(QStringLiteral("No capture date in the photo; these are its file dates."), this);
    fromFileNote_->setObjectName(QStringLiteral("fileDatesNote"));
    fromFileNote_->setWordWrap(true);
    fromFileNote_->hide();

    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(8);
    form->addRow(QStringLiteral("Date taken:"), original_);
    form->addRow(QStringLiteral("Date digitized:"), digitized_);
    form->addRow(QString(), hint(QStringLiteral("YYYY:MM:DD HH:MM:SS"), this));
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

    auto* fileDatesButton = new QPushButton(QStringLiteral("Save File Dates Only"), this);
    fileDatesButton->setObjectName(QStringLiteral("createdDateSaveButton"));
    fileDatesButton->setAutoDefault(false);
    auto* cancelButton = new QPushButton(QStringLiteral("Cancel"), this);
    cancelButton->setObjectName(QStringLiteral("dateCancelButton"));
    cancelButton->setAutoDefault(false);
    auto* saveButton = new QPushButton(QStringLiteral("Save"), this);
    saveButton->setObjectName(QStringLiteral("dateSaveButton"));
    saveButton->setDefault(true);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addStretch(1);
    buttonRow->addWidget(fileDatesButton);
    buttonRow->addSpacing(12);
    buttonRow->addWidget(cancelButton);
    buttonRow->addWidget(saveButton);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(16);
    layout->addLayout(content, 1);
    layout->addLayout(buttonRow);

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
