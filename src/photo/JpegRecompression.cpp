#include "photo/JpegRecompression.h"

#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/OutputDates.h"
#include "model/ImageReadBack.h"
#include "model/SafeOutput.h"
#include "photo/HeifFile.h"
#include "photo/HeifImage.h"
#include "photo/PhotoCaptureDate.h"
#include "photo/PhotoCompleteness.h"
#include "photo/PhotoColourProfile.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

namespace pelorin {
namespace {

std::optional<QByteArray> encodeJpeg(const QImage& picture)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(kSmallCopyJpegQuality);
    writer.setProgressiveScanWrite(false);
    // A fresh image, since Qt would write a decoded image's text chunks as JPEG comments. A
    // decoded JPEG's pixels are only wrapped (no second copy of a large picture); others are
    // painted on white: transparent parts become white, as on a page.
    QImage opaque;
    const QImage::Format format = picture.format();
    if (format == QImage::Format_RGB32 || format == QImage::Format_RGB888 || format == QImage::Format_Grayscale8) {
        opaque = QImage(picture.constBits(), picture.width(), picture.height(), picture.bytesPerLine(),
                        picture.format());
    } else {
        opaque = QImage(picture.size(), QImage::Format_RGB32);
        if (opaque.isNull())
            return std::nullopt;
        opaque.fill(Qt::white);
        QPainter painter(&opaque);
        painter.drawImage(0, 0, picture);
        painter.end();
    }
    if (!writer.write(opaque))
        return std::nullopt;
    return buffer.data();
}

// The capture date as a file date, else the source file's creation date (its modification date
// where no creation date is kept).
QDateTime captureInstant(const QVariantMap& properties, const QString& sourcePath)
{
    if (const auto clock = photoCaptureDate(properties))
        return instantFromWallClock(*clock);
    const FileDateReading dates = readFileDates(sourcePath);
    return dates.created.isValid() ? dates.created : dates.modified;
}

}  // namespace

QString recompressedOutputPath(const QString& sourcePath, const QString& folder)
{
    const QFileInfo info(sourcePath);
    const QString name = info.fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString base = dot < 0 ? name : name.left(dot);
    QString extension = dot < 0 ? QString() : name.mid(dot + 1);
    const QString lower = extension.toLower();
    if (!extension.isEmpty() && lower != QLatin1String("jpg") && lower != QLatin1String("jpeg"))
        extension = QStringLiteral("jpg");
    const QString dir = folder.isEmpty() ? info.absolutePath() : folder;
    return QStringLiteral("%1/%2_date.%3").arg(dir, base, extension);
}

QImage decodeUprightPhoto(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot open the photo: %1").arg(file.errorString());
        return {};
    }
    // Decoders fill a truncated picture with grey; a copy of that would pass for the photo.
    if (!photoFileComplete(path)) {
        *error = damagedPhotoReason();
        return {};
    }
    if (looksLikeHeif(file.peek(64))) {
        file.close();
        return decodeHeifImage(path, 0, error);
    }
    QImageReader reader(&file);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    const qint64 pixels = size.isValid() ? qint64(size.width()) * size.height() : 0;
    if (pixels > kMaxReencodedPixels) {
        *error = QStringLiteral("the picture is too large to be re-encoded (%1 x %2 pixels, %3 megapixels; "
                                "the limit is %4)")
                     .arg(size.width())
                     .arg(size.height())
                     .arg(pixels / 1000000)
                     .arg(kMaxReencodedPixels / 1000000);
        return {};
    }
    // Qt's default limit (256 MB) would refuse pictures that the limit above lets through.
    reader.setAllocationLimit(int(kMaxReencodedPixels * 4 / (1024 * 1024)) + 1);
    const QImage picture = reader.read();
    if (picture.isNull())
        *error = QStringLiteral("cannot decode the picture: %1").arg(reader.errorString());
    return picture;
}

