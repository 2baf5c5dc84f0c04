#include "photo/HeifPhotoRewrite.h"

#include "isobmff/HeifMetadataRewrite.h"
#include "photo/ApplyPhotoChanges.h"
#include "photo/ExifMakerNote.h"
#include "photo/HeifFile.h"
#include "photo/MakerNoteValues.h"

#include <algorithm>

namespace pelorin {
namespace {

using Kind = HeifMetadataBlock::Kind;
using Outcome = PhotoWriteResult::Outcome;

QByteArray encodeXmp(const Exiv2::XmpData& xmp)
{
    std::string packet;
    if (Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat) != 0)
        return {};
    return QByteArray::fromStdString(packet);
}

// The Exif block rewritten from the edited data: in place where exiv2 can, else anew.
QByteArray encodeExif(const QByteArray& original, Exiv2::ByteOrder order, const Exiv2::ExifData& exif)
{
    // exiv2 writes into the buffer it is given, so it gets one of its own.
    QByteArray buffer(original.constData(), original.size());
    Exiv2::Blob blob;
    const Exiv2::WriteMethod method = Exiv2::ExifParser::encode(
        blob, reinterpret_cast<const Exiv2::byte*>(buffer.constData()), uint32_t(buffer.size()), order, exif);
    if (method == Exiv2::wmNonIntrusive)
        return buffer;
    return QByteArray(reinterpret_cast<const char*>(blob.data()), qsizetype(blob.size()));
}

bool sameExif(const Exiv2::ExifData& a, const Exiv2::ExifData& b)
{
    if (a.count() != b.count())
        return false;
    for (auto x = a.begin(), y = b.begin(); x != a.end(); ++x, ++y) {
        if (x->key() != y->key() || x->typeId() != y->typeId() || x->size() != y->size() || x->toString() != y->toString())
            return false;
    }
    return true;
}

HeifMetadataBlock* firstBlock(std::vector<HeifMetadataBlock>& blocks, Kind kind)
{
    for (HeifMetadataBlock& block : blocks) {
        if (block.kind == kind && block.describesPrimary)
            return &block;
    }
    return nullptr;
}

// Applies the changes to one Exif block and one XMP block (either may be missing); the results
// go back into the blocks, a new block is added where data appears, an emptied one is removed.
bool editPair(std::vector<HeifMetadataBlock>& blocks, HeifMetadataBlock* exifBlock, HeifMetadataBlock* xmpBlock,
              const PhotoChanges& changes, bool mayAdd, QStringList* warnings,
              QString* error)
{
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    Exiv2::ByteOrder order = Exiv2::bigEndian;
    if (exifBlock)
        order = Exiv2::ExifParser::decode(exif, reinterpret_cast<const Exiv2::byte*>(exifBlock->bytes.constData()),
                                          uint32_t(exifBlock->bytes.size()));
    if (xmpBlock && Exiv2::XmpParser::decode(xmp, xmpBlock->bytes.toStdString()) != 0) {
        if (!changes.removeAllMetadata) {
            *error = QStringLiteral("the photo's XMP packet cannot be read");
            return false;
        }
        xmp.clear();
    }
    const QByteArray xmpBefore = encodeXmp(xmp);
    const Exiv2::ExifData exifBefore = exif;
    applyPhotoChanges({exif, iptc, xmp}, changes, warnings);
    // These files hold no IPTC record: its values live in XMP (title, keywords, ...).
    if (!iptc.empty())
        Exiv2::copyIptcToXmp(iptc, xmp);

    // A block whose values did not change keeps its bytes as they are.
    if (exifBlock) {
        if (exif.empty())
            exifBlock->bytes.clear();
        else if (!sameExif(exif, exifBefore)) {
            const QByteArray sourceExif = exifBlock->bytes;
            exifBlock->bytes = encodeExif(sourceExif, order, exif);
            if (keepsMakerNotes(changes)) {
                exifBlock->bytes = exifWithMakerNoteKept(sourceExif, exifBlock->bytes);
                if (sameCamera(exif, exifBefore) && exifMakerNoteValues(exifBlock->bytes) != exifMakerNoteValues(sourceExif)) {
                    *error = QStringLiteral("the maker notes do not read back as the source has them");
                    return false;
                }
            }
        }
    } else if (!exif.empty() && mayAdd) {
        HeifMetadataBlock added;
        added.kind = Kind::Exif;
        added.bytes = encodeExif({}, order, exif);
        blocks.push_back(added);
    }
    const QByteArray xmpAfter = encodeXmp(xmp);
    if (xmpBlock) {
        if (xmp.empty())
            xmpBlock->bytes.clear();
        else if (xmpAfter != xmpBefore)
            xmpBlock->bytes = xmpAfter;
    } else if (!xmp.empty() && mayAdd) {
        HeifMetadataBlock added;
        added.kind = Kind::Xmp;
        added.bytes = xmpAfter;
        blocks.push_back(added);
    }
    return true;
}

bool editBlocks(std::vector<HeifMetadataBlock>& blocks, const PhotoChanges& changes, QStringList* warnings,
                QString* error)
{
    const std::size_t found = blocks.size();
    blocks.reserve(found + 2);  // the pointers below must stay valid while blocks are added
    HeifMetadataBlock* exif = firstBlock(blocks, Kind::Exif);
    HeifMetadataBlock* xmp = firstBlock(blocks, Kind::Xmp);
    if (!editPair(blocks, exif, xmp, changes, true, warnings, error))
        return false;
    // Metadata of other images, or a second copy, loses what the user removes.
    const PhotoChanges removals = removalsOf(changes);
    for (std::size_t i = 0; i < found; ++i) {
        HeifMetadataBlock& block = blocks[i];
        if (&block == exif || &block == xmp || removals.isEmpty())
            continue;
        QStringList ignored;
        if (!editPair(blocks, block.kind == Kind::Exif ? &block : nullptr, block.kind == Kind::Xmp ? &block : nullptr,
                      removals, false, &ignored, error))
            return false;
    }
    return true;
}

// The written file must open in libheif with its primary image and the new metadata. (The
// image items and their properties are copied as they are, so the source is not opened in
// libheif a second time to compare them.)
QString readBackProblem(const QString& pendingPath, const std::vector<HeifMetadataBlock>& blocks)
{
    QString error;
    const std::optional<HeifMetadata> written = readHeifMetadata(pendingPath, &error);
    if (!written)
        return QStringLiteral("the rewritten file could not be read back: %1").arg(error);
    // Our own reading of the items must find every block as it was meant to be written...
    std::vector<QByteArray> meant;
    for (const HeifMetadataBlock& block : blocks) {
        if (!block.bytes.isEmpty())
            meant.push_back(block.bytes);
    }
    std::vector<QByteArray> found;
    for (const HeifMetadataBlock& block : readHeifMetadataBlocks(pendingPath, &error))
        found.push_back(block.bytes);
    std::sort(meant.begin(), meant.end());
    std::sort(found.begin(), found.end());
    // ...and libheif's view of the primary image's metadata must be among them.
    const auto among = [&](const QByteArray& bytes) {
        return bytes.isEmpty() || std::find(meant.begin(), meant.end(), bytes) != meant.end();
    };
    if (found != meant || !among(written->exif) || !among(written->xmp))
        return QStringLiteral("the rewritten file does not hold the metadata that was written");
    return {};
}

}  // namespace

