#pragma once
// Pictures encoded in memory, for the tests that give new image data a photo's metadata.
#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>

namespace pelorin::test {

// A plain picture of the given size and colour in the given format ("JPEG", "PNG"), as Qt
// encodes it; empty when encoding fails.
inline QByteArray plainPicture(int width, int height, const QColor& colour, const char* format)
{
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return picture.save(&buffer, format) ? bytes : QByteArray();
}

inline QByteArray plainJpeg(int width, int height, const QColor& colour)
{
    return plainPicture(width, height, colour, "JPEG");
}

}  // namespace pelorin::test
