#pragma once

#include "model/CameraFileRef.h"
#include "model/ItemPicture.h"
#include "model/MediaMetadataItem.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <cstdint>

namespace pelorin {

// How a browser view should draw an item: as a picture file, as a movie, or through a generic
// preview (audio and anything else).
enum class BrowserRepresentation { ImagePath, MoviePath, QuickLookPath };

// The one record of every imported file: a photo on disk, a file on a camera, an audio or a video
// file. The field names are the record's established names, misspellings included, because saved
// property lists and the other parts of the program refer to them. Every text is already formatted
// for display; importers fill the raw value and its text together.
struct IKImageItem {
    ItemPicture fileImage;       // thumbnail, artwork or first frame
    QString fileImagePath;       // image dropped on the artwork well
    QString filePath;            // full path on disk
    QString fileType = QStringLiteral("Image");  // "Image", "Movie", "Audio" or the index's kind text
    bool bhasCopy = false;       // reserved
    QString hasCopy;             // reserved
    QString fileName;            // last path component, also the browser title
    QVariant fileNode;           // reserved
    QString fileSize;            // size text
    QString shootDateStr;
    QDateTime shootDate;
    QDateTime fileCreateDate;
    QDateTime fileModifyDate;
    QString fileCreateDateStr;
    QString fileReleasedYear;
    QString fileAblumName;
    double fileduration = 0.0;   // seconds
    QString fileduratStr;
    std::int32_t filePixWidth = 0;
    std::int32_t filepixHeigh = 0;
    QString fileArist;
    QString fileCopyright;
    QString fileTitle;
    QString fileMake;
    QString fileModel;
    QString fileSoftware;        // reserved
    QString fileFormat;          // reserved
    QString fileKeyWords;
    QString filePublisher;
    QString fileDescription;
    QString fileBitRate;
    QString fileSampleRate;
    QString fileChannels;
    QString latitudeFormat;      // "+" or "-"
    QString longtitudeFormat;    // "+" or "-"
    QString AtitudeFormat;       // "+" or "-"
    double filelatitude = 0.0;   // magnitude; the sign is in latitudeFormat
    double filelongtitude = 0.0;
    double fileAtitude = 0.0;
    CameraFileRef cameraItem;    // the camera file this record stands for; invalid for disk files
    QString fileComments;
    QString fileSubTitle;
    QString fileBand;
    QString fileComposer;
    QString fileLyricist;
    QString fileAlbumArist;      // carries the track number for audio files
    QString fileDirector;
    QString fileActor;
    QString fileproducer;
    MediaMetadataItems fileMetaArray;  // container items of a movie, kept for its writers
    // The record's edited copy in the storage folder, once the window edited it: later edits read
    // and replace it, so that they build on each other. Empty while the record is unedited.
    QString workingCopyPath;

    // The browser-item contract: a path is an item's identity in every browser.
    QString imageUID() const { return filePath; }
    BrowserRepresentation imageRepresentationType() const;
    QString imageRepresentation() const { return filePath; }
    QString imageTitle() const { return fileName; }
};

}  // namespace pelorin
