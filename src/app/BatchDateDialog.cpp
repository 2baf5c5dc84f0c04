#include "app/BatchDateDialog.h"

#include "app/DateFieldParsing.h"
#include "ui/DialogLook.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

namespace pelorin {
namespace {

constexpr QSize kPreviewSize(120, 90);

const char* const kLook = R"(
QFrame[role="section"] { background-color: #2E4256; border: 1px solid #415A72; border-radius: 6px; }
QLabel { background: transparent; border: none; }
QLabel[role="heading"] { color: #8FD3FF; font-weight: bold; font-size: 11pt; }
QLabel[role="column"] { color: #AEB6BF; }
QLabel#modeSummary { color: #FFE08A; }
QLabel#dateImageview { background-color: #23292F; border: 1px solid #4F6275; }
QLineEdit:read-only { background-color: #2A3540; color: #B8C4CE; border-color: #46586A; }
QPushButton#AddTimeBtn, QPushButton#RemoveTimeBtn { color: #FFFFFF; font-size: 12pt; padding: 5px 12px; }
QPushButton#AddTimeBtn:checked, QPushButton#RemoveTimeBtn:checked {
    background-color: #2F80C0; border: 2px solid #5FC3FF; }
QPushButton#clearReferenceButton { background: transparent; border: none; color: #5FC3FF;
    text-decoration: underline; padding: 0; }
)";

QFrame* section(QWidget* parent)
{
    auto* frame = new QFrame(parent);
    frame->setProperty("role", QStringLiteral("section"));
    return frame;
}

QLineEdit* dateField(const char* objectName, bool readOnly, QWidget* parent)
{
    auto* field = new QLineEdit(parent);
    field->setObjectName(QString::fromLatin1(objectName));
    field->setReadOnly(readOnly);
    field->setMinimumWidth(dateFieldMinimumWidth(field->fontMetrics()));
    return field;
}

}  // namespace

BatchDateDialog::BatchDateDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("changeMutiDateWindow"));
    setWindowTitle(QStringLiteral("Change Dates of Several Photos"));
    applyLook(this, dialogStyleSheet(QString::fromLatin1(kLook), DialogFields::LineEdits));

    // By a reference photo.
    QFrame* referenceSection = section(this);
    QPushButton* choosePhoto =
        dialogButton(referenceSection, QStringLiteral("Choose Photo…"), "dateChoosePhotoBtn");
    referencePreview_ = new QLabel(referenceSection);
    referencePreview_->setObjectName(QStringLiteral("dateImageview"));
    referencePreview_->setFixedSize(kPreviewSize);
    referencePreview_->setAlignment(Qt::AlignCenter);
    referencePreview_->hide();
    referenceName_ = new QLabel(referenceSection);
    referenceName_->setObjectName(QStringLiteral("referenceNameLabel"));
    referenceName_->setFixedWidth(kPreviewSize.width());
    referenceName_->setAlignment(Qt::AlignHCenter);
    clearReference_ = dialogButton(referenceSection, QStringLiteral("Clear"), "clearReferenceButton");
    clearReference_->setCursor(Qt::PointingHandCursor);
    clearReference_->hide();

    beforeOriginal_ = dateField("beforeorignalDatelab", true, referenceSection);
    afterOriginal_ = dateField("afterorignalDatelab", false, referenceSection);
    beforeDigitized_ = dateField("beforediginalDatelab", true, referenceSection);
    afterDigitized_ = dateField("afterdiginalDatelab", false, referenceSection);

    auto* photoColumn = new QVBoxLayout;
    photoColumn->setSpacing(6);
    photoColumn->addWidget(choosePhoto);
    photoColumn->addWidget(referencePreview_, 0, Qt::AlignHCenter);
    photoColumn->addWidget(referenceName_, 0, Qt::AlignHCenter);
    photoColumn->addWidget(clearReference_, 0, Qt::AlignHCenter);
    photoColumn->addStretch(1);

    auto* dateGrid = new QGridLayout;
    dateGrid->setHorizontalSpacing(10);
    dateGrid->setVerticalSpacing(8);
    dateGrid->addWidget(labelWithRole(QStringLiteral("Before"), "column", referenceSection), 0, 1);
    dateGrid->addWidget(labelWithRole(QStringLiteral("After"), "column", referenceSection), 0, 2);
    dateGrid->addWidget(new QLabel(QStringLiteral("Date taken"), referenceSection), 1, 0,
                        Qt::AlignRight | Qt::AlignVCenter);
    dateGrid->addWidget(beforeOriginal_, 1, 1);
    dateGrid->addWidget(afterOriginal_, 1, 2);
    dateGrid->addWidget(new QLabel(QStringLiteral("Date digitized"), referenceSection), 2, 0,
                        Qt::AlignRight | Qt::AlignVCenter);
    dateGrid->addWidget(beforeDigitized_, 2, 1);
    dateGrid->addWidget(afterDigitized_, 2, 2);
    dateGrid->setRowStretch(3, 1);

