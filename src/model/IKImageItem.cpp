#include "model/IKImageItem.h"

namespace pelorin {

BrowserRepresentation IKImageItem::imageRepresentationType() const
{
    if (fileType == QLatin1String("Image"))
        return BrowserRepresentation::ImagePath;
    if (fileType == QLatin1String("Movie"))
        return BrowserRepresentation::MoviePath;
    return BrowserRepresentation::QuickLookPath;
}

}  // namespace pelorin
