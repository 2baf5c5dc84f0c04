#include "photo/PhotoDateStamp.h"
#include "photo/StampFont.h"

#include "model/PhotoBatch.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/Preferences.h"
#include "model/SafeOutput.h"
#include "photo/JpegRecompression.h"
#include "photo/PhotoCaptureDate.h"
#include "photo/PhotoProperties.h"

#include <QFileInfo>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

namespace pelorin {
namespace {

std::optional<WallClock> captureDate(const QString& path)
{
    if (const auto clock = photoCaptureDate(readPhotoProperties(path).properties))
        return clock;
    return wallClockFromInstant(readFileDates(path).modified);
}

}  // namespace

QString dateStampText(const WallClock& date, const QString& dateFormat)
{
    const QDate d = date.date();
    const QTime t = date.time();
    const QString time = QString::asprintf("%02d:%02d", t.hour(), t.minute());
    if (dateFormat.compare(QLatin1String("DD/MM/YYYY HH:MM"), Qt::CaseInsensitive) == 0)
        return QString::asprintf("%02d/%02d/%04d ", d.day(), d.month(), d.year()) + time;
    if (dateFormat.compare(QLatin1String("YYYY/MM/DD HH:MM"), Qt::CaseInsensitive) == 0)
        return QString::asprintf("%04d/%02d/%02d ", d.year(), d.month(), d.day()) + time;
    return QString::asprintf("%02d/%02d/%04d ", d.month(), d.day(), d.year()) + time;
}

QImage drawDateStamp(QImage picture, const QString& text, const DateStampStyle& style)
{
    // An opaque picture stays opaque, so that the JPEG encoder needs no flattened copy of it;
    // a moved-in picture is converted in place.
    const QImage::Format format = picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                            : QImage::Format_RGB32;
    QImage stamped = std::move(picture).convertToFormat(format);
    const int shorter = qMin(stamped.width(), stamped.height());
    QFont font(stampFontFamily(style.fontFamily));
    font.setPixelSize(qMax(6, int(qRound(style.fontSize * shorter / 1000.0))));
    const QFontMetricsF metrics(font);
    const qreal margin = qMax(2.0, shorter * 0.02);
    const qreal width = metrics.horizontalAdvance(text);
    const QString corner = style.corner.toLower();
    const qreal x = corner.contains(QLatin1String("right")) ? stamped.width() - margin - width : margin;
    const qreal baseline = corner.startsWith(QLatin1String("upper")) ? margin + metrics.ascent()
                                                                     : stamped.height() - margin - metrics.descent();
    QPainterPath path;
    path.addText(QPointF(x, baseline), font, text);
    QPainter painter(&stamped);
    painter.setRenderHint(QPainter::Antialiasing);
    // A soft shadow: a few faint, offset copies under the text keep it legible on any sky.
    const qreal offset = qMax(1.0, font.pixelSize() / 14.0);
    for (int i = 3; i >= 1; --i) {
        painter.fillPath(path.translated(offset * i / 2.0, offset * i / 2.0), QColor(0, 0, 0, 60));
    }
    painter.fillPath(path, style.color);
    painter.end();
    return stamped;
}

CommandResult stampPhotoDates(const PhotoSelection& selection, const DateStampStyle& style,
                              const CommandContext& context)
{
    CommandResult result;
    if (!startPhotoBatch(selection, context, result))
        return result;
    for (qsizetype i = 0; i < selection.items.size(); ++i) {
        if (context.isCancelled())
            break;
        const IKImageItem& item = selection.items[i];
        const QString input = photoInputPath(item, selection.source, context.storageFolder);
        QString error;
        QImage upright = decodeUprightPhoto(input, &error);
        const auto date = upright.isNull() ? std::nullopt : captureDate(input);
        if (upright.isNull() || !date) {
            result.skip(input, upright.isNull() ? error : QStringLiteral("the photo has no date to stamp"));
            continue;
        }
        const QImage stamped = drawDateStamp(std::move(upright), dateStampText(*date, style.dateFormat), style);
        const QString output = context.claimOutput(recompressedOutputPath(input, context.storageFolder), input);
        const qsizetype before = result.written.size();
        compressPhotowithFilePath(input, output, context, result, stamped);
        if (result.written.size() > before)
            context.reveal.reveal(output);
        context.report(int(i) + 1, int(selection.items.size()));
    }
    return result;
}

DateStampStyle stampStyleFromPreferences(const PreferenceValues& preferences)
{
    DateStampStyle style;
    style.fontFamily = preferences.fontName;
    style.fontSize = preferences.fontSize > 0 ? preferences.fontSize : Preferences::kDefaultFontSize;
    style.corner = stampCornerTitles().value(preferences.cornerIndex);
    style.dateFormat = stampDateFormatTitles().value(preferences.dateFormatIndex);
    return style;
}

}  // namespace pelorin
