#pragma once

#include "photo/PhotoFormats.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace pelorin {

// What a rewritten photo must show when it is read back from disk.
struct PhotoExpectation {
    QByteArray source;          // the photo as it was read
    PhotoFormat format;
    QString extension;
    QVariantMap written;        // the metadata as the writer held it once the changes were applied
    QStringList compared;       // the model keys the changes touched; each must read back as written
};

// The metadata of the model keys an exiv2 image holds, as the property model shows them.
QVariantMap photoModelOf(const QByteArray& photo);

// Why the output at pendingPath must not be kept, or empty: it must be complete, of the source's
// container, hold the source's image data byte for byte, and read back every compared key as
// written (a removed group is gone).
QString photoReadBackProblem(const PhotoExpectation& expected, const QString& pendingPath);

}  // namespace pelorin