void compressPhotowithFilePath(const QString& sourcePath, const QString& outputPath,
                               const CommandContext& context, CommandResult& result, const QImage& picture)
{
    QString error;
    const QImage upright = picture.isNull() ? decodeUprightPhoto(sourcePath, &error) : picture;
    if (upright.isNull()) {
        result.skip(sourcePath, error);
        return;
    }
    QFile file(sourcePath);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaxPhotoFileSize) {
        result.skip(sourcePath, QStringLiteral("cannot read the photo"));
        return;
    }
    const QByteArray source = file.readAll();
    // libheif reads HEIF metadata from the file itself.
    const PhotoProperties current = looksLikeHeif(source.left(64)) ? readPhotoProperties(sourcePath)
                                                                   : readPhotoProperties(source, QFileInfo(sourcePath).suffix());
    const auto jpeg = encodeJpeg(upright);
    if (!jpeg) {
        result.skip(sourcePath, QStringLiteral("the picture could not be encoded as JPEG"));
        return;
    }
    // The pixels are upright now: orientation 1, and the EXIF sizes of the new picture.
    PhotoChanges adjustments;
    adjustments.groups.insert(QStringLiteral("Orientation"), 1);
    QVariantMap exif = current.properties.value(QStringLiteral("{Exif}")).toMap();
    if (!exif.isEmpty()) {
        exif.insert(QStringLiteral("PixelXDimension"), qlonglong(upright.width()));
        exif.insert(QStringLiteral("PixelYDimension"), qlonglong(upright.height()));
        adjustments.groups.insert(QStringLiteral("{Exif}"), exif);
    }
    QByteArray out = *jpeg;
    const bool heif = looksLikeHeif(source.left(64));
    // A GIF's metadata cannot be rewritten in place, but its XMP can travel into the copy.
    const bool gif = current.format.container == PhotoContainer::Gif;
    if (current.format.metadataWritable || heif || gif) {
        std::optional<QByteArray> carried;
        if (!heif) {
            carried = carryMetadataOver(source, *jpeg, adjustments, &error);
        } else if (const auto metadata = readHeifMetadata(sourcePath, &error)) {
            carried = carryHeifMetadataOver(*metadata, *jpeg, adjustments, &error);
        }
        if (carried)
            out = *carried;
        else
            result.noteOnce(QStringLiteral("%1: %2").arg(QFileInfo(sourcePath).fileName(), error));
    } else {
        result.noteOnce(QStringLiteral("the metadata of %1 files is not carried into their small copies")
                            .arg(current.format.isKnown() ? current.format.kind : QStringLiteral("such")));
        const QByteArray profile = readPhotoIccProfile(source);
        if (!profile.isEmpty()) {
            const auto withProfile = embedJpegIccProfile(out, profile, &error);
            if (!withProfile) {
                result.skip(sourcePath, error);  // its colours would change
                return;
            }
            out = *withProfile;
        }
    }
    const QDateTime date = captureInstant(current.properties, sourcePath);
    if (context.dryRun) {
        result.plan(outputPath, QStringLiteral("small JPEG copy"), QString(),
                    QStringLiteral("%1 x %2").arg(upright.width()).arg(upright.height()));
        setOutputFileDates(outputPath, date, date, context, result);
        return;
    }
    const auto decodesAsMade = [size = upright.size()](const QString& pending) {
        return encodedImageProblem(pending, "JPEG", size);
    };
    if (!writeFileAtomically(outputPath, out, sourcePath, &error, Durability::FlushEach, decodesAsMade)) {
        result.skip(sourcePath, error);
        return;
    }
    setOutputFileDates(outputPath, date, date, context, result);
    result.addWritten(outputPath);
}

CommandResult recompressPhotos(const QStringList& paths, const CommandContext& context)
{
    CommandResult result;
    if (paths.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    QString error;
    if (!context.dryRun && !ensureFolder(context.storageFolder, &error)) {
        for (const QString& path : paths)
            result.skip(path, error);
        return result;
    }
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (context.isCancelled())
            break;
        const QString output = context.claimOutput(recompressedOutputPath(paths[i], context.storageFolder), paths[i]);
        const qsizetype before = result.written.size();
        compressPhotowithFilePath(paths[i], output, context, result);
        if (result.written.size() > before)
            context.reveal.reveal(output);
        context.report(int(i) + 1, int(paths.size()));
    }
    return result;
}

}  // namespace pelorin
