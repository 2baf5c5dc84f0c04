#include "video/MovieSave.h"

#include "video/MovieBatch.h"

#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/OutputDates.h"
#include "model/SafeOutput.h"
#include "isobmff/ItemKeys.h"
#include "video/MovieDateWrite.h"
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

// What a save does to every movie alike, checked before any movie is read.
struct SaveRequest {
    const MovieChanges& changes;
    std::optional<QDateTime> recordingDate;
    std::optional<QDateTime> createdDate;  // an instant: it becomes a file date
    QList<ItemChange> fixedChanges;        // the location and the artwork
};

QString noPlaceFor(MovieField field)
{
    return QStringLiteral("movies have no place for the %1").arg(QString::fromLatin1(movieFieldRow(field).name));
}

// Each text goes into every form of its field the movie already holds (FFmpeg's user-data
// title, a key of its own name, ...), so that no older value is left beside it; a field the
// movie holds nowhere gets the field's new identifier. False with the reason for a field
// movies have no place for.
bool addTextChanges(const MovieChanges& changes, const MediaMetadataItems& present, QList<ItemChange>& out,
                    QString* error)
{
    for (const auto& [field, text] : changes.texts) {
        const MovieFieldRow& row = movieFieldRow(field);
        QStringList forms;
        for (const MediaMetadataItem& item : present) {
            if (row.identifiers.contains(item.identifier) && !forms.contains(item.identifier))
                forms.append(item.identifier);
        }
        if (forms.isEmpty() && text) {
            if (row.newIdentifier.isEmpty()) {
                *error = noPlaceFor(field);
                return false;
            }
            forms.append(row.newIdentifier);
        }
        for (const QString& identifier : forms)
            out.append(text ? ItemChange::set(identifier, *text) : ItemChange::remove(identifier));
    }
    return true;
}

std::optional<QDateTime> recordingDate(const std::optional<QString>& text)
{
    const std::optional<WallClock> clock = text ? parseDateText(*text) : std::nullopt;
    const QDateTime date = clock ? movieDateFromWallClock(*clock) : QDateTime();
    return date.isValid() ? std::optional(date) : std::nullopt;
}

// The three forms of a location that players and libraries read, all from one ISO 6709 text.
QList<ItemChange> locationChanges(const MovieLocationText& location, QString* error)
{
    bool latOk = false;
    bool lonOk = false;
    bool altOk = true;
    const double latitude = location.latitude.trimmed().toDouble(&latOk);
    const double longitude = location.longitude.trimmed().toDouble(&lonOk);
    const double altitude = location.altitude.trimmed().isEmpty() ? 0.0 : location.altitude.trimmed().toDouble(&altOk);
    if (!latOk || !lonOk || !altOk || std::fabs(latitude) > 90 || std::fabs(longitude) > 180) {
        *error = QStringLiteral("the location is no latitude and longitude in degrees");
        return {};
    }
    const QString text = iso6709Text(latitude, longitude, altitude);
    return {ItemChange::set(itemIdentifier(ItemKeySpace::IsoUserData, threeGppBox::location), text),
            ItemChange::set(itemIdentifier(ItemKeySpace::QuickTimeKeys, appleKey::location), text),
            ItemChange::set(itemIdentifier(ItemKeySpace::UserData, userDataAtom::location),
                            iso6709Text(latitude, longitude, std::nullopt))};
}

// Artwork as the picture file's own JPEG or PNG bytes; anything else is stored as PNG.
std::optional<ItemChange> artworkChange(const QString& path, QString* error)
{
    const QString identifier = movieFieldRow(MovieField::Artwork).newIdentifier;
    QFile file(path);
    QImageReader reader(path);
    const QByteArray format = reader.format();
    if (!file.open(QIODevice::ReadOnly) || format.isEmpty()) {
        *error = QStringLiteral("the artwork '%1' is no readable picture").arg(path);
        return std::nullopt;
    }
    if (format == "jpeg" || format == "png")
        return ItemChange::set(identifier, file.readAll(), format == "png" ? "PNG" : "JPEG");
    const QImage image = reader.read();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (image.isNull() || !image.save(&buffer, "PNG")) {
        *error = QStringLiteral("the artwork '%1' is no readable picture").arg(path);
        return std::nullopt;
    }
    return ItemChange::set(identifier, png, QStringLiteral("PNG"));
}

// The text fields as container tags, for Matroska and WebM.
bool tagChangesFor(const MovieChanges& changes, QList<ContainerTagChange>& out, QString* error)
{
    for (const auto& [field, text] : changes.texts) {
        const QStringList& tags = movieFieldRow(field).containerTags;
        if (tags.isEmpty()) {
            *error = noPlaceFor(field);
            return false;
        }
        out.append({tags.first(), text});
    }
    return true;
}

