#include "photo/PhotoRewrite.h"

#include "model/MemoryBudget.h"
#include "model/SafeOutput.h"
#include "photo/ApplyPhotoChanges.h"
#include "photo/CarriedExif.h"
#include "photo/ContainerProperties.h"
#include "photo/Cr3PhotoRewrite.h"
#include "photo/Exiv2Model.h"
#include "photo/HeifFile.h"
#include "photo/HeifPhotoRewrite.h"
#include "photo/JpegExifContinuation.h"
#include "photo/JpegExifRequirements.h"
#include "photo/JpegMakerNote.h"
#include "photo/MakerNoteValues.h"
#include "photo/JpegSegments.h"
#include "photo/PhotoCompleteness.h"
#include "photo/PhotoFormats.h"
#include "photo/PhotoLibraries.h"
#include "photo/PhotoMetadataSide.h"
#include "photo/PhotoReadBack.h"
#include "photo/PhotoshopIptcDigest.h"
#include "photo/PngTextRemoval.h"
#include "photo/UntouchedMetadata.h"
#include "photo/PhotoProperties.h"

#include <QFile>
#include <QFileInfo>

namespace pelorin {
namespace {

using Outcome = PhotoWriteResult::Outcome;

PhotoWriteResult failed(const QString& reason)
{
    PhotoWriteResult r;
    r.outcome = Outcome::Failed;
    r.reason = reason;
    return r;
}

QString exiv2Message(const std::exception& e) { return QString::fromLocal8Bit(e.what()); }

// exiv2 reads one EXIF segment; the rest of a split EXIF would be lost or left malformed.
const QString kSplitExifTooLarge = QStringLiteral("its EXIF is split over several segments and too large to be written as one");


// The bytes exiv2 wrote into its memory I/O, without copying them: valid while the image lives.
QByteArray ioView(Exiv2::BasicIo& io)
{
    const long size = long(io.size());
    const Exiv2::byte* data = io.mmap();
    if (size <= 0 || !data)
        return {};
    return QByteArray::fromRawData(reinterpret_cast<const char*>(data), size);
}

// Writes a rewritten file, then lets go of the bytes and of exiv2's image that holds them before
// the output is read back, so that a large file is not in memory three times at once.
bool writeThenReadBack(const QString& outputPath, QByteArray& bytes, Exiv2::Image::AutoPtr& image,
                       const QString& protectedSource, Durability durability, const OutputCheck& check,
                       QString* error)
{
    AtomicFileWriter writer(outputPath, protectedSource, durability);
    writer.setCheck(check);
    const bool ok = writer.open() && writer.write(bytes);
    bytes.clear();
    image.reset();
    if (!ok || !writer.commit()) {
        *error = writer.error();
        return false;
    }
    return true;
}

// The changed values of the request only, against what the photo holds now: a sidecar records
// what the user changed, not a copy of everything.
QVariantMap changedValues(const QVariantMap& current, const QVariantMap& groups)
{
    QVariantMap changed;
    for (auto it = groups.cbegin(); it != groups.cend(); ++it) {
        if (it.value().typeId() != QMetaType::QVariantMap) {
            if (!exiv2_model::sameValue(current.value(it.key()), it.value()))
                changed.insert(it.key(), it.value());
            continue;
        }
        const QVariantMap before = current.value(it.key()).toMap();
        const QVariantMap after = it.value().toMap();
        QVariantMap diff;
        for (auto v = after.cbegin(); v != after.cend(); ++v) {
            if (!before.contains(v.key()) || !exiv2_model::sameValue(before.value(v.key()), v.value()))
                diff.insert(v.key(), v.value());
        }
        if (!diff.isEmpty())
            changed.insert(it.key(), diff);
    }
    return changed;
}

// The sidecar next to the output: an existing one (an earlier edit of the same copy) is kept
// and the new values are laid over it.
bool writeSidecar(const QString& sidecarPath, const QVariantMap& changed, QStringList* warnings,
                  Durability durability, QString* error)
{
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    QFile existing(sidecarPath);
    if (existing.exists() && existing.open(QIODevice::ReadOnly)) {
        if (Exiv2::XmpParser::decode(xmp, existing.readAll().toStdString()) != 0)
            xmp.clear();
    }
    for (auto it = changed.cbegin(); it != changed.cend(); ++it)
        exiv2_model::applyChange({exif, iptc, xmp}, it.key(), it.value(), warnings);
    Exiv2::copyExifToXmp(exif, xmp);
    Exiv2::copyIptcToXmp(iptc, xmp);
    // exiv2 files the capture date under photoshop:DateCreated only; photo managers read the
    // EXIF schema's own property from sidecars too.
    const auto original = exif.findKey(Exiv2::ExifKey("Exif.Photo.DateTimeOriginal"));
    if (original != exif.end()) {
        std::string iso = original->toString();
        if (iso.size() >= 19) {
            iso[4] = '-';
            iso[7] = '-';
            iso[10] = 'T';
            xmp["Xmp.exif.DateTimeOriginal"] = iso.substr(0, 19);
        }
    }
    std::string packet;
    if (Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::omitPacketWrapper | Exiv2::XmpParser::useCompactFormat) != 0) {
        *error = QStringLiteral("the XMP sidecar could not be made");
        return false;
    }
    const QByteArray bytes = QByteArray::fromStdString(packet);
    const auto readsBack = [&bytes, &packet, count = xmp.count()](const QString& pending) {
        QFile file(pending);
        if (!file.open(QIODevice::ReadOnly) || file.readAll() != bytes)
            return QStringLiteral("the sidecar does not hold the packet that was written");
        Exiv2::XmpData decoded;
        if (Exiv2::XmpParser::decode(decoded, packet) != 0 || decoded.count() != count)
            return QStringLiteral("the sidecar's XMP does not read back as written");
        return QString();
    };
    return writeFileAtomically(sidecarPath, bytes, {}, error, durability, readsBack);
}

PhotoWriteResult copyWithSidecar(const QString& sourcePath, const PhotoFormat& format,
                                 const PhotoChanges& changes, const QString& outputPath,
                                 Durability durability)
{
    const PhotoProperties current = readPhotoProperties(sourcePath);
    PhotoWriteResult result;
    const QVariantMap changed = changedValues(current.properties, changes.groups);
    QString error;
    if (!isSameFile(sourcePath, outputPath) && !copyFileAtomically(sourcePath, outputPath, &error, durability))
        return failed(error);
    result.written << outputPath;
    const QString sidecar = outputPath + QStringLiteral(".xmp");
    if (!writeSidecar(sidecar, changed, &result.warnings, durability, &error))
        return failed(error);
    result.written << sidecar;
    result.outcome = Outcome::CopiedWithSidecar;
    result.reason = QStringLiteral("%1 files cannot be rewritten; the changes are in the sidecar %2")
                        .arg(format.kind, QFileInfo(sidecar).fileName());
    return result;
}

// The XMP to be written in the source's own forms: the source's packet when the values are the
// same, else exiv2's packet with the source's namespace URIs. exiv2 has already written the packet
// it read anew, so the source's own is taken from the file where it can be (a JPEG's).
void keepSourceXmpForms(Exiv2::Image& image, const Exiv2::XmpData& before, const QByteArray& sourceFile)
{
    const std::optional<std::string> raw = rawJpegXmpPacket(sourceFile);
    const std::string sourcePacket = raw ? *raw : image.xmpPacket();
    const Exiv2::XmpData& now = image.xmpData();
    const std::optional<std::string> packet = now.empty() ? std::nullopt : writtenXmp(now);  // made once
    if (now.count() == before.count() && (now.empty() || (packet && packet == writtenXmp(before)))) {
        image.xmpPacket() = sourcePacket;  // assigned: setXmpPacket would write it anew
        image.writeXmpFromPacket(true);
        return;
    }
    if (now.empty()) {
        // Every value removed: no packet at all (exiv2's WebP writer would keep the old one).
        image.xmpPacket().clear();
        image.writeXmpFromPacket(true);
        return;
    }
    if (!packet)
        return;
    image.xmpPacket() = withSourceNamespaceUris(*packet, sourcePacket);
    image.writeXmpFromPacket(true);
}

QString valueText(const QVariant& v)
{
    if (!v.isValid())
        return {};
    if (v.typeId() == QMetaType::QVariantList) {
        QStringList parts;
        for (const QVariant& item : v.toList())
            parts << valueText(item);
        return parts.join(QStringLiteral(", "));
    }
    if (v.typeId() == QMetaType::Double)
        return QString::number(v.toDouble(), 'g', QLocale::FloatingPointShortest);
    if (v.typeId() == QMetaType::QByteArray)
        return QStringLiteral("<%1 bytes>").arg(v.toByteArray().size());
    return v.toString();
}

// Each value the changes would alter, as the photo holds it now and as it would be.
QList<PlannedChange> planChanges(const QString& output, const QVariantMap& current, const PhotoChanges& changes)
{
    QList<PlannedChange> planned;
    if (changes.removeAllMetadata)
        planned.append({output, QStringLiteral("all metadata"), QStringLiteral("present"), QString()});
    for (auto it = changes.groups.cbegin(); it != changes.groups.cend(); ++it) {
        const QVariant before = current.value(it.key());
        if (it.value().isNull()) {
            if (before.isValid())
                planned.append({output, it.key(), QStringLiteral("%1 values").arg(before.toMap().size()), QString()});
            continue;
        }
        if (it.value().typeId() != QMetaType::QVariantMap) {
            if (!exiv2_model::sameValue(before, it.value()))
                planned.append({output, it.key(), valueText(before), valueText(it.value())});
            continue;
        }
        const QVariantMap was = before.toMap();
        const QVariantMap now = it.value().toMap();
        for (auto v = was.cbegin(); v != was.cend(); ++v) {
            if (!now.contains(v.key()))
                planned.append({output, it.key() + QLatin1Char('/') + v.key(), valueText(v.value()), QString()});
        }
        for (auto v = now.cbegin(); v != now.cend(); ++v) {
            if (!was.contains(v.key()) || !exiv2_model::sameValue(was.value(v.key()), v.value()))
                planned.append({output, it.key() + QLatin1Char('/') + v.key(), valueText(was.value(v.key())), valueText(v.value())});
        }
    }
    return planned;
}

// Writes the rewritten metadata side's pieces with the source's left-out ranges between them,
// the ranges copied from the source file in the kernel.
bool writeAroundLeftOutRanges(QFile& source, const QList<QByteArray>& pieces, const QList<CopiedRange>& ranges,
                              const QString& outputPath, const QString& protectedSource, Durability durability,
                              const OutputCheck& check, QString* error)
{
    AtomicFileWriter writer(outputPath, protectedSource, durability);
    writer.setCheck(check);
    bool ok = writer.open() && writer.write(pieces.first());
    for (qsizetype i = 0; ok && i < ranges.size(); ++i)
        ok = writer.appendFrom(source.handle(), ranges[i].sourceOffset, ranges[i].length) && writer.write(pieces[i + 1]);
    if (!ok || !writer.commit()) {
        *error = writer.error();
        return false;
    }
    return true;
}

// How much of the source a rewrite reads: its metadata side only (a JPEG's head, a PNG's or
// WebP's skeleton) where the structure allows, or all of it.
enum class SourceReading { MetadataSide, Whole };

PhotoWriteResult rewritePhoto(const QString& sourcePath, const PhotoChanges& changes, const QString& outputPath,
                              const PhotoWriteOptions& options, SourceReading reading);

}  // namespace

