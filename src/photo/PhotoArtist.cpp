#include "photo/PhotoArtist.h"

#include "photo/PhotoLibraries.h"

#include <QFile>

#include <exiv2/exiv2.hpp>

namespace pelorin {

QString readPhotoArtist(const QString& path)
{
    try {
        initializePhotoLibraries();
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        if (image.get() == nullptr)
            return {};
        image->readMetadata();
        // The first non-empty value of a key in one of exiv2's metadata containers.
        const auto first = [](const auto& data, const auto& key) {
            const auto it = data.findKey(key);
            return it == data.end() ? QString() : QString::fromStdString(it->toString()).trimmed();
        };
        if (const QString artist = first(image->exifData(), Exiv2::ExifKey("Exif.Image.Artist")); !artist.isEmpty())
            return artist;
        if (const QString byline = first(image->iptcData(), Exiv2::IptcKey("Iptc.Application2.Byline")); !byline.isEmpty())
            return byline;
        const Exiv2::XmpData& xmp = image->xmpData();
        const auto creator = xmp.findKey(Exiv2::XmpKey("Xmp.dc.creator"));
        if (creator != xmp.end()) {
            const Exiv2::Value& value = creator->value();
            if (value.count() > 0)
                return QString::fromStdString(value.toString(0)).trimmed();
        }
    } catch (const std::exception&) {
        // A photo exiv2 cannot read has no artist to show; its reading reports the problem.
    }
    return {};
}

}  // namespace pelorin