    auto* referenceRow = new QHBoxLayout;
    referenceRow->setSpacing(18);
    referenceRow->addLayout(photoColumn);
    referenceRow->addLayout(dateGrid, 1);
    auto* referenceLayout = new QVBoxLayout(referenceSection);
    referenceLayout->setContentsMargins(14, 10, 14, 12);
    referenceLayout->setSpacing(10);
    referenceLayout->addWidget(
        labelWithRole(QStringLiteral("By a reference photo"), "heading", referenceSection));
    referenceLayout->addLayout(referenceRow);

    // To one date.
    QFrame* fixedSection = section(this);
    fixedDate_ = dateField("mutSetDatelab", false, fixedSection);
    fixedDate_->setPlaceholderText(QStringLiteral("YYYY:MM:DD HH:MM:SS"));
    auto* fixedLayout = new QVBoxLayout(fixedSection);
    fixedLayout->setContentsMargins(14, 10, 14, 12);
    fixedLayout->setSpacing(10);
    fixedLayout->addWidget(labelWithRole(QStringLiteral("To one date"), "heading", fixedSection));
    auto* fixedRow = new QHBoxLayout;
    fixedRow->addWidget(fixedDate_);
    fixedRow->addStretch(1);
    fixedLayout->addLayout(fixedRow);

    // By a time span.
    QFrame* spanSection = section(this);
    auto* spanGrid = new QGridLayout;
    spanGrid->setHorizontalSpacing(8);
    spanGrid->setVerticalSpacing(4);
    const struct {
        QLineEdit** field;
        const char* objectName;
        const char* label;
    } spanFields[] = {
        {&years_, "yearVaulab", "Years"},     {&months_, "monthVaulab", "Months"},
        {&days_, "dayVaulab", "Days"},        {&hours_, "hourVaulab", "Hours"},
        {&minutes_, "minuVaulab", "Minutes"}, {&seconds_, "secVaulab", "Seconds"},
    };
    int column = 0;
    for (const auto& unit : spanFields) {
        auto* field = new QLineEdit(spanSection);
        field->setObjectName(QString::fromLatin1(unit.objectName));
        field->setAlignment(Qt::AlignRight);
        field->setFixedWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("888888")) + 20);
        *unit.field = field;
        spanGrid->addWidget(labelWithRole(QString::fromLatin1(unit.label), "column", spanSection), 0,
                            column, Qt::AlignHCenter);
        spanGrid->addWidget(field, 1, column, Qt::AlignHCenter);
        ++column;
    }
    addTime_ = dialogButton(spanSection, QStringLiteral("Add Time"), "AddTimeBtn");
    subtractTime_ = dialogButton(spanSection, QStringLiteral("Subtract Time"), "RemoveTimeBtn");
    for (QPushButton* button : {addTime_, subtractTime_})
        button->setCheckable(true);
    auto* directionColumn = new QHBoxLayout;
    directionColumn->setSpacing(8);
    directionColumn->addWidget(addTime_);
    directionColumn->addWidget(subtractTime_);
    auto* spanRow = new QHBoxLayout;
    spanRow->setSpacing(18);
    spanRow->addLayout(spanGrid);
    spanRow->addStretch(1);
    spanRow->addLayout(directionColumn);
    auto* spanLayout = new QVBoxLayout(spanSection);
    spanLayout->setContentsMargins(14, 10, 14, 12);
    spanLayout->setSpacing(10);
    spanLayout->addWidget(labelWithRole(QStringLiteral("By a time span"), "heading", spanSection));
    spanLayout->addLayout(spanRow);

    modeSummary_ = new QLabel(this);
    modeSummary_->setObjectName(QStringLiteral("modeSummary"));
    modeSummary_->setWordWrap(true);

    QPushButton* fileDatesButton =
        dialogButton(this, QStringLiteral("Save File Dates Only"), "mutiCreatedDateSaveButton");
    QPushButton* cancelButton = dialogButton(this, QStringLiteral("Cancel"), "mutiDateCancelButton");
    QPushButton* saveButton = dialogButton(this, QStringLiteral("Save"), "mutiDateSaveButton", true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 16, 18, 14);
    layout->setSpacing(12);
    layout->addWidget(referenceSection);
    layout->addWidget(fixedSection);
    layout->addWidget(spanSection);
    layout->addWidget(modeSummary_);
    layout->addStretch(1);
    layout->addLayout(trailingButtonRow({fileDatesButton, cancelButton, saveButton}, 12));

    connect(choosePhoto, &QPushButton::clicked, this, &BatchDateDialog::choosePhotoRequested);
    connect(clearReference_, &QPushButton::clicked, this, &BatchDateDialog::clearReferencePhoto);
    connect(fixedDate_, &QLineEdit::textChanged, this, &BatchDateDialog::updateModeSummary);
    // A pair, not a radio group: checking one releases the other, and both may be off.
    connect(addTime_, &QPushButton::toggled, this, [this](bool on) {
        if (on)
            subtractTime_->setChecked(false);
    });
    connect(subtractTime_, &QPushButton::toggled, this, [this](bool on) {
        if (on)
            addTime_->setChecked(false);
    });
    connect(saveButton, &QPushButton::clicked, this, &BatchDateDialog::saveRequested);
    connect(fileDatesButton, &QPushButton::clicked, this, &BatchDateDialog::saveFileDatesRequested);
    connect(cancelButton, &QPushButton::clicked, this, &BatchDateDialog::reject);

    updateModeSummary();
}

