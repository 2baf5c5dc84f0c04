#pragma once

#include "photo/PhotoFormats.h"
#include "photo/PhotoMetadataSide.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace pelorin {

// Image data an output took from its source file as it lies there, never through the writer's
// buffers: a JPEG's scan data and what follows it, each run of a PNG's image-data chunks, each
// image chunk of a WebP.
struct CopiedImageData {
    QString sourcePath;
    QList<CopiedRange> ranges;  // in file order; none: the output was written whole from the writer's bytes
};

// What a rewritten photo must show when it is read back from disk.
struct PhotoExpectation {
    QByteArray source;          // the photo as it was read (a JPEG's head, a PNG's or WebP's skeleton when its image data is copied)
    PhotoFormat format;
    QString extension;
    QVariantMap written;        // the metadata as the writer held it once the changes were applied
    QStringList compared;       // the model keys the changes touched; each must read back as written
    QStringList makerNotes;     // the source's maker-note values (makerNoteValues) when the changes keep them
    bool makerNoteInPlace = false;  // a JPEG's maker note must lie where the source has it, byte for byte
    CopiedImageData copiedImageData;
};

// The maker-note values exiv2 reads in a photo, for comparing a rewrite with its source.
QStringList photoMakerNoteValues(const QByteArray& photo);

// Why the output at pendingPath must not be kept, or empty: it must be complete, of the source's
// container, hold the source's image data byte for byte, read back every compared key as
// written (a removed group is gone) and the maker notes as the source has them. Each range of
// copied image data must have the source's length and its first and last 64 KiB; the metadata
// code never holds it, so a fault there is one of the copy's, which those catch.
QString photoReadBackProblem(const PhotoExpectation& expected, const QString& pendingPath);

}  // namespace pelorin
