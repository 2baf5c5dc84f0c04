#pragma once

#include <QByteArray>
#include <QString>

namespace pelorin {

enum class PhotoContainer {
    Unknown,
    Jpeg,
    Png,
    Gif,
    Tiff,       // TIFF and the TIFF-based RAW kinds (DNG, CR2, NEF, ARW, PEF, SR2, SRW, ORF)
    BigTiff,
    WebP,
    Heif,       // HEIC, HEIF, AVIF
    Psd,
    Jp2,
    Bmp,
    Crw,
    Mrw,
    Raf,
    Rw2,
    Cr3,
    X3f,
};

// What the program can do with one kind of photo file. Writers, the editor (which fields it
// enables) and pelorin-cli (which errors it gives) all ask this table.
struct PhotoFormat {
    PhotoContainer container = PhotoContainer::Unknown;
    QString kind;      // short upper-case name for messages: "JPEG", "RAF", "HEIC", "NEF"
    QString typeName;  // type identifier of the container: "public.jpeg", "public.heic", ...
    bool readable = false;        // the file can be inspected
    bool exiv2Readable = true;    // its metadata can be read (else only its image facts)
    bool metadataWritable = false;  // EXIF/XMP can be rewritten in the file itself
    bool iptcWritable = false;
    bool commentWritable = false;

    bool isKnown() const { return container != PhotoContainer::Unknown; }
};

// Decides the format from the file's first bytes (at least 32 are needed; 64 are better) and,
// for the TIFF-based RAW kinds that share TIFF's signature, from the extension.
PhotoFormat detectPhotoFormat(const QByteArray& head, const QString& extension);

}  // namespace pelorin
