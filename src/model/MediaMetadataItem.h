#pragma once

#include <QList>
#include <QString>
#include <QVariant>

namespace pelorin {

// One metadata item of an audio or movie container, as the readers produce them in file order
// ("id3/TALB", "itsk/%A9nam", "caaf/info-title", "mdta/com.apple.quicktime.location.ISO6709", ...).
struct MediaMetadataItem {
    QString keySpace;             // "id3", "itsk", "udta", "mdta", "uiso", "caaf", ...
    QString key;                  // the key inside its key space, e.g. "TALB" or "%A9nam"
    QString identifier;           // keySpace + "/" + key
    QVariant value;               // text, integer, real, picture bytes, ...
    QString dataType;             // e.g. "UTF-8", "JPEG", "BE Signed Integer"
    QString extendedLanguageTag;  // BCP 47 tag, empty when the item has none

    friend bool operator==(const MediaMetadataItem&, const MediaMetadataItem&) = default;
};

using MediaMetadataItems = QList<MediaMetadataItem>;

}  // namespace pelorin
