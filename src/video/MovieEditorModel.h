#pragma once

#include "model/IKImageItem.h"
#include "video/MovieSave.h"

#include <QString>
#include <QStringList>

namespace pelorin {

// The information lines of the video editor, in display order: "File Name: clip.mov", ...;
// a line whose value is missing shows its caption alone ("Record Date:").
QStringList movieInformationLines(const IKImageItem& item);

// The editable fields of the video editor as texts. Filled from a record, the same texts are
// kept as the "old" values a save compares against.
struct MovieEditorFields {
    QString title;        // fileTitle
    QString albumArtist;  // fileAblumName
    QString artist;       // fileArist
    QString make;         // fileDirector: the make field shows and saves the director
    QString model;        // fileActor: the model field shows and saves the performer
    QString producer;     // fileproducer
    QString createdDate;  // fileCreateDateStr
    QString shootDate;    // shootDateStr
    QString releaseYear;  // filePublisher: the release-year field shows and saves the publisher
    QString copyright;    // fileCopyright
    QString keywords;     // fileKeyWords
    QString software;     // fileDescription: the software field shows and saves the description
    QString latitude;     // signed "%lf" texts of the location
    QString longitude;
    QString altitude;
    bool hasArtwork = false;

    static MovieEditorFields fromItem(const IKImageItem& item);
    friend bool operator==(const MovieEditorFields&, const MovieEditorFields&) = default;
};

// Which groups of fields the user touched (the editor's edit flags).
struct MovieEditFlags {
    bool basicInfo = false;   // title, album artist, artist, make, model, producer
    bool cameraInfo = false;  // release year, copyright, keywords, software, shoot date
};

// The save request of the editor: each field of a touched group whose text differs from the
// old one; the location whenever latitude and longitude are both given; the created date when
// it changed. Artwork comes as a picture path from the caller.
MovieFieldEdits movieEditsFromEditor(const MovieEditorFields& shown, const MovieEditorFields& old,
                                     const MovieEditFlags& flags);

}  // namespace pelorin
