#pragma once

#include "model/CommandResult.h"
#include "model/SafeOutput.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace pelorin {

// What a rewrite changes: each named group ("{Exif}", "{GPS}", ..., or the top-level
// "Orientation") becomes exactly the dictionary it maps to, or is removed when it maps to a null
// QVariant. Everything not named is kept as the file has it.
struct PhotoChanges {
    QVariantMap groups;
    bool removeAllMetadata = false;  // everything but the ICC profile and the orientation

    bool removesSomething() const;
    bool isEmpty() const { return groups.isEmpty() && !removeAllMetadata; }
};

enum class SourceReplacement {
    Refuse,  // the output may never take the place of the source (files the user imported)
    Allow,   // the source is our own earlier output (a camera download) and is rewritten in place
};

struct PhotoWriteOptions {
    SourceReplacement replacement = SourceReplacement::Refuse;
    Durability durability = Durability::FlushEach;  // Deferred in batches that flush once
    bool dryRun = false;  // plan only: list each value before and after, write nothing
};

struct PhotoWriteResult {
    enum class Outcome { Rewritten, CopiedWithSidecar, Planned, Skipped, Failed };
    Outcome outcome = Outcome::Failed;
    QStringList written;   // the photo, and the sidecar when one was written
    QString reason;        // why the photo was skipped or failed, or what the sidecar stands for
    QStringList warnings;  // values that could not be written
    QList<PlannedChange> planned;  // dry runs: each value before and after

    bool ok() const
    {
        return outcome == Outcome::Rewritten || outcome == Outcome::CopiedWithSidecar
               || outcome == Outcome::Planned;
    }
};

// Writes the source photo with its metadata changed to outputPath, through a temporary file and
// an atomic rename: same container, same image count, every pixel byte unchanged. Where the
// container cannot be rewritten (some RAW kinds), a change gives a byte copy plus an XMP
// sidecar "<output name>.xmp" holding the changed values, and a removal is skipped.
PhotoWriteResult CopyPhotoWithProperties(const QString& sourcePath, const PhotoChanges& changes,
                                         const QString& outputPath,
                                         const PhotoWriteOptions& options = {});

// Gives a freshly encoded JPEG the metadata of the photo it was made from (EXIF, IPTC, XMP and
// the ICC profile; the embedded thumbnail is dropped since it shows the old picture), then
// applies adjustments.
std::optional<QByteArray> carryMetadataOver(const QByteArray& sourcePhoto, const QByteArray& newJpeg,
                                            const PhotoChanges& adjustments, QString* error);

// The same from what libheif read of a HEIF photo (exiv2 0.27 cannot open HEIF): its Exif item,
// XMP and ICC profile.
struct HeifMetadata;
std::optional<QByteArray> carryHeifMetadataOver(const HeifMetadata& source, const QByteArray& newJpeg,
                                                const PhotoChanges& adjustments, QString* error);

// Gives a freshly encoded JPEG this ICC profile, for sources whose other metadata cannot be
// carried over (read-only RAW kinds).
std::optional<QByteArray> embedJpegIccProfile(const QByteArray& jpeg, const QByteArray& profile, QString* error);

}  // namespace pelorin