bool PhotoChanges::removesSomething() const
{
    if (removeAllMetadata)
        return true;
    for (const QVariant& v : groups) {
        if (v.isNull())
            return true;
    }
    return false;
}

PhotoWriteResult CopyPhotoWithProperties(const QString& sourcePath, const PhotoChanges& changes,
                                         const QString& outputPath, const PhotoWriteOptions& options)
{
    return rewritePhoto(sourcePath, changes, outputPath, options, SourceReading::MetadataSide);
}

namespace {

PhotoWriteResult rewritePhoto(const QString& sourcePath, const PhotoChanges& changes, const QString& outputPath,
                              const PhotoWriteOptions& options, SourceReading reading)
{
    const SourceReplacement replacement = options.replacement;
    initializePhotoLibraries();
    QFile file(sourcePath);
    if (!file.open(QIODevice::ReadOnly))
        return failed(QStringLiteral("cannot open the photo: %1").arg(file.errorString()));
    if (file.size() > kMaxPhotoFileSize)
        return failed(QStringLiteral("the file is too large to be rewritten"));
    const PhotoFormat format = detectPhotoFormat(file.read(64), QFileInfo(sourcePath).suffix());
    if (!format.isKnown())
        return failed(QStringLiteral("not a photo of a known kind"));
    // The box-based kinds are rewritten from the file by the box engine, which copies their
    // media in the kernel; the others are rewritten in memory.
    const bool heif = format.container == PhotoContainer::Heif;
    const bool cr3 = format.container == PhotoContainer::Cr3;
    // A JPEG is read up to its image data, a PNG, WebP or TIFF without it, which the output
    // copies from the file in the kernel; the others are read whole, and so is a file of an odd
    // structure.
    const std::optional<PhotoMetadataSide> side =
        reading == SourceReading::MetadataSide ? readPhotoMetadataSide(format.container, file, TiffSide::Skeleton)
                                               : std::nullopt;
    QByteArray source;
    std::optional<MemoryBudget::Share> memoryShare;  // while the whole file is held
    if (side) {
        source = side->bytes;
    } else if (!heif && !cr3 && file.seek(0)) {
        memoryShare.emplace(wholePhotoRewriteBudget(), file.size());
        source = file.readAll();
    }
    if (!side)
        file.close();
    if (heif || cr3 ? !photoFileComplete(sourcePath) : !photoDataComplete(source, format)) {
        PhotoWriteResult skipped;
        skipped.outcome = Outcome::Skipped;
        skipped.reason = damagedPhotoReason();
        return skipped;
    }
    if (format.container == PhotoContainer::Jpeg && !changes.isEmpty()) {
        const auto joined = jpegWithExifContinuationsJoined(source);
        if (!joined)
            return failed(kSplitExifTooLarge);
        source = *joined;
    }
    const QString protectedSource = replacement == SourceReplacement::Refuse ? sourcePath : QString();

    if (!format.metadataWritable) {
        if (changes.removesSomething()) {
            PhotoWriteResult skipped;
            skipped.outcome = Outcome::Skipped;
            skipped.reason = QStringLiteral("cannot remove metadata from %1 files").arg(format.kind);
            return skipped;
        }
        if (replacement == SourceReplacement::Refuse && isSameFile(sourcePath, outputPath))
            return failed(QStringLiteral("%1 is the original file; an output never replaces it").arg(outputPath));
        if (options.dryRun) {
            PhotoWriteResult planned;
            planned.outcome = Outcome::Planned;
            planned.planned = planChanges(outputPath + QStringLiteral(".xmp"), readPhotoProperties(sourcePath).properties, changes);
            return planned;
        }
        try {
            return copyWithSidecar(sourcePath, format, changes, outputPath, options.durability);
        } catch (const std::exception& e) {
            return failed(QStringLiteral("cannot write the sidecar: %1").arg(exiv2Message(e)));
        }
    }

    PhotoWriteResult result;
    if (options.dryRun) {
        result.outcome = Outcome::Planned;
        const PhotoProperties current = heif || cr3 ? readPhotoProperties(sourcePath)
                                                    : readPhotoProperties(source, QFileInfo(sourcePath).suffix());
        result.planned = planChanges(outputPath, current.properties, changes);
        return result;
    }
    if (heif || cr3) {
        if (replacement == SourceReplacement::Refuse && isSameFile(sourcePath, outputPath))
            return failed(QStringLiteral("%1 is the original file; an output never replaces it").arg(outputPath));
        return heif ? rewriteHeifPhoto(sourcePath, format, changes, outputPath, options)
                    : rewriteCr3Photo(sourcePath, format, changes, outputPath, options);
    }
    QByteArray rewritten;
    // exiv2's image, kept until the output is written: a whole-file rewrite is written from
    // exiv2's own buffer rather than from a copy of it.
    Exiv2::Image::AutoPtr image;
    bool iptcUntouched = false;
    bool iptcRemoved = false;
    std::optional<QStringList> sourceMakerNotes;  // the source's maker-note values, read once
    PhotoExpectation expected{source, format, QFileInfo(sourcePath).suffix(), {}, {}, {}, false, {}};
    if (changes.isEmpty()) {
        rewritten = source;
    } else {
        try {
            image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(source.constData()),
                                              long(source.size()));
            image->readMetadata();
            if (changes.removeAllMetadata)
                expected.compared = exiv2_model::modelOf(*image).keys();
            const auto holds = format.container == PhotoContainer::Tiff ? exiv2_model::ExifHolds::TheImage
                                                                        : exiv2_model::ExifHolds::MetadataOnly;
            const Exiv2::ExifData exifBefore = image->exifData();
            const Exiv2::IptcData iptcBefore = image->iptcData();
            const Exiv2::XmpData xmpBefore = image->xmpData();
            applyPhotoChanges({image->exifData(), image->iptcData(), image->xmpData()}, changes, &result.warnings, holds);
            if (keepsMakerNotes(changes))
                sourceMakerNotes = makerNoteValues(exifBefore);
            if (sourceMakerNotes && sameCamera(exifBefore, image->exifData()))
                expected.makerNotes = *sourceMakerNotes;
            // An EXIF block made anew or cut down must still hold what a JPEG's EXIF requires.
            if (format.container == PhotoContainer::Jpeg && (changes.removeAllMetadata || exifBefore.empty()))
                addRequiredJpegExif(image->exifData(), source, image->iccProfileDefined(), exifBefore);
            else if (format.container == PhotoContainer::Jpeg)
                addRequiredExifToNewJpegDirectories(image->exifData(), source, image->iccProfileDefined(), exifBefore);
            else if (format.container == PhotoContainer::Tiff)
                addRequiredExifToNewTiffDirectories(image->exifData(), exifBefore);
            // Kinds without an IPTC record (WebP) keep its values (title, keywords, ...) in XMP.
            if (!format.iptcWritable && !image->iptcData().empty()) {
                Exiv2::copyIptcToXmp(image->iptcData(), image->xmpData());
                image->iptcData().clear();
            }
            expected.compared += changes.groups.keys();
            if (changes.removeAllMetadata)
                expected.compared += exiv2_model::modelOf(*image).keys();
            expected.compared.removeDuplicates();
            expected.written = exiv2_model::modelOf(*image, expected.compared);
            if (changes.removeAllMetadata)
                image->clearComment();
            // (Not for TIFF-based files: exiv2 then drops a DNG's maker notes from DNGPrivateData.)
            if (format.container != PhotoContainer::Tiff && !xmpBefore.empty())
                keepSourceXmpForms(*image, xmpBefore, source);
            iptcUntouched = !iptcBefore.empty() && sameIptc(iptcBefore, image->iptcData());
            iptcRemoved = !iptcBefore.empty() && image->iptcData().empty();
            image->writeMetadata();
            rewritten = ioView(image->io());
        } catch (const std::exception& e) {
            return failed(QStringLiteral("cannot rewrite the %1 metadata: %2").arg(format.kind, exiv2Message(e)));
        }
        if (changes.removeAllMetadata && format.container == PhotoContainer::Jpeg)
            rewritten = dropMetadataSegments(rewritten);
        else if (format.container == PhotoContainer::Jpeg && changes.groups.contains(QStringLiteral("{Exif}"))
                 && changes.groups.value(QStringLiteral("{Exif}")).isNull())
            rewritten = dropCameraRecordSegments(rewritten);
        if (format.container == PhotoContainer::Jpeg && iptcUntouched)
            rewritten = jpegWithPhotoshopSegmentsOf(source, rewritten);
        else if (format.container == PhotoContainer::Jpeg && iptcRemoved)
            rewritten = jpegWithoutIptcRecords(rewritten);
        if (format.container == PhotoContainer::Jpeg)
            rewritten = jpegWithIptcDigestInStep(source, rewritten);
        if (format.container == PhotoContainer::Jpeg && keepsMakerNotes(changes)) {
            const QByteArray sourceExif = jpegExifBlock(source);
            rewritten = jpegWithMakerNoteOf(sourceExif, rewritten, sourceMakerNotes);
            expected.makerNoteInPlace = jpegKeepsMakerNoteOf(sourceExif, rewritten);
        }
        if (format.container == PhotoContainer::Png && changes.removesSomething()) {
            const auto cleaned = removePngTextMetadata(rewritten, changes);
            if (!cleaned)
                return failed(damagedPhotoReason());
            rewritten = *cleaned;
        }
    }
    // Never a file of another kind, or an empty one, under the photo's name.
    if (rewritten.isEmpty() || detectPhotoFormat(rewritten.left(64), QFileInfo(sourcePath).suffix()).container != format.container)
        return failed(QStringLiteral("the rewritten %1 file did not come out as %1").arg(format.kind));
    QString error;
    std::optional<PiecesAroundRanges> pieces;
    if (side) {
        pieces = rewrittenPiecesAround(*side, rewritten, &error);
        // exiv2 copies the PNG and WebP chunks it does not know or change; should a version of
        // it not, the file is rewritten from its whole bytes instead.
        if (!pieces && side->jpeg)
            return failed(error);
        if (!pieces)
            return rewritePhoto(sourcePath, changes, outputPath, options, SourceReading::Whole);
        expected.copiedImageData = {sourcePath, side->leftOut};
    }
    const OutputCheck check = [&expected](const QString& pending) { return photoReadBackProblem(expected, pending); };
    const bool written = pieces ? writeAroundLeftOutRanges(file, pieces->pieces, pieces->ranges, outputPath, protectedSource,
                                                           options.durability, check, &error)
                                : writeThenReadBack(outputPath, rewritten, image, protectedSource, options.durability,
                                                    check, &error);
    if (!written)
        return failed(error);
    result.outcome = Outcome::Rewritten;
    result.written << outputPath;
    return result;
}

