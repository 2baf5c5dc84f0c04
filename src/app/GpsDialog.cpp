#include "app/GpsDialog.h"

#include "ui/DialogLook.h"

#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace pelorin {
namespace {

const char* const kLook = R"(
QFrame#previewMapArea { background-color: #1E2833; border: 1px solid #4F6275; border-radius: 4px; }
QLabel#previewCoordinateLabel { color: #C9D6E2; font-size: 11pt; background: transparent; border: none; }
)";

const QString kNoPreview = QStringLiteral("Type a location and press Preview on Map.");

QString hemisphereText(double degrees, char positive, char negative)
{
    return QStringLiteral("%1° %2")
        .arg(std::fabs(degrees), 0, 'f', 5)
        .arg(QLatin1Char(degrees < 0 ? negative : positive));
}

QLineEdit* field(const char* objectName, const QString& placeholder, QWidget* parent)
{
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QString::fromLatin1(objectName));
    edit->setPlaceholderText(placeholder);
    edit->setMinimumWidth(edit->fontMetrics().horizontalAdvance(QStringLiteral("-70.66 (west negative)")) + 24);
    return edit;
}

}  // namespace

GpsDialog::GpsDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("changeGPSWindow"));
    setWindowTitle(QStringLiteral("GPS Location"));
    applyLook(this, dialogStyleSheet(QString::fromLatin1(kLook), DialogFields::LineEdits));

    latitude_ = field("latitudelab", QStringLiteral("-33.45 (south negative)"), this);
    longitude_ = field("longtitudelab", QStringLiteral("-70.66 (west negative)"), this);
    altitude_ = field("altitudelab", QString(), this);
    dateStamp_ = field("dateStamplab", QString(), this);
    timeStamp_ = field("timeStamplab", QString(), this);

    QFormLayout* form = alignedFormLayout();
    form->addRow(QStringLiteral("Latitude:"), latitude_);
    form->addRow(QStringLiteral("Longitude:"), longitude_);
    form->addRow(QStringLiteral("Altitude (m):"), altitude_);
    form->addRow(QStringLiteral("GPS date:"), dateStamp_);
    form->addRow(QStringLiteral("GPS time:"), timeStamp_);

    QPushButton* previewButton = dialogButton(this, QStringLiteral("Preview on Map"), "previewGpsButton");

    auto* fieldsColumn = new QVBoxLayout;
    fieldsColumn->setSpacing(12);
    fieldsColumn->addLayout(form);
    fieldsColumn->addLayout(trailingButtonRow({previewButton}));
    fieldsColumn->addStretch(1);

    mapArea_ = new QFrame(this);
    mapArea_->setObjectName(QStringLiteral("previewMapArea"));
    mapArea_->setMinimumSize(320, 220);
    mapText_ = new QLabel(kNoPreview, mapArea_);
    mapText_->setObjectName(QStringLiteral("previewCoordinateLabel"));
    mapText_->setAlignment(Qt::AlignCenter);
    mapText_->setWordWrap(true);
    auto* mapLayout = new QVBoxLayout(mapArea_);
    mapLayout->setContentsMargins(1, 1, 1, 1);
    mapLayout->addWidget(mapText_);

    auto* content = new QHBoxLayout;
    content->setSpacing(20);
    content->addLayout(fieldsColumn);
    content->addWidget(mapArea_, 1);

    QPushButton* cancelButton = dialogButton(this, QStringLiteral("Cancel"), "gpsCancelButton");
    QPushButton* saveButton = dialogButton(this, QStringLiteral("Save"), "gpsSaveButton", true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(16);
    layout->addLayout(content, 1);
    layout->addLayout(trailingButtonRow({cancelButton, saveButton}));

    connect(previewButton, &QPushButton::clicked, this, &GpsDialog::previewRequested);
    connect(saveButton, &QPushButton::clicked, this, &GpsDialog::saveRequested);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

void GpsDialog::setInput(const GpsInput& input)
{
    latitude_->setText(input.latitude);
    longitude_->setText(input.longitude);
    altitude_->setText(input.altitude);
    dateStamp_->setText(input.dateStamp);
    timeStamp_->setText(input.timeStamp);
}

void GpsDialog::setNewLocationPlaceholders()
{
    setInput(GpsInput{});
    dateStamp_->setPlaceholderText(QStringLiteral("YYYY:MM:DD"));
    timeStamp_->setPlaceholderText(QStringLiteral("HH:MM:SS"));
}

GpsInput GpsDialog::input() const
{
    return {latitude_->text(), longitude_->text(), altitude_->text(), dateStamp_->text(),
            timeStamp_->text()};
}

QWidget* GpsDialog::mapArea() const
{
    return mapArea_;
}

void GpsDialog::showPreviewCoordinate(double latitude, double longitude)
{
    if (!std::isfinite(latitude) || !std::isfinite(longitude)) {
        mapText_->setText(kNoPreview);
        return;
    }
    mapText_->setText(hemisphereText(latitude, 'N', 'S') + QStringLiteral("  ") +
                      hemisphereText(longitude, 'E', 'W'));
}

}  // namespace pelorin
