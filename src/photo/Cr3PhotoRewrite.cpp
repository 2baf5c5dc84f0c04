#include "photo/Cr3PhotoRewrite.h"

#include "isobmff/Cr3MetadataRewrite.h"
#include "photo/ApplyPhotoChanges.h"
#include "photo/Cr3Exif.h"

namespace pelorin {
namespace {

using Outcome = PhotoWriteResult::Outcome;

// What a removal of everything leaves in IFD0 besides the orientation: raw developers choose
// the camera's colour rendering by make and model, and the image structure describes the data.
constexpr const char* kRawEssentials[] = {
    "Exif.Image.Make", "Exif.Image.Model", "Exif.Image.ImageWidth", "Exif.Image.ImageLength",
    "Exif.Image.BitsPerSample", "Exif.Image.Compression",
};

void keepRawEssentials(const Exiv2::ExifData& original, Exiv2::ExifData& exif)
{
    for (const char* key : kRawEssentials) {
        const auto found = original.findKey(Exiv2::ExifKey(key));
        if (found != original.end() && exif.findKey(Exiv2::ExifKey(key)) == exif.end())
            exif.add(*found);
    }
}

bool holdsMakerNotes(const Exiv2::ExifData& exif)
{
    for (const Exiv2::Exifdatum& d : exif) {
        if (Exiv2::ExifTags::isMakerGroup(d.groupName()))
            return true;
    }
    return false;
}

bool editMetadata(Cr3Metadata& metadata, const PhotoChanges& changes, const PhotoFormat& format,
                  QStringList* warnings, QString* error)
{
    Cr3Exiv2Data data;
    if (!decodeCr3Metadata(metadata, &data, error)) {
        if (!changes.removeAllMetadata)
            return false;
        data.xmp.clear();
    }
    const Exiv2::ExifData original = data.exif;
    Exiv2::IptcData iptc;
    applyPhotoChanges({data.exif, iptc, data.xmp}, changes, warnings);
    if (changes.removeAllMetadata)
        keepRawEssentials(original, data.exif);
    // These files hold no IPTC record: its values live in the XMP packet (title, keywords, ...).
    // A file without an XMP box is refused by the rewrite, with the reason.
    if (!iptc.empty())
        Exiv2::copyIptcToXmp(iptc, data.xmp);
    if (holdsMakerNotes(original) && !holdsMakerNotes(data.exif))
        *warnings << QStringLiteral("the %1 maker notes were kept: raw developers need them to show the photo").arg(format.kind);
    return encodeCr3Metadata(data, &metadata, error);
}

// exiv2 must read back what it wrote.
QString readBackProblem(const QString& pendingPath)
{
    QString error;
    const std::optional<Cr3Metadata> written = readCr3Metadata(pendingPath, &error);
    Cr3Exiv2Data data;
    try {
        if (written && decodeCr3Metadata(*written, &data, &error))
            return {};
    } catch (const std::exception& e) {
        error = QString::fromLocal8Bit(e.what());
    }
    return QStringLiteral("the rewritten file could not be read back: %1").arg(error);
}

}  // namespace

PhotoWriteResult rewriteCr3Photo(const QString& sourcePath, const PhotoFormat& format, const PhotoChanges& changes,
                                 const QString& outputPath, const PhotoWriteOptions& options)
{
    PhotoWriteResult result;
    const Cr3MetadataEditor edit = [&](Cr3Metadata& metadata, QString* why) {
        try {
            return editMetadata(metadata, changes, format, &result.warnings, why);
        } catch (const std::exception& e) {
            *why = QStringLiteral("cannot rewrite the %1 metadata: %2").arg(format.kind, QString::fromLocal8Bit(e.what()));
            return false;
        }
    };
    RewriteOutput output;
    output.durability = options.durability;
    output.mayReplaceSource = options.replacement == SourceReplacement::Allow;
    output.check = readBackProblem;
    const RewriteReport report = rewriteCr3Metadata(sourcePath, outputPath, edit, output);
    if (!report.written) {
        result.outcome = Outcome::Failed;
        result.reason = QStringLiteral("cannot rewrite the %1 file: %2").arg(format.kind, report.error);
        result.warnings.clear();
        return result;
    }
    result.outcome = Outcome::Rewritten;
    result.written << outputPath;
    return result;
}

}  // namespace pelorin
