#include "photo/PhotoReadBack.h"

#include "model/SafeOutput.h"
#include "photo/Exiv2Model.h"
#include "photo/JpegMakerNote.h"
#include "photo/MakerNoteValues.h"
#include "photo/PhotoCompleteness.h"
#include "photo/PhotoPayload.h"
#include "photo/PhotoProperties.h"

#include <QFile>

namespace pelorin {
namespace {

bool absent(const QVariant& v) { return !v.isValid() || (v.typeId() == QMetaType::QVariantMap && v.toMap().isEmpty()); }

// "{GPS}/Latitude, {GPS}/Longitude": the values of a group that differ, or the key itself.
QString whereDifferent(const QString& key, const QVariant& meant, const QVariant& got)
{
    if (meant.typeId() != QMetaType::QVariantMap || got.typeId() != QMetaType::QVariantMap)
        return key;
    const QVariantMap a = meant.toMap(), b = got.toMap();
    QStringList differing;
    for (auto it = a.cbegin(); it != a.cend(); ++it) {
        if (!b.contains(it.key()) || !exiv2_model::sameValue(it.value(), b.value(it.key())))
            differing << key + QLatin1Char('/') + it.key();
    }
    for (auto it = b.cbegin(); it != b.cend(); ++it) {
        if (!a.contains(it.key()))
            differing << key + QLatin1Char('/') + it.key();
    }
    return differing.isEmpty() ? key : differing.join(QStringLiteral(", "));
}

// The values a writer controls: a group without those describing the image data.
QVariant controlled(const QString& key, const QVariant& value)
{
    if (value.typeId() != QMetaType::QVariantMap)
        return value;
    QVariantMap values = value.toMap();
    values.removeIf([&](const auto& it) { return exiv2_model::describesImageData(key, it.key()); });
    return values;
}

// The TIFF writer keeps the resolution and colour tags of a TIFF's main image with its pixels,
// so removing them (with all metadata, say) leaves them in place.
QVariant withTiffImageTagsKept(const QVariant& meant, const QVariant& got)
{
    static const QStringList kept{QStringLiteral("XResolution"), QStringLiteral("YResolution"),
                                  QStringLiteral("ResolutionUnit"), QStringLiteral("WhitePoint"),
                                  QStringLiteral("PrimaryChromaticities")};
    const QVariantMap wanted = meant.toMap();
    QVariantMap found = got.toMap();
    for (const QString& key : kept) {
        if (!wanted.contains(key))
            found.remove(key);
    }
    return found;
}

// Why the output's maker notes are not the source's, or empty. image is the output, read.
QString makerNoteProblem(const PhotoExpectation& expected, const QByteArray& output, const Exiv2::Image& image)
{
    if (expected.makerNoteInPlace && !jpegKeepsMakerNoteOf(jpegExifBlock(expected.source), output))
        return QStringLiteral("the maker notes could not be kept where the source has them");
    if (expected.makerNotes.isEmpty())
        return {};
    const QStringList found = makerNoteValues(image.exifData());
    if (found == expected.makerNotes)
        return {};
    const QString differing = firstDifference(expected.makerNotes, found).section(QLatin1Char(' '), 0, 0);
    return QStringLiteral("the maker notes do not read back as the source has them (%1)")
        .arg(differing.isEmpty() ? QStringLiteral("values read a different number of times") : differing);
}

// Why the ranges the output copied from its source, found in the output at `found`, are not
// the source's, or empty.
QString copiedImageDataProblem(const CopiedImageData& copied, QFile& output, const QList<CopiedRange>& found)
{
    if (found.size() != copied.ranges.size())
        return QStringLiteral("the output's image data is in %1 pieces, the source's in %2")
            .arg(found.size()).arg(copied.ranges.size());
    QFile source(copied.sourcePath);
    if (!source.open(QIODevice::ReadOnly))
        return QStringLiteral("the source cannot be read to compare the image data");
    for (qsizetype i = 0; i < found.size(); ++i) {
        const CopiedRange& from = copied.ranges[i];
        if (found[i].length != from.length)
            return QStringLiteral("the output's image data is %1 bytes long, the source's %2")
                .arg(found[i].length).arg(from.length);
        if (!copyEndsMatch(source, from.sourceOffset, output, found[i].sourceOffset, from.length))
            return QStringLiteral("the output's image data differs from the source's");
    }
    return {};
}

}  // namespace

QStringList photoMakerNoteValues(const QByteArray& photo)
{
    auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(photo.constData()), long(photo.size()));
    image->readMetadata();
    return makerNoteValues(image->exifData());
}

QString photoReadBackProblem(const PhotoExpectation& expected, const QString& pendingPath)
{
    QFile file(pendingPath);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaxPhotoFileSize)
        return QStringLiteral("the output cannot be read back");
    QByteArray output;
    std::optional<PhotoMetadataSide> side;  // holds the memory of a TIFF's skeleton, which output views
    if (!expected.copiedImageData.ranges.isEmpty()) {
        side = readPhotoMetadataSide(expected.format.container, file, TiffSide::Skeleton);
        if (!side)
            return QStringLiteral("the output %1 file is incomplete").arg(expected.format.kind);
        if (const QString copied = copiedImageDataProblem(expected.copiedImageData, file, side->leftOut); !copied.isEmpty())
            return copied;
        output = side->bytes;
    } else {
        // Mapped rather than read: the metadata readers touch only the pages they look at, and
        // nothing of a large output is copied into the heap.
        const uchar* mapped = file.size() > 0 ? file.map(0, file.size()) : nullptr;
        output = mapped ? QByteArray::fromRawData(reinterpret_cast<const char*>(mapped), qsizetype(file.size()))
                        : file.readAll();
    }
    const PhotoContainer container = expected.format.container;
    if (detectPhotoFormat(output.left(64), expected.extension).container != container)
        return QStringLiteral("the output is not a %1 file").arg(expected.format.kind);
    if (!photoDataComplete(output, expected.format))
        return QStringLiteral("the output %1 file is incomplete").arg(expected.format.kind);
    if (const QString payload = photoPayloadDifference(expected.source, output, container); !payload.isEmpty())
        return payload;
    QVariantMap found;
    try {
        // Read once for the maker notes and the values.
        if (!expected.makerNoteInPlace && expected.makerNotes.isEmpty() && expected.compared.isEmpty())
            return {};
        auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(output.constData()), long(output.size()));
        image->readMetadata();
        if (const QString makerNotes = makerNoteProblem(expected, output, *image); !makerNotes.isEmpty())
            return makerNotes;
        if (expected.compared.isEmpty())
            return {};
        found = exiv2_model::modelOf(*image, expected.compared);
    } catch (const std::exception& e) {
        return QStringLiteral("the output's metadata cannot be read: %1").arg(QString::fromLocal8Bit(e.what()));
    }
    for (const QString& key : expected.compared) {
        const QVariant meant = controlled(key, expected.written.value(key));
        QVariant got = controlled(key, found.value(key));
        if (container == PhotoContainer::Tiff && key == QLatin1String("{TIFF}"))
            got = withTiffImageTagsKept(meant, got);
        if (absent(meant) ? !absent(got) : !exiv2_model::sameValue(meant, got))
            return absent(meant) ? QStringLiteral("%1 is still in the output").arg(key)
                                 : QStringLiteral("%1 does not read back as written").arg(whereDifferent(key, meant, got));
    }
    return {};
}

}  // namespace pelorin
