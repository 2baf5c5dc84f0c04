#include "photo/PngTextRemoval.h"

#include "photo/PhotoLibraries.h"
#include "photo/PngChunks.h"

#include <QSet>

#include <exiv2/exiv2.hpp>

namespace pelorin {
namespace {

// exiv2 keeps a PNG's EXIF in this chunk and rewrites it itself.
const QByteArray kExifProfile = "Raw profile type exif";

// The tag names of the EXIF directory and its interoperability directory, lower case:
// converters spell some differently ("FlashPixVersion").
const QSet<QByteArray>& exifDirectoryNames()
{
    static const QSet<QByteArray> names = [] {
        QSet<QByteArray> all;
        for (const char* group : {"Photo", "Iop"}) {
            for (const Exiv2::TagInfo* tag = Exiv2::ExifTags::tagList(group); tag && tag->tag_ != 0xffff; ++tag)
                all.insert(QByteArray(tag->name_).toLower());
        }
        all.insert("exifoffset");  // the pointer to the directory
        return all;
    }();
    return names;
}

struct Removal {
    bool exif = false;
    bool gps = false;
    bool iptc = false;
};

bool drops(const Removal& r, const PngChunkName& chunk)
{
    if (!chunk.isText())
        return false;
    const QByteArray keyword = chunk.keyword.toLower();
    if (keyword.startsWith("exif:")) {
        const QByteArray name = keyword.mid(5);
        if (r.gps && name.startsWith("gps"))
            return true;
        return r.exif && exifDirectoryNames().contains(name);
    }
    if (r.exif && keyword == "creation time")  // the capture date, as exiftool writes it
        return true;
    return r.iptc && (keyword == "raw profile type iptc" || keyword == "raw profile type 8bim");
}

}  // namespace

std::optional<QByteArray> removePngTextMetadata(const QByteArray& png, const PhotoChanges& changes)
{
    initializePhotoLibraries();
    if (changes.removeAllMetadata) {
        return dropPngChunks(png, [](const PngChunkName& chunk) {
            return (chunk.isText() && chunk.keyword != kExifProfile) || chunk.type == "tIME";
        });
    }
    auto removed = [&changes](const char* group) {
        const auto it = changes.groups.constFind(QLatin1String(group));
        return it != changes.groups.cend() && it->isNull();
    };
    const Removal r{removed("{Exif}"), removed("{GPS}"), removed("{IPTC}")};
    if (!r.exif && !r.gps && !r.iptc)
        return png;
    return dropPngChunks(png, [&r](const PngChunkName& chunk) { return drops(r, chunk); });
}

}  // namespace pelorin
