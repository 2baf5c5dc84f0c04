#pragma once
// The QImage side of a record's picture, for the code that makes or shows one.
#include "model/ItemPicture.h"

#include <QImage>

namespace pelorin {

// A null image gives no picture, so that isNull() means the same on both sides.
inline ItemPicture itemPicture(QImage image)
{
    if (image.isNull())
        return {};
    return ItemPicture(std::make_shared<const QImage>(std::move(image)));
}

// The picture as an image; a null image when there is none.
inline QImage pictureImage(const ItemPicture& picture)
{
    return picture.isNull() ? QImage() : *picture.image();
}

}  // namespace pelorin
