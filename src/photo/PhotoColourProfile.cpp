#include "photo/PhotoColourProfile.h"

#include "photo/PhotoLibraries.h"

#include <exiv2/exiv2.hpp>

namespace pelorin {

QByteArray readPhotoIccProfile(const QByteArray& bytes)
{
    initializePhotoLibraries();
    try {
        auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(bytes.constData()), long(bytes.size()));
        image->readMetadata();
        if (!image->iccProfileDefined())
            return {};
        const Exiv2::DataBuf* profile = image->iccProfile();
        return QByteArray(reinterpret_cast<const char*>(profile->pData_), int(profile->size_));
    } catch (const std::exception&) {
        return {};  // an unreadable photo simply has no profile to keep
    }
}

}  // namespace pelorin
