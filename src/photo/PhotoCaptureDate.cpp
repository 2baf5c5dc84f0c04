#include "photo/PhotoCaptureDate.h"

#include "model/DateText.h"

namespace pelorin {
namespace {

// An XMP date ("2004-06-21T23:37:53+01:00", zone and fraction optional) on its own wall clock,
// as the EXIF dates are kept.
std::optional<WallClock> xmpDateTime(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.size() < 19 || trimmed[10] != QLatin1Char('T'))
        return std::nullopt;
    QString wall = trimmed.left(19);
    wall[10] = QLatin1Char(' ');
    return parseDateText(wall, DateTextForm::Dash);
}

}  // namespace

std::optional<WallClock> photoCaptureDate(const QVariantMap& properties)
{
    const QVariantMap exif = properties.value(QStringLiteral("{Exif}")).toMap();
    for (const char* key : {"DateTimeOriginal", "DateTimeDigitized"}) {
        if (const auto clock = parseDateText(exif.value(QString::fromLatin1(key)).toString()))
            return clock;
    }
    const QVariantMap xmp = properties.value(QStringLiteral("{XMP}")).toMap();
    for (const char* key : {"exif:DateTimeOriginal", "photoshop:DateCreated", "exif:DateTimeDigitized", "xmp:CreateDate"}) {
        if (const auto clock = xmpDateTime(xmp.value(QString::fromLatin1(key)).toString()))
            return clock;
    }
    // A PNG's own text chunk, as exiftool writes it; the RFC 1123 form PNG suggests carries a
    // zone we cannot place on the photo's clock and is not used.
    const QString created = properties.value(QStringLiteral("{PNG}")).toMap().value(QStringLiteral("Creation Time")).toString();
    if (const auto clock = parseDateText(created))
        return clock;
    return xmpDateTime(created);
}

}  // namespace pelorin