PhotoWriteResult rewriteHeifPhoto(const QString& sourcePath, const PhotoFormat& format, const PhotoChanges& changes,
                                  const QString& outputPath, const PhotoWriteOptions& options)
{
    PhotoWriteResult result;
    std::vector<HeifMetadataBlock> edited;
    const HeifMetadataEditor edit = [&](std::vector<HeifMetadataBlock>& blocks, QString* why) {
        try {
            if (!editBlocks(blocks, changes, &result.warnings, why))
                return false;
        } catch (const std::exception& e) {
            *why = QStringLiteral("cannot rewrite the %1 metadata: %2").arg(format.kind, QString::fromLocal8Bit(e.what()));
            return false;
        }
        edited = blocks;
        return true;
    };
    RewriteOutput output;
    output.durability = options.durability;
    output.mayReplaceSource = options.replacement == SourceReplacement::Allow;
    output.check = [&](const QString& pendingPath) { return readBackProblem(pendingPath, edited); };
    const HeifRewriteReport report = rewriteHeifMetadata(sourcePath, outputPath, edit, output);
    if (!report.written) {
        result.outcome = Outcome::Failed;
        result.reason = QStringLiteral("cannot rewrite the %1 file: %2").arg(format.kind, report.error);
        return result;
    }
    result.outcome = Outcome::Rewritten;
    result.written << outputPath;
    return result;
}

}  // namespace pelorin
