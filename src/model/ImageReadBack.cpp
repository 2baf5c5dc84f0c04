#include "model/ImageReadBack.h"

#include <QImage>
#include <QImageReader>

#include <algorithm>

namespace pelorin {

QString encodedImageProblem(const QString& path, const QByteArray& format, QSize expectedSize)
{
    const QString name = QString::fromLatin1(format);
    QImageReader reader(path, format);
    reader.setAutoTransform(false);
    if (!reader.canRead())
        return QStringLiteral("the output is not a readable %1 picture").arg(name);
    const QSize size = reader.size();
    if (expectedSize.isValid() && size != expectedSize) {
        return QStringLiteral("the output picture is %1 x %2, not %3 x %4")
            .arg(size.width()).arg(size.height()).arg(expectedSize.width()).arg(expectedSize.height());
    }
    // Decoding at an eighth of the size still reads every byte of the compressed data (a JPEG
    // decoder scales in the transform), without holding a second full-size picture.
    if (size.isValid())
        reader.setScaledSize(QSize(std::max(1, size.width() / 8), std::max(1, size.height() / 8)));
    if (reader.read().isNull())
        return QStringLiteral("the output %1 picture does not decode: %2").arg(name, reader.errorString());
    return {};
}

}  // namespace pelorin
