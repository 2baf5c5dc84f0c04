#include "video/MovieFields.h"

#include "isobmff/ItemKeys.h"

#include <QHash>

namespace pelorin {

namespace {

using Field = MovieField;
using Section = MovieEditorSection;

QString itunes(const char* atom) { return itemIdentifier(ItemKeySpace::ITunes, atom); }
QString userData(const char* atom) { return itemIdentifier(ItemKeySpace::UserData, atom); }
QString keys(const char* key) { return itemIdentifier(ItemKeySpace::QuickTimeKeys, key); }
QString iso(const char* box) { return itemIdentifier(ItemKeySpace::IsoUserData, box); }

// Besides the iTunes list and Apple's keys, a field is read from the forms other tools write:
// QuickTime user-data texts (FFmpeg's plain -metadata), FFmpeg's own key names
// (use_metadata_tags) and 3GPP boxes. An identifier belongs to one field only.
// The editor's lines keep the object names they always had: the make line shows and saves
// the director, the model line the performer, the release-year line the publisher and the
// software line the description.
QList<MovieFieldRow> credits()
{
    return {
        {Field::Title, "title", Section::Credits, {{"--title", "TEXT", "Title", "mediaTitle"}},
         &IKImageItem::fileTitle,
         {itunes(itunesAtom::title), userData(userDataAtom::title), keys(ffmpegKey::title), keys(appleKey::title),
          iso(threeGppBox::title)},
         itunes(itunesAtom::title), {ffmpegKey::title}},
        // The album line has always been set by --album-artist.
        {Field::Album, "album", Section::Credits, {{"--album-artist", "TEXT", "Album", "mediaAlumArtis"}},
         &IKImageItem::fileAblumName,
         {itunes(itunesAtom::album), userData(userDataAtom::album), keys(ffmpegKey::album), keys(appleKey::album),
          iso(threeGppBox::album)},
         itunes(itunesAtom::album), {ffmpegKey::album}},
        {Field::Artist, "artist", Section::Credits, {{"--artist", "TEXT", "Artist", "mediaArtist"}},
         &IKImageItem::fileArist,
         {itunes(itunesAtom::artist), userData(userDataAtom::artist), keys(ffmpegKey::artist), keys(appleKey::artist)},
         itunes(itunesAtom::artist), {ffmpegKey::artist}},
        {Field::Director, "director", Section::Credits, {{"--director", "TEXT", "Director", "mediaMake"}},
         &IKImageItem::fileDirector, {keys(appleKey::director), itunes(itunesAtom::director)},
         keys(appleKey::director), {"DIRECTOR"}},
        {Field::Performer, "performer", Section::Credits, {{"--performer", "TEXT", "Performer", "mediaModel"}},
         &IKImageItem::fileActor,
         {keys(appleKey::performer), itunes(itunesAtom::performer), iso(threeGppBox::performer)},
         keys(appleKey::performer), {"PERFORMER"}},
        {Field::Producer, "producer", Section::Credits, {{"--producer", "TEXT", "Producer", "mediaProducer"}},
         &IKImageItem::fileproducer,
         {keys(appleKey::producer), itunes(itunesAtom::producer), keys(appleKey::proAppsManufacturer)},
         keys(appleKey::producer), {"PRODUCER"}},
    };
}

QList<MovieFieldRow> datesAndRights()
{
    return {
        // A file date only: the copy's creation and modification dates.
        {Field::CreatedDate, "created date", Section::DatesAndRights,
         {{"--created-date", "DATE", "Created Date (file)", "mediaCreatedDate"}}, &IKImageItem::fileCreateDateStr,
         {}, {}, {}},
        // A save writes the date into every place players look (see recordingDateChanges).
        {Field::RecordingDate, "recording date", Section::DatesAndRights,
         {{"--shoot-date", "DATE", "Recording Date", "mediaShootDate"}}, &IKImageItem::shootDateStr,
         {iso(threeGppBox::date), keys(appleKey::creationDate), userData(userDataAtom::date), itunes(itunesAtom::date),
          keys(ffmpegKey::date), keys(ffmpegKey::creationTime)},
         {}, {ffmpegKey::date, ffmpegKey::creationTime}},
        {Field::Publisher, "publisher", Section::DatesAndRights,
         {{"--publisher", "TEXT", "Publisher", "mediaReleaseYear"}}, &IKImageItem::filePublisher,
         {keys(appleKey::publisher), itunes(itunesAtom::publisher)}, itunes(itunesAtom::publisher),
         {"PUBLISHER"}},
        {Field::Copyright, "copyright", Section::DatesAndRights,
         {{"--copyright", "TEXT", "Copyright", "mediaCopyright"}}, &IKImageItem::fileCopyright,
         {keys(appleKey::copyright), itunes(itunesAtom::copyright), userData(userDataAtom::copyright),
          keys(ffmpegKey::copyright), iso(threeGppBox::copyright)},
         itunes(itunesAtom::copyright), {"COPYRIGHT"}},
        {Field::Keywords, "keywords", Section::DatesAndRights,
         {{"--keywords", "TEXT", "Keywords", "mediakeywords"}}, &IKImageItem::fileKeyWords,
         {keys(appleKey::keywords), userData(userDataAtom::keywords)}, keys(appleKey::keywords), {"KEYWORDS"}},
        {Field::Description, "description", Section::DatesAndRights,
         {{"--description", "TEXT", "Description", "mediaSoftware"}}, &IKImageItem::fileDescription,
         {keys(appleKey::description), itunes(itunesAtom::description), userData(userDataAtom::description),
          keys(ffmpegKey::description), iso(threeGppBox::description)},
         itunes(itunesAtom::description), {"DESCRIPTION", ffmpegKey::comment}},
    };
}

QList<MovieFieldRow> buildTable()
{
    QList<MovieFieldRow> rows = credits() + datesAndRights();
    // A save writes the location into every place players look (see locationChanges).
    rows.append({Field::Location, "location", Section::Location,
                 {{"--lat", "DEG", "Latitude", "mediaLatitude"},
                  {"--lon", "DEG", "Longitude", "mediaLongtitude"},
                  {"--alt", "M", "Altitude (m)", "mediaAatitude"}},
                 nullptr, {iso(threeGppBox::location), keys(appleKey::location)}, {}, {}});
    rows.append({Field::Artwork, "artwork", Section::None, {{"--artwork", "IMAGE", nullptr, nullptr}}, nullptr,
                 {itunes(itunesAtom::artwork), keys(appleKey::artwork)}, itunes(itunesAtom::artwork), {}});
    rows.append({Field::Make, "make", Section::None, {}, &IKImageItem::fileMake, {keys(appleKey::make)},
                 keys(appleKey::make), {}});
    rows.append({Field::Model, "model", Section::None, {}, &IKImageItem::fileModel, {keys(appleKey::model)},
                 keys(appleKey::model), {}});
    rows.append({Field::Composer, "composer", Section::None, {}, &IKImageItem::fileComposer, {}, {},
                 {ffmpegKey::composer}});
    return rows;
}

}  // namespace

const QList<MovieFieldRow>& movieFieldTable()
{
    static const QList<MovieFieldRow> table = buildTable();
    return table;
}

const MovieFieldRow& movieFieldRow(MovieField field)
{
    return movieFieldTable()[qsizetype(field)];
}

std::optional<MovieField> movieFieldOf(const QString& identifier)
{
    static const QHash<QString, MovieField> byIdentifier = [] {
        QHash<QString, MovieField> out;
        for (const MovieFieldRow& row : movieFieldTable()) {
            for (const QString& each : row.identifiers)
                out.insert(each, row.field);
        }
        return out;
    }();
    const auto found = byIdentifier.constFind(identifier);
    return found == byIdentifier.constEnd() ? std::nullopt : std::optional(*found);
}

std::optional<MovieField> movieFieldOfContainerTag(const QString& tag)
{
    for (const MovieFieldRow& row : movieFieldTable()) {
        if (row.containerTags.contains(tag, Qt::CaseInsensitive))
            return row.field;
    }
    return std::nullopt;
}

bool isMovieTextField(MovieField field)
{
    return field != MovieField::CreatedDate && field != MovieField::RecordingDate && field != MovieField::Location
           && field != MovieField::Artwork;
}

}  // namespace pelorin