void BatchDateDialog::setReferencePhoto(const QString& path, const QImage& thumbnail,
                                        const PhotoDateTexts& dates)
{
    referencePath_ = path;
    if (thumbnail.isNull()) {
        referencePreview_->setPixmap(QPixmap());
        referencePreview_->setText(QStringLiteral("No preview"));
    } else {
        referencePreview_->setPixmap(QPixmap::fromImage(thumbnail.scaled(
            kPreviewSize - QSize(2, 2), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    }
    const QString name = QFileInfo(path).fileName();
    referenceName_->setText(
        referenceName_->fontMetrics().elidedText(name, Qt::ElideMiddle, kPreviewSize.width()));
    referenceName_->setToolTip(path);
    referencePreview_->show();
    clearReference_->show();
    beforeOriginal_->setText(dates.original);
    afterOriginal_->setText(dates.original);
    beforeDigitized_->setText(dates.digitized);
    afterDigitized_->setText(dates.digitized);
    updateModeSummary();
}

void BatchDateDialog::clearReferencePhoto()
{
    referencePath_.clear();
    referencePreview_->clear();
    referencePreview_->hide();
    referenceName_->clear();
    referenceName_->setToolTip(QString());
    clearReference_->hide();
    updateModeSummary();
}

BatchDateRequest BatchDateDialog::request() const
{
    BatchDateRequest r;
    r.referencePhoto = referencePath_;
    r.beforeOriginal = beforeOriginal_->text();
    r.beforeDigitized = beforeDigitized_->text();
    r.afterOriginal = afterOriginal_->text();
    r.afterDigitized = afterDigitized_->text();
    r.fixedDate = fixedDate_->text();
    r.span.years = leadingCount(years_->text());
    r.span.months = leadingCount(months_->text());
    r.span.days = leadingCount(days_->text());
    r.span.hours = leadingCount(hours_->text());
    r.span.minutes = leadingCount(minutes_->text());
    r.span.seconds = leadingCount(seconds_->text());
    r.add = addTime_->isChecked();
    return r;
}

void BatchDateDialog::clearFields()
{
    for (QLineEdit* field : {fixedDate_, beforeOriginal_, afterOriginal_, beforeDigitized_,
                             afterDigitized_, years_, months_, days_, hours_, minutes_, seconds_})
        field->clear();
}

// Escape and the window's close button cancel too, so they forget the same things.
void BatchDateDialog::reject()
{
    clearFields();
    clearReferencePhoto();
    QDialog::reject();
}

// Names the mode the engine will pick from the same fields, in the same order.
void BatchDateDialog::updateModeSummary()
{
    if (!referencePath_.isEmpty())
        modeSummary_->setText(QStringLiteral("Each photo moves by the reference photo's change."));
    else if (!fixedDate_->text().trimmed().isEmpty())
        modeSummary_->setText(QStringLiteral("Each photo gets the date above."));
    else
        modeSummary_->setText(QStringLiteral("Each photo moves by the span."));
}

}  // namespace pelorin
