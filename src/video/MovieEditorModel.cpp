#include "video/MovieEditorModel.h"

namespace pelorin {

namespace {

QString line(const char* caption, const QString& value)
{
    const QString text = QString::fromLatin1(caption);
    return value.isEmpty() ? text : text + QLatin1Char(' ') + value;
}

QString signedText(const QString& sign, double magnitude)
{
    return QString::asprintf("%lf", sign == QLatin1String("-") ? -magnitude : magnitude);
}

}  // namespace

QStringList movieInformationLines(const IKImageItem& item)
{
    const QString dimensions = item.filePixWidth > 0 && item.filepixHeigh > 0
                                   ? QString::asprintf("%d x %d", item.filePixWidth, item.filepixHeigh)
                                   : QString();
    return {
        line("File Name:", item.fileName),
        line("Record Date:", item.shootDateStr),
        line("File Dimensions:", dimensions),
        line("File Size:", item.fileSize),
        line("Location:", item.filePath),
        line("Kind:", item.fileType),
        line("Channels:", item.fileChannels),
        line("Duration:", item.fileduratStr),
        line("Bitrate:", item.fileBitRate),
        line("Sample Rate:", item.fileSampleRate),
        line("Created Date:", item.fileCreateDateStr),
    };
}

MovieEditorFields MovieEditorFields::fromItem(const IKImageItem& item)
{
    MovieEditorFields fields;
    fields.title = item.fileTitle;
    fields.albumArtist = item.fileAblumName;
    fields.artist = item.fileArist;
    fields.make = item.fileDirector;
    fields.model = item.fileActor;
    fields.producer = item.fileproducer;
    fields.createdDate = item.fileCreateDateStr;
    fields.shootDate = item.shootDateStr;
    fields.releaseYear = item.filePublisher;
    fields.copyright = item.fileCopyright;
    fields.keywords = item.fileKeyWords;
    fields.software = item.fileDescription;
    if (!item.latitudeFormat.isEmpty()) {
        fields.latitude = signedText(item.latitudeFormat, item.filelatitude);
        fields.longitude = signedText(item.longtitudeFormat, item.filelongtitude);
        fields.altitude = signedText(item.AtitudeFormat, item.fileAtitude);
    }
    fields.hasArtwork = !item.fileImage.isNull();
    return fields;
}

MovieFieldEdits movieEditsFromEditor(const MovieEditorFields& shown, const MovieEditorFields& old,
                                     const MovieEditFlags& flags)
{
    MovieFieldEdits edits;
    const auto take = [](bool group, const QString& now, const QString& before, std::optional<QString>& into) {
        if (group && now != before)
            into = now;
    };
    take(flags.basicInfo, shown.title, old.title, edits.title);
    take(flags.basicInfo, shown.albumArtist, old.albumArtist, edits.albumArtist);
    take(flags.basicInfo, shown.artist, old.artist, edits.artist);
    take(flags.basicInfo, shown.make, old.make, edits.director);
    take(flags.basicInfo, shown.model, old.model, edits.performer);
    take(flags.basicInfo, shown.producer, old.producer, edits.producer);
    take(flags.cameraInfo, shown.releaseYear, old.releaseYear, edits.publisher);
    take(flags.cameraInfo, shown.copyright, old.copyright, edits.copyright);
    take(flags.cameraInfo, shown.keywords, old.keywords, edits.keywords);
    take(flags.cameraInfo, shown.software, old.software, edits.description);
    take(flags.cameraInfo, shown.shootDate, old.shootDate, edits.shootDate);
    take(true, shown.createdDate, old.createdDate, edits.createdDate);
    if (!shown.latitude.trimmed().isEmpty() && !shown.longitude.trimmed().isEmpty()) {
        edits.latitude = shown.latitude;
        edits.longitude = shown.longitude;
        edits.altitude = shown.altitude;
    }
    return edits;
}

}  // namespace pelorin