// Writes the given metadata and colour profile into a freshly encoded JPEG, then the
// adjustments.
// What a new JPEG carries over from its source: the values, and the source's own forms of its
// XMP packet and (from a JPEG) Photoshop segments, written as they were where the adjustments
// leave them alone; and the source's byte order, which maker notes that do not name their own
// depend on.
struct CarriedMetadata {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    std::string xmpPacket;
    QByteArray sourceJpeg;
    QByteArray profile;
    Exiv2::ByteOrder byteOrder = Exiv2::invalidByteOrder;
};

std::optional<QByteArray> writeCarried(const QByteArray& newJpeg, const CarriedMetadata& carried,
                                       const PhotoChanges& adjustments, QString* error)
{
    const Exiv2::ExifData& exif = carried.exif;
    const Exiv2::IptcData& iptc = carried.iptc;
    const Exiv2::XmpData& xmp = carried.xmp;
    const QByteArray& profile = carried.profile;
    auto to = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(newJpeg.constData()), long(newJpeg.size()));
    to->readMetadata();
    if (carried.byteOrder != Exiv2::invalidByteOrder)
        to->setByteOrder(carried.byteOrder);
    to->setExifData(exifForNewJpeg(exif));
    to->setIptcData(iptc);
    to->setXmpData(xmp);
    // The pixels stay in the source's colour space, so its profile must come along.
    if (!profile.isEmpty()) {
        Exiv2::DataBuf buffer(reinterpret_cast<const Exiv2::byte*>(profile.constData()), long(profile.size()));
        to->setIccProfile(buffer, false);
    }
    QStringList warnings;
    applyPhotoChanges({to->exifData(), to->iptcData(), to->xmpData()}, adjustments, &warnings);
    addRequiredJpegExif(to->exifData(), newJpeg, !profile.isEmpty());
    bringExifUpToItsNewJpeg(to->exifData());
    if (!carried.xmpPacket.empty()) {
        to->xmpPacket() = carried.xmpPacket;
        keepSourceXmpForms(*to, xmp, carried.sourceJpeg);
    }
    to->writeMetadata();
    QByteArray out = ioView(to->io());
    out.detach();  // a copy of its own: the image goes with this function
    if (!out.isEmpty() && !carried.sourceJpeg.isEmpty() && !iptc.empty() && sameIptc(iptc, to->iptcData()))
        out = jpegWithoutPhotoshopThumbnails(jpegWithPhotoshopSegmentsOf(carried.sourceJpeg, out));
    if (out.isEmpty()) {
        if (error)
            *error = QStringLiteral("the metadata could not be written");
        return std::nullopt;
    }
    return out;
}

}  // namespace

