#pragma once
// A record's picture (thumbnail, artwork or first frame) as a value that does not need QtGui:
// the photo commands copy records around but never look at their pictures, and so load no
// painting library. Code that makes or shows a picture includes "model/ItemPictureImage.h".
#include <memory>

class QImage;

namespace pelorin {

class ItemPicture {
public:
    ItemPicture() = default;
    // null: no picture.
    explicit ItemPicture(std::shared_ptr<const QImage> image) : image_(std::move(image)) {}

    bool isNull() const { return !image_; }
    // The picture, or nullptr when there is none.
    const QImage* image() const { return image_.get(); }

private:
    // Shared and immutable, so that copying a record copies no pixels.
    std::shared_ptr<const QImage> image_;
};

}  // namespace pelorin
