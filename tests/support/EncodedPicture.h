#pragma once
// Pictures encoded in memory, for the tests that give new image data a photo's metadata.
#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>

namespace pelorin::test {

// A plain JPEG of the given size and colour, as Qt encodes it; empty when encoding fails.
inline QByteArray plainJpeg(int width, int height, const QColor& colour)
{
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return picture.save(&buffer, "JPEG") ? bytes : QByteArray();
}

}  // namespace pelorin::test
