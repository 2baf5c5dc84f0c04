#include "photo/ApplyPhotoChanges.h"

#include "photo/Exiv2Names.h"
#include "photo/UnreadableExifEntries.h"

namespace pelorin {

void applyPhotoChanges(exiv2_model::Metadata metadata, const PhotoChanges& changes, QStringList* warnings,
                       exiv2_model::ExifHolds holds)
{
    dropEntriesOfUnknownType(metadata.exif);
    if (changes.removeAllMetadata)
        exiv2_model::removeAll(metadata, holds);
    QVariantMap before;
    exiv2_model::readExif(metadata.exif, &before);
    const Exiv2::IptcData iptcBefore = metadata.iptc;
    for (auto it = changes.groups.cbegin(); it != changes.groups.cend(); ++it)
        exiv2_model::applyChange(metadata, it.key(), it.value(), warnings);
    // Values the caller set in XMP itself are the caller's; otherwise XMP follows EXIF and the
    // edited IPTC values.
    if (!changes.groups.contains(QStringLiteral("{XMP}"))) {
        exiv2_model::syncXmpMirrors(metadata, before);
        if (!changes.groups.value(QStringLiteral("{IPTC}")).isNull())
            exiv2_model::syncXmpWithIptc(metadata, iptcBefore);
    }
}

PhotoChanges removalsOf(const PhotoChanges& changes)
{
    PhotoChanges removals;
    removals.removeAllMetadata = changes.removeAllMetadata;
    for (auto it = changes.groups.cbegin(); it != changes.groups.cend(); ++it) {
        if (it.value().isNull())
            removals.groups.insert(it.key(), it.value());
    }
    return removals;
}

bool keepsMakerNotes(const PhotoChanges& changes)
{
    if (changes.removeAllMetadata)
        return false;
    for (auto it = changes.groups.cbegin(); it != changes.groups.cend(); ++it) {
        if (exiv2_model::detail::isMakerGroupKey(it.key())
            || (it.key() == QLatin1String("{Exif}") && it.value().isNull()))
            return false;
    }
    return true;
}

}  // namespace pelorin
