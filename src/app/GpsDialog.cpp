#include "app/GpsDialog.h"

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
QDialog { background-color: #34495E; }
QLabel { color: #FFFFFF; }
QFrame#previewMapArea { background-color: #1E2833; border: 1px solid #4F6275; border-radius: 4px; }
QLabel#previewCoordinateLabel { color: #C9D6E2; font-size: 11pt; background: transparent; border: none; }
QLineEdit { background-color: #23292F; color: #ECF0F1; border: 1px solid #5A6B7C;
    border-radius: 3px; padding: 4px 6px; selection-background-color: #2F80C0; }
QLineEdit:focus { border-color: #5FC3FF; }
QPushButton { background-color: #46627D; color: #FFFFFF; border: 1px solid #5C7A96;
    border-radius: 4px; padding: 5px 14px; }
QPushButton:hover { background-color: #52708D; }
QPushButton:pressed { background-color: #3A5068; }
QPushButton:default { background-color: #2F80C0; border-color: #5FC3FF; }
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
    QFont base = font();
    base.setPointSize(10);
    setFont(base);
    setStyleSheet(QString::fromLatin1(kLook));

    latitude_ = field("latitudelab", QStringLiteral("-33.45 (south negative)"), this);
    longitude_ = field("longtitudelab", QStringLiteral("-70.66 (west negative)"), this);
    altitude_ = field("altitudelab", QString(), this);
    dateStamp_ = field("dateStamplab", QString(), this);
    timeStamp_ = field("timeStamplab", QString(), this);

    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(8);
    form->addRow(QStringLiteral("Latitude:"), latitude_);
    form->addRow(QStringLiteral("Longitude:"), longitude_);
    form->addRow(QStringLiteral("Altitude (m):"), altitude_);
    form->addRow(QStringLiteral("GPS date:"), dateStamp_);
    form->addRow(QStringLiteral("GPS time:"), timeStamp_);

    auto* previewButton = new QPushButton(QStringLiteral("Preview on Map"), this);
    previewButton->setObjectName(QStringLiteral("previewGpsButton"));
    previewButton->setAutoDefault(false);
    auto* previewRow = new QHBoxLayout;
    previewRow->addStretch(1);
    previewRow->addWidget(previewButton);

    auto* fieldsColumn = new QVBoxLayout;
    fieldsColumn->setSpacing(12);
    fieldsColumn->addLayout(form);
    fieldsColumn->addLayout(previewRow);
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

    auto* cancelButton = new QPushButton(QStringLiteral("Cancel"), this);
    cancelButton->setObjectName(QStringLiteral("gpsCancelButton"));
    cancelButton->setAutoDefault(false);
    auto* saveButton = new QPushButton(QStringLiteral("Save"), this);
    saveButton->setObjectName(QStringLiteral("gpsSaveButton"));
    saveButton->setDefault(true);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addStretch(1);
    buttonRow->addWidget(cancelButton);
    buttonRow->addWidget(saveButton);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(16);
    layout->addLayout(content, 1);
    layout->addLayout(buttonRow);

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