std::optional<QByteArray> carryMetadataOver(const QByteArray& sourcePhoto, const QByteArray& newJpeg,
                                            const PhotoChanges& adjustments, QString* error)
{
    initializePhotoLibraries();
    try {
        const auto joined = jpegWithExifContinuationsJoined(sourcePhoto);
        if (!joined) {
            if (error)
                *error = kSplitExifTooLarge;
            return std::nullopt;
        }
        auto from = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(joined->constData()), long(joined->size()));
        from->readMetadata();
        CarriedMetadata carried{from->exifData(), from->iptcData(), from->xmpData(), from->xmpPacket(), {}, {}};
        if (from->iccProfileDefined())
            carried.profile = QByteArray(reinterpret_cast<const char*>(from->iccProfile()->pData_), int(from->iccProfile()->size_));
        carried.byteOrder = from->byteOrder();
        if (from->imageType() == Exiv2::ImageType::jpeg)
            carried.sourceJpeg = *joined;
        // exiv2 reads no metadata from a GIF; its XMP comes along all the same.
        const QByteArray gifPacket = from->imageType() == Exiv2::ImageType::gif ? gifXmpPacket(sourcePhoto) : QByteArray();
        if (!gifPacket.isEmpty() && Exiv2::XmpParser::decode(carried.xmp, gifPacket.toStdString()) == 0)
            carried.xmpPacket = gifPacket.toStdString();
        auto written = writeCarried(newJpeg, carried, adjustments, error);
        if (written && keepsMakerNotes(adjustments))
            written = jpegWithMakerNoteOf(jpegExifBlock(*joined), *written);
        return written;
    } catch (const std::exception& e) {
        if (error)
            *error = QStringLiteral("cannot carry the metadata over: %1").arg(exiv2Message(e));
        return std::nullopt;
    }
}

