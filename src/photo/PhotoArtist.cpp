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
        const Exiv2::ExifData& exif = image->exifData();
        const auto artist = exif.findKey(Exiv2::ExifKey("Exif.Image.Artist"));
        if (artist != exif.end()) {
            const QString text = QString::fromStdString(artist->toString()).trimmed();
            if (!text.isEmpty())
                return text;
        }
        const Exiv2::IptcData& iptc = image->iptcData();
        const auto byline = iptc.findKey(Exiv2::IptcKey("Iptc.Application2.Byline"));
        if (byline != iptc.end()) {
            const QString text = QString::fromStdString(byline->toString()).trimmed();
            if (!text.isEmpty())
                return text;
        }
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
