#pragma once

#include "model/MediaMetadataItem.h"

#include <QString>
#include <QVariantMap>

namespace pelorin {

// What FFmpeg tells about a movie of any container: the index attributes under their attribute
// names ("kMDItemDurationSeconds", "kMDItemPixelWidth", ...) and the container's own tags as
// items "ffmpeg/<tag>" (for Matroska, AVI, WMV, ... where our box reader does not apply).
struct MovieProbe {
    bool opened = false;
    QString error;
    QVariantMap attributes;
    MediaMetadataItems tags;
};

MovieProbe probeMovie(const QString& path);

}  // namespace pelorin
