#pragma once

#include "photo/PhotoFormats.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace pelorin {

// What a rewritten photo must show when it is read back from disk.
struct PhotoExpectation {
    QByteArray source;          // the photo as it was read
    PhotoFormat format;
    QString extension;
    QVariantMap written;        // the metadata as the writer held it once the changes were applied
    QStringList compared;       // the model keys the changes touched; each must read back as written
    QStringList makerNotes;     // the source's maker-note values (makerNoteValues) when the changes keep them
    bool makerNoteInPlace = false;  // a JPEG's maker note must lie where the source has it, byte for byte
};

// The metadata of an exiv2-readable photo, as the property model shows it; with groups, only
// those groups.
QVariantMap photoModelOf(const QByteArray& photo, const QStringList& groups = {});

// The maker-note values exiv2 reads in a photo, for comparing a rewrite with its source.
QStringList photoMakerNoteValues(const QByteArray& photo);

// Why the output at pendingPath must not be kept, or empty: it must be complete, of the source's
// container, hold the source's image data byte for byte, read back every compared key as
// written (a removed group is gone) and the maker notes as the source has them.
QString photoReadBackProblem(const PhotoExpectation& expected, const QString& pendingPath);

}  // namespace pelorin