std::optional<QByteArray> carryHeifMetadataOver(const HeifMetadata& source, const QByteArray& newJpeg,
                                                const PhotoChanges& adjustments, QString* error)
{
    initializePhotoLibraries();
    try {
        Exiv2::ExifData exif;
        if (!source.exif.isEmpty())
            Exiv2::ExifParser::decode(exif, reinterpret_cast<const Exiv2::byte*>(source.exif.constData()), uint32_t(source.exif.size()));
        Exiv2::XmpData xmp;
        if (!source.xmp.isEmpty() && Exiv2::XmpParser::decode(xmp, source.xmp.toStdString()) != 0)
            xmp.clear();
        return writeCarried(newJpeg, {exif, {}, xmp, source.xmp.toStdString(), {}, source.iccProfile}, adjustments, error);
    } catch (const std::exception& e) {
        if (error)
            *error = QStringLiteral("cannot carry the metadata over: %1").arg(exiv2Message(e));
        return std::nullopt;
    }
}

std::optional<QByteArray> embedJpegIccProfile(const QByteArray& jpeg, const QByteArray& profile, QString* error)
{
    initializePhotoLibraries();
    try {
        return writeCarried(jpeg, {{}, {}, {}, {}, {}, profile}, {}, error);
    } catch (const std::exception& e) {
        if (error)
            *error = QStringLiteral("cannot write the colour profile: %1").arg(exiv2Message(e));
        return std::nullopt;
    }
}

}  // namespace pelorin
