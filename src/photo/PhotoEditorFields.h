#pragma once

#include <QDateTime>
#include <QString>
#include <QVariantMap>

namespace pelorin {

struct PhotoFileFacts {
    QString fileName;
    QDateTime created;   // invalid when the file system keeps none
    QDateTime modified;
    qint64 size = -1;
};

// The texts of the photo editor's fields; an empty text where the photo has no value.
struct PhotoEditorTexts {
    QString title, artist, imageDescription, copyright, comments, keywords;
    QString cameraMake, cameraModel, cameraDate;
    QString gpsDate, gpsTime, gpsAltitude, gpsLatitude, gpsLongitude;
    QString dpi, modificationDate, creationDate, fileSize, imageSize, fileName;

    friend bool operator==(const PhotoEditorTexts&, const PhotoEditorTexts&) = default;
};

// What the editor shows for one photo: the field texts and the map coordinate.
struct PhotoEditorFill {
    PhotoEditorTexts fields;
    bool hasGps = false;     // the photo has a GPS group: show the map
    double latitude = 0.0;   // signed by the references
    double longitude = 0.0;
};

PhotoEditorFill fillPhotoEditorFields(const QVariantMap& properties, const PhotoFileFacts& facts);

}  // namespace pelorin
