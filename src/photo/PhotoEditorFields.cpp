#include "photo/PhotoEditorFields.h"

#include "model/DateText.h"
#include "model/DisplayTexts.h"
#include "model/LocalTime.h"
#include "photo/PhotoFields.h"
#include "photo/PropertyTree.h"

namespace pelorin {
namespace {

QString dateText(const QDateTime& instant)
{
    const auto clock = wallClockFromInstant(instant);
    return clock ? renderDateText(*clock, DateTextForm::Dash) : QString();
}

// "A x B" from two top-level properties, empty when either is missing.
QString pairText(const QVariantMap& properties, const QString& first, const QString& second)
{
    if (!properties.contains(first) || !properties.contains(second))
        return {};
    return QStringLiteral("%1 x %2").arg(propertyValueText(properties.value(first)),
                                        propertyValueText(properties.value(second)));
}

}  // namespace

PhotoEditorFill fillPhotoEditorFields(const QVariantMap& properties, const PhotoFileFacts& facts)
{
    PhotoEditorFill fill;
    PhotoEditorTexts& f = fill.fields;
    for (const PhotoFieldRow& row : photoFieldRows())
        f.*row.member = photoFieldText(properties, row.field);
    f.modificationDate = f.cameraDate;

    f.fileName = facts.fileName;
    f.creationDate = facts.created.isValid() ? dateText(facts.created) : QString();
    if (facts.size > 0)
        f.fileSize = QStringLiteral("%1 (%2 bytes)").arg(sizeText(quint64(facts.size))).arg(facts.size);
    f.imageSize = pairText(properties, QStringLiteral("PixelWidth"), QStringLiteral("PixelHeight"));
    f.dpi = pairText(properties, QStringLiteral("DPIWidth"), QStringLiteral("DPIHeight"));

    fill.hasGps = properties.contains(locationGroup());
    fill.latitude = photoFieldNumber(properties, PhotoField::GpsLatitude).value_or(0.0);
    fill.longitude = photoFieldNumber(properties, PhotoField::GpsLongitude).value_or(0.0);
    return fill;
}

}  // namespace pelorin