// Checks the dates, the location and the artwork; false with the alert set.
bool prepare(SaveRequest& request, CommandResult& result)
{
    const MovieChanges& changes = request.changes;
    request.recordingDate = recordingDate(changes.recordingDate);
    const std::optional<WallClock> createdClock = changes.createdDate ? parseDateText(*changes.createdDate) : std::nullopt;
    if (createdClock)
        request.createdDate = instantFromWallClock(*createdClock);
    if ((changes.recordingDate && !request.recordingDate) || (changes.createdDate && !request.createdDate)) {
        result.alert = Alerts::invalidDateFormat();
        return false;
    }
    QString error;
    if (changes.location) {
        if (changes.location->latitude.trimmed().isEmpty() || changes.location->longitude.trimmed().isEmpty()) {
            result.setAlert(Alerts::valueError().message, QStringLiteral("Give both latitude and longitude."));
            return false;
        }
        request.fixedChanges = locationChanges(*changes.location, &error);
        if (request.fixedChanges.isEmpty()) {
            result.setAlert(Alerts::valueError().message, error);
            return false;
        }
    }
    if (changes.artworkPath) {
        const std::optional<ItemChange> artwork = artworkChange(*changes.artworkPath, &error);
        if (!artwork) {
            result.setAlert(Alerts::valueError().message, error);
            return false;
        }
        request.fixedChanges.append(*artwork);
    }
    return true;
}

// The item changes of one movie, in the forms it already holds its fields in.
bool itemChangesFor(const SaveRequest& request, const MediaMetadataItems& present, QList<ItemChange>& out,
                    QString* error)
{
    if (!addTextChanges(request.changes, present, out, error))
        return false;
    out += request.fixedChanges;
    if (request.recordingDate)
        out += recordingDateChanges(*request.recordingDate, present);
    return true;
}

QString planText(const std::optional<QVariant>& value)
{
    if (!value)
        return {};
    return value->typeId() == QMetaType::QByteArray ? QStringLiteral("<%1 bytes>").arg(value->toByteArray().size())
                                                    : value->toString();
}

void planMovie(const SaveRequest& request, const QString& file, const QString& target, const CommandContext& context,
               CommandResult& result)
{
    if (QFileInfo(file).suffix().compare(QLatin1String("mxf"), Qt::CaseInsensitive) == 0) {
        const FileDateReading dates = readFileDates(file);
        setOutputFileDates(target, request.createdDate.value_or(dates.created),
                           request.createdDate.value_or(dates.modified), context, result);
        return;
    }
    const MovieReading reading = readMovieFile(file);
    QList<ItemChange> changes;
    QString error;
    if (!reading.containerRead) {
        result.skip(file, reading.problems.value(0, QStringLiteral("the movie cannot be read")));
        return;
    }
    if (!itemChangesFor(request, reading.item.fileMetaArray, changes, &error)) {
        result.skip(file, error);
        return;
    }
    for (const ItemChange& change : changes)
        result.plan(target, change.identifier, lastItemText(reading.item.fileMetaArray, change.identifier),
                    planText(change.value));
}

RewriteReport writeMovie(const SaveRequest& request, const QString& file, const QString& target,
                         CommandResult& result)
{
    RewriteReport report;
    const MovieChanges& changes = request.changes;
    QList<ItemChange> itemChanges;
    QList<ContainerTagChange> tagChanges;
    // MXF holds its metadata in structures we do not write: its copy takes only the created
    // date, as the editor has always handled it.
    if (QFileInfo(file).suffix().compare(QLatin1String("mxf"), Qt::CaseInsensitive) == 0) {
        report.written = copyFileAtomically(file, target, &report.error, kMovieBatchDurability);
        if (report.written && !changes.onlyFileDates())
            result.noteOnce(QStringLiteral("MXF movies take only the created date; their other fields were not written"));
    } else if (isIsoMediaFile(file)) {
        const MovieBoxEdit headerTimes = [&](BoxNode& moov, QString* why) {
            return !request.recordingDate || setHeaderCreationTimes(moov, *request.recordingDate, why);
        };
        if (itemChangesFor(request, readMovieItemsOfFile(file), itemChanges, &report.error))
            report = writeMovieChanges(file, itemChanges, target, kMovieBatchDurability, headerTimes);
    } else if (!canRemuxWithTags(file)) {
        report.error = QStringLiteral("only MP4-family, Matroska and WebM movies can be written");
    } else if (changes.location || changes.artworkPath || changes.recordingDate) {
        report.error = QStringLiteral("Matroska and WebM movies take text fields only");
    } else if (tagChangesFor(changes, tagChanges, &report.error)) {
        report = remuxWithTags(file, tagChanges, target, false, kMovieBatchDurability);
    }
    return report;
}

}  // namespace

CommandResult saveMovieFields(const QStringList& files, const MovieChanges& changes, const CommandContext& context)
{
    CommandResult result;
    SaveRequest request{changes, {}, {}, {}};
    if (!prepare(request, result))
        return result;
    return forEachMovie(files, context, [&](const QString& file, const QString& target, CommandResult& result) {
        if (context.dryRun) {
            planMovie(request, file, target, context, result);
            return;
        }
        const FileDateReading dates = readFileDates(file);
        const RewriteReport report = writeMovie(request, file, target, result);
        if (!report.written) {
            result.skip(file, report.error);
            return;
        }
        result.addWritten(target);
        setOutputFileDates(target, request.createdDate.value_or(dates.created),
                           request.createdDate.value_or(dates.modified), context, result);
        context.reveal.reveal(target);
    });
}

}  // namespace pelorin
