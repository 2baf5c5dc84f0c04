#include "video/MovieSave.h"

#include "video/MovieBatch.h"

#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/OutputDates.h"
#include "model/SafeOutput.h"
#include "video/MovieDateWrite.h"
#include "video/MovieFields.h"
#include "video/MovieItemChanges.h"
#include "video/MovieItems.h"
#include "video/MovieReader.h"
#include "video/MovieRemux.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>

#include <cmath>

namespace pelorin {

namespace {

bool onlyCreatedDate(const MovieFieldEdits& e)
{
    return !e.title && !e.albumArtist && !e.artist && !e.director && !e.performer && !e.producer && !e.publisher
           && !e.copyright && !e.keywords && !e.description && !e.shootDate && !e.latitude && !e.longitude
           && !e.altitude && !e.artworkPath;
}

// Each editor field with the record field it fills and the identifier it is saved under when
// the movie holds it in no form yet.
QList<ItemChange> changesFor(const MovieFieldEdits& edits, const MediaMetadataItems& present)
{
    struct Edit {
        const std::optional<QString>* value;
        MovieField field;
        const char* identifier;
    };
    const Edit fields[] = {
        {&edits.title, MovieField::Title, "itsk/%A9nam"},
        {&edits.albumArtist, MovieField::Album, "itsk/%A9alb"},
        {&edits.artist, MovieField::Artist, "itsk/%A9ART"},
        {&edits.director, MovieField::Director, "mdta/com.apple.quicktime.director"},
        {&edits.performer, MovieField::Performer, "mdta/com.apple.quicktime.performer"},
        {&edits.producer, MovieField::Producer, "mdta/com.apple.quicktime.producer"},
        {&edits.publisher, MovieField::Publisher, "itsk/%A9pub"},
        {&edits.copyright, MovieField::Copyright, "itsk/cprt"},
        {&edits.keywords, MovieField::Keywords, "mdta/com.apple.quicktime.keywords"},
        {&edits.description, MovieField::Description, "itsk/%A9des"},
    };
    QList<ItemChange> changes;
    for (const Edit& edit : fields) {
        if (!*edit.value)
            continue;
        // The value replaces the field's forms the movie already holds (FFmpeg's user-data
        // title, a key of its own name), so no older value is left beside it.
        QStringList forms;
        for (const MediaMetadataItem& item : present) {
            if (movieFieldOf(item.identifier) == edit.field && !forms.contains(item.identifier)
                && item.keySpace != QLatin1String("id3"))
                forms.append(item.identifier);
        }
        if (forms.isEmpty())
            forms.append(QString::fromLatin1(edit.identifier));
        for (const QString& identifier : forms)
            changes.append(ItemChange::set(identifier, **edit.value));
    }
    return changes;
}

std::optional<QDateTime> recordingDate(const std::optional<QString>& text)
{
    const std::optional<WallClock> clock = text ? parseDateText(*text) : std::nullopt;
    const QDateTime date = clock ? movieDateFromWallClock(*clock) : QDateTime();
    return date.isValid() ? std::optional(date) : std::nullopt;
}

// The three forms of a location that players and libraries read, all from one ISO 6709 text.
QList<ItemChange> locationChanges(const MovieFieldEdits& edits, QString* error)
{
    bool latOk = false;
    bool lonOk = false;
    bool altOk = true;
    const double latitude = edits.latitude->trimmed().toDouble(&latOk);
    const double longitude = edits.longitude->trimmed().toDouble(&lonOk);
    const double altitude = edits.altitude && !edits.altitude->trimmed().isEmpty()
                                ? edits.altitude->trimmed().toDouble(&altOk) : 0.0;
    if (!latOk || !lonOk || !altOk || std::fabs(latitude) > 90 || std::fabs(longitude) > 180) {
        *error = QStringLiteral("the location is no latitude and longitude in degrees");
        return {};
    }
    const QString text = iso6709Text(latitude, longitude, altitude);
    return {ItemChange::set(QStringLiteral("uiso/loci"), text),
            ItemChange::set(QStringLiteral("mdta/com.apple.quicktime.location.ISO6709"), text),
            ItemChange::set(QStringLiteral("udta/%A9xyz"), iso6709Text(latitude, longitude, std::nullopt))};
}

// Artwork as the picture file's own JPEG or PNG bytes; anything else is stored as PNG.
std::optional<ItemChange> artworkChange(const QString& path, QString* error)
{
    QFile file(path);
    QImageReader reader(path);
    const QByteArray format = reader.format();
    if (!file.open(QIODevice::ReadOnly) || format.isEmpty()) {
        *error = QStringLiteral("the artwork '%1' is no readable picture").arg(path);
        return std::nullopt;
    }
    if (format == "jpeg" || format == "png")
        return ItemChange::set(QStringLiteral("itsk/covr"), file.readAll(), format == "png" ? "PNG" : "JPEG");
    const QImage image = reader.read();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (image.isNull() || !image.save(&buffer, "PNG")) {
        *error = QStringLiteral("the artwork '%1' is no readable picture").arg(path);
        return std::nullopt;
    }
    return ItemChange::set(QStringLiteral("itsk/covr"), png, QStringLiteral("PNG"));
}

// The same fields as container tags, for Matroska and WebM.
QList<ContainerTagChange> tagChangesFor(const MovieFieldEdits& edits)
{
    const std::pair<const std::optional<QString>*, const char*> fields[] = {
        {&edits.title, "title"},         {&edits.albumArtist, "album"},    {&edits.artist, "artist"},
        {&edits.director, "DIRECTOR"},   {&edits.performer, "PERFORMER"},  {&edits.producer, "PRODUCER"},
        {&edits.publisher, "PUBLISHER"}, {&edits.copyright, "COPYRIGHT"}, {&edits.keywords, "KEYWORDS"},
        {&edits.description, "DESCRIPTION"},
    };
    QList<ContainerTagChange> changes;
    for (const auto& [value, key] : fields) {
        if (*value)
            changes.append({QString::fromLatin1(key), **value});
    }
    return changes;
}

}  // namespace

bool MovieFieldEdits::isEmpty() const
{
    return onlyCreatedDate(*this) && !createdDate;
}

CommandResult saveMovieFields(const QStringList& files, const MovieFieldEdits& edits, const CommandContext& context)
{
    CommandResult result;
    QList<ItemChange> fixedChanges;
    const std::optional<QDateTime> shootDate = recordingDate(edits.shootDate);
    // The created date becomes a file date: an instant, through the local zone.
    const std::optional<WallClock> createdClock = edits.createdDate ? parseDateText(*edits.createdDate) : std::nullopt;
    const std::optional<QDateTime> createdDate =
        createdClock ? std::optional(instantFromWallClock(*createdClock)) : std::nullopt;
    if ((edits.shootDate && !shootDate) || (edits.createdDate && !createdDate)) {
        result.alert = Alerts::invalidDateFormat();
        return result;
    }
    QString error;
    if (edits.latitude || edits.longitude) {
        if (!edits.latitude || !edits.longitude) {
            result.setAlert(Alerts::valueError().message, QStringLiteral("Give both latitude and longitude."));
            return result;
        }
        const QList<ItemChange> location = locationChanges(edits, &error);
        if (location.isEmpty()) {
            result.setAlert(Alerts::valueError().message, error);
            return result;
        }
        fixedChanges += location;
    }
    if (edits.artworkPath) {
        const std::optional<ItemChange> artwork = artworkChange(*edits.artworkPath, &error);
        if (!artwork) {
            result.setAlert(Alerts::valueError().message, error);
            return result;
        }
        fixedChanges.append(*artwork);
    }
    const MovieBoxEdit headerTimes = [&](BoxNode& moov, QString* why) {
        return !shootDate || setHeaderCreationTimes(moov, *shootDate, why);
    };
    // The fields go into the forms each movie already holds them in.
    const auto changesForMovie = [&](const MediaMetadataItems& present) {
        QList<ItemChange> changes = changesFor(edits, present) + fixedChanges;
        if (shootDate)
            changes += recordingDateChanges(*shootDate, present);
        return changes;
    };
    return forEachMovie(files, context, [&](const QString& file, const QString& target, CommandResult& result) {
        const bool mxf = QFileInfo(file).suffix().compare(QLatin1String("mxf"), Qt::CaseInsensitive) == 0;
        if (context.dryRun && mxf) {
            const FileDateReading dates = readFileDates(file);
            setOutputFileDates(target, createdDate ? *createdDate : dates.created,
                               createdDate ? *createdDate : dates.modified, context, result);
        } else if (context.dryRun) {
            const MovieReading reading = readMovieFile(file);
            if (!reading.containerRead) {
                result.skip(file, reading.problems.value(0, QStringLiteral("the movie cannot be read")));
                return;
            }
            for (const ItemChange& change : changesForMovie(reading.item.fileMetaArray)) {
                if (change.value)
                    result.plan(target, change.identifier, lastItemText(reading.item.fileMetaArray, change.identifier),
                                change.value->typeId() == QMetaType::QByteArray
                                    ? QStringLiteral("<%1 bytes>").arg(change.value->toByteArray().size())
                                    : change.value->toString());
            }
        } else {
            const FileDateReading dates = readFileDates(file);
            RewriteReport report;
            // MXF holds its metadata in structures we do not write: its copy takes only the
            // created date, as the editor has always handled it.
            if (mxf) {
                report.written = copyFileAtomically(file, target, &report.error, kMovieBatchDurability);
                if (report.written && !onlyCreatedDate(edits))
                    result.noteOnce(QStringLiteral("MXF movies take only the created date; their other fields were not written"));
            } else if (isIsoMediaFile(file)) {
                report = writeMovieChanges(file, changesForMovie(readMovieItemsOfFile(file)), target,
                                           kMovieBatchDurability, headerTimes);
            } else if (!canRemuxWithTags(file)) {
                report.error = QStringLiteral("only MP4-family, Matroska and WebM movies can be written");
            } else if (edits.latitude || edits.artworkPath || edits.shootDate) {
                report.error = QStringLiteral("Matroska and WebM movies take text fields only");
            } else {
                report = remuxWithTags(file, tagChangesFor(edits), target, false, kMovieBatchDurability);
            }
            if (!report.written) {
                result.skip(file, report.error);
                return;
            }
            result.addWritten(target);
            if (createdDate)
                setOutputFileDates(target, *createdDate, *createdDate, context, result);
            else
                setOutputFileDates(target, dates.created, dates.modified, context, result);
            context.reveal.reveal(target);
        }
    });
}

}  // namespace pelorin
