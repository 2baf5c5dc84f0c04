// One writer per container. Each maps the editor's fields onto its container's own fields:
//   field          ID3v2 (MP3, WAV/AIFF ID3 chunk)  RIFF INFO  AIFF chunk  Xiph / TagLib property  MP4 atom          CAF info
//   title          TIT2                             INAM       NAME        TITLE                   ©nam              title
//   subtitle       TIT3                             ISBJ       -           SUBTITLE                ©st3              subtitle
//   album          TALB                             IPRD       -           ALBUM                   ©alb              album
//   artist         TPE1                             IART       AUTH        ARTIST                  ©ART              artist
//   track number   TRCK                             ITRK       -           TRACKNUMBER             trkn              track number
//   composer       TCOM                             IMUS       -           COMPOSER                ©wrt              composer
//   recorded date  TRDA                             ICRD       -           RECORDINGDATE           ----:...:RECORDINGDATE  recorded date
//   year           TDRC (TYER+TDAT in v2.3)         -          -           DATE                    ©day              year
//   copyright      TCOP                             ICOP       (c)         COPYRIGHT               cprt              copyright
//   publisher      TPUB                             -          -           PUBLISHER               ©pub              -
//   band           TPE2                             -          -           ALBUMARTIST             aART              -
//   comments       COMM                             ICMT       ANNO        COMMENT                 ©cmt              comments
//   lyricist       TEXT                             IWRI       -           LYRICIST                ©lyr              lyricist
// Artwork: APIC front cover, FLAC/Xiph PICTURE front cover, MP4 covr (JPEG or PNG).
#include "audio/AudioEdits.h"

#include "audio/AsfHeaderCheck.h"
#include "audio/AsfTags.h"
#include "audio/AudioItems.h"
#include "audio/AudioReadBack.h"
#include "audio/AudioScratchCopy.h"
#include "audio/CafInfo.h"
#include "audio/CheckedFileStream.h"
#include "audio/Id3EmptyFrames.h"
#include "audio/Id3VersionFrames.h"
#include "audio/Mp4KeyTags.h"
#include "audio/Mp4TagLibRefusal.h"
#include "audio/TagLibFiles.h"
#include "audio/WavTagRemoval.h"
#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/OutputDates.h"
#include "model/SafeOutput.h"

#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/asffile.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/commentsframe.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4file.h>
#include <taglib/mpcfile.h>
#include <taglib/mpegfile.h>
#include <taglib/oggfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>
#include <taglib/trueaudiofile.h>
#include <taglib/wavfile.h>
#include <taglib/wavpackfile.h>
#include <taglib/xiphcomment.h>

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMimeDatabase>
#include <QtEndian>

namespace pelorin {
namespace {

using namespace taglib;
using Changes = QList<AudioFieldChange>;

const char* const kId3Frames[] = {"TIT2", "TIT3", "TALB", "TPE1", "TRCK", "TCOM", "TRDA",
                                  "TDRC", "TCOP", "TPUB", "TPE2", "COMM", "TEXT"};
const char* const kRiffFields[] = {"INAM", "ISBJ", "IPRD", "IART", "ITRK", "IMUS", "ICRD",
                                   nullptr, "ICOP", nullptr, nullptr, "ICMT", "IWRI"};
const char* const kXiphNames[] = {"TITLE", "SUBTITLE", "ALBUM", "ARTIST", "TRACKNUMBER",
                                  "COMPOSER", "RECORDINGDATE", "DATE", "COPYRIGHT", "PUBLISHER",
                                  "ALBUMARTIST", "COMMENT", "LYRICIST"};
const char* const kMp4Atoms[] = {"\251nam", "\251st3", "\251alb", "\251ART", "trkn", "\251wrt",
                                 "----:com.apple.iTunes:RECORDINGDATE", "\251day", "cprt",
                                 "\251pub", "aART", "\251cmt", "\251lyr"};
const char* const kCafKeys[] = {"title", "subtitle", "album", "artist", "track number",
                                "composer", "recorded date", "year", "copyright", nullptr,
                                nullptr, "comments", "lyricist"};

int index(AudioField field) { return static_cast<int>(field); }

QString mimeOf(const QByteArray& image)
{
    return QMimeDatabase().mimeTypeForData(image).name();
}

// ---- ID3v2 ----

void setId3Comment(TagLib::ID3v2::Tag* tag, const QString& text)
{
    using namespace TagLib::ID3v2;
    for (Frame* frame : tag->frameListMap()["COMM"]) {
        auto comment = dynamic_cast<CommentsFrame*>(frame);
        if (!comment || comment->description().startsWith("iTun"))
            continue;
        if (text.isEmpty())
            tag->removeFrame(comment);
        else
            comment->setText(toTString(text));
        return;
    }
    if (text.isEmpty())
        return;
    auto comment = new CommentsFrame(TagLib::String::UTF16);
    comment->setLanguage("eng");
    comment->setText(toTString(text));
    tag->addFrame(comment);
}

void setId3Text(TagLib::ID3v2::Tag* tag, const QByteArray& id, const QString& text)
{
    using namespace TagLib::ID3v2;
    const TagLib::ByteVector frameId = toVector(id);
    const FrameList existing = tag->frameListMap()[frameId];
    // Edit the first frame in place so it keeps its position; drop duplicates.
    TextIdentificationFrame* kept = nullptr;
    for (Frame* frame : existing) {
        auto textFrame = dynamic_cast<TextIdentificationFrame*>(frame);
        if (!kept && textFrame && !text.isEmpty())
            kept = textFrame;
        else
            tag->removeFrame(frame);
    }
    if (text.isEmpty())
        return;
    if (!kept) {
        kept = new TextIdentificationFrame(frameId, TagLib::String::UTF16);
        tag->addFrame(kept);
    }
    kept->setText(toTString(text));
}

QString id3Text(TagLib::ID3v2::Tag* tag, const char* id)
{
    const TagLib::ID3v2::FrameList frames = tag->frameList(id);
    return frames.isEmpty() ? QString() : toQString(frames.front()->toString());
}

void setId3Fields(TagLib::ID3v2::Tag* tag, const Changes& changes)
{
    for (const AudioFieldChange& change : changes) {
        if (change.field == AudioField::Comments)
            setId3Comment(tag, change.after);
        else if (change.field == AudioField::TrackNumber)
            setId3Text(tag, "TRCK", trackTextKeepingTotal(id3Text(tag, "TRCK"), change.after));
        else if (change.field == AudioField::Year) {
            // TDRC holds the whole date; an older date frame left behind would keep the old year.
            removeId3Frames(tag, {"TYER", "TDAT", "TIME"});
            setId3Text(tag, "TDRC", change.after);
        } else
            setId3Text(tag, kId3Frames[index(change.field)], change.after);
    }
}

void setId3Picture(TagLib::ID3v2::Tag* tag, const QByteArray& image)
{
    using namespace TagLib::ID3v2;
    const FrameList pictures = tag->frameListMap()["APIC"];  // a copy: frames are removed below
    for (Frame* frame : pictures) {
        auto picture = dynamic_cast<AttachedPictureFrame*>(frame);
        if (picture && picture->type() == AttachedPictureFrame::FrontCover)
            tag->removeFrame(picture);
    }
    auto picture = new AttachedPictureFrame;
    picture->setTextEncoding(TagLib::String::UTF16);
    picture->setMimeType(toTString(mimeOf(image)));
    picture->setType(AttachedPictureFrame::FrontCover);
    picture->setPicture(toVector(image));
    tag->addFrame(picture);
}

bool touchesId3v1(const Changes& changes)
{
    return std::any_of(changes.begin(), changes.end(), [](const AudioFieldChange& c) {
        switch (c.field) {
        case AudioField::Title: case AudioField::Artist: case AudioField::Album:
        case AudioField::Comments: case AudioField::Year: case AudioField::TrackNumber: return true;
        default: return false;
        }
    });
}

void updateId3v1(TagLib::ID3v1::Tag* tag, const Changes& changes)
{
    for (const AudioFieldChange& c : changes) {
        const TagLib::String text = toTString(c.after);
        switch (c.field) {
        case AudioField::Title: tag->setTitle(text); break;
        case AudioField::Artist: tag->setArtist(text); break;
        case AudioField::Album: tag->setAlbum(text); break;
        case AudioField::Comments: tag->setComment(text); break;
        case AudioField::Year: tag->setYear(c.after.left(4).toUInt()); break;
        case AudioField::TrackNumber: tag->setTrack(c.after.section(QLatin1Char('/'), 0, 0).toUInt()); break;
        default: break;
        }
    }
}

// ---- Xiph, MP4, properties ----

// Vorbis comments keep the total either in TRACKNUMBER ("3/12") or in its own TRACKTOTAL
// field; an edit keeps whichever form the file uses.
void setXiphTrack(TagLib::Ogg::XiphComment* xiph, const QString& typed)
{
    const TagLib::Ogg::FieldListMap fields = xiph->fieldListMap();
    const auto stored = fields.find("TRACKNUMBER");
    const QString storedText = stored == fields.end() || stored->second.isEmpty()
                                   ? QString() : toQString(stored->second.front());
    const bool separateTotal = fields.contains("TRACKTOTAL") || fields.contains("TOTALTRACKS");
    xiph->removeFields("TRACKNUMBER");
    if (typed.isEmpty())
        return;
    if (!separateTotal) {
        xiph->addField("TRACKNUMBER", toTString(trackTextKeepingTotal(storedText, typed)));
        return;
    }
    xiph->addField("TRACKNUMBER", toTString(typed.section(QLatin1Char('/'), 0, 0).trimmed()));
    if (typed.contains(QLatin1Char('/'))) {
        xiph->removeFields("TOTALTRACKS");
        xiph->removeFields("TRACKTOTAL");
        xiph->addField("TRACKTOTAL", toTString(typed.section(QLatin1Char('/'), 1, 1).trimmed()));
    }
}

void setXiphFields(TagLib::Ogg::XiphComment* xiph, const Changes& changes)
{
    for (const AudioFieldChange& c : changes) {
        if (c.field == AudioField::TrackNumber) {
            setXiphTrack(xiph, c.after);
            continue;
        }
        const TagLib::String name = kXiphNames[index(c.field)];
        xiph->removeFields(name);
        if (!c.after.isEmpty())
            xiph->addField(name, toTString(c.after));
    }
}

TagLib::FLAC::Picture* flacPicture(const QByteArray& image)
{
    auto picture = new TagLib::FLAC::Picture;
    picture->setType(TagLib::FLAC::Picture::FrontCover);
    picture->setMimeType(toTString(mimeOf(image)));
    picture->setData(toVector(image));
    const QImage decoded = QImage::fromData(image);
    picture->setWidth(decoded.width());
    picture->setHeight(decoded.height());
    picture->setColorDepth(decoded.depth());
    return picture;
}

void setMp4Fields(TagLib::MP4::Tag* tag, const Changes& changes)
{
    for (const AudioFieldChange& c : changes) {
        const TagLib::String atom(kMp4Atoms[index(c.field)], TagLib::String::Latin1);
        if (c.after.isEmpty()) {
            tag->removeItem(atom);
        } else if (c.field == AudioField::TrackNumber) {
            const TagLib::MP4::Item::IntPair stored = tag->item(atom).toIntPair();
            const QString text = trackTextKeepingTotal(
                stored.second > 0 ? QStringLiteral("%1/%2").arg(stored.first).arg(stored.second) : QString(),
                c.after);
            tag->setItem(atom, TagLib::MP4::Item(text.section(QLatin1Char('/'), 0, 0).toInt(),
                                                 text.section(QLatin1Char('/'), 1, 1).toInt()));
        } else {
            tag->setItem(atom, TagLib::StringList(toTString(c.after)));
        }
    }
}

void setMp4Picture(TagLib::MP4::Tag* tag, const QByteArray& image)
{
    using TagLib::MP4::CoverArt;
    const CoverArt::Format format = mimeOf(image) == QLatin1String("image/png") ? CoverArt::PNG
                                                                                : CoverArt::JPEG;
    TagLib::MP4::CoverArtList covers;
    covers.append(CoverArt(format, toVector(image)));
    // The first cover is the front one; later ones stay.
    const TagLib::MP4::CoverArtList old = tag->item("covr").toCoverArtList();
    for (auto it = old.begin(); it != old.end(); ++it)
        if (it != old.begin())
            covers.append(*it);
    tag->setItem("covr", TagLib::MP4::Item(covers));
}

// The changes of the fields a tag already holds: a second tag beside the main one (an MP3's
// APE tag) follows edits of its own fields, so that it never contradicts the main tag, but
// does not take on new ones.
Changes changesOfHeldFields(const TagLib::PropertyMap& held, const Changes& changes)
{
    Changes kept;
    for (const AudioFieldChange& c : changes)
        if (held.contains(kXiphNames[index(c.field)]))
            kept.append(c);
    return kept;
}

// A whole file's or one tag's properties (an MP3's APE tag).
template <typename Holder>
void setProperties(Holder& file, const Changes& changes)
{
    TagLib::PropertyMap properties = file.properties();
    for (const AudioFieldChange& c : changes) {
        const TagLib::String name = kXiphNames[index(c.field)];
        QString text = c.after;
        if (c.field == AudioField::TrackNumber && properties.contains(name) && !properties[name].isEmpty())
            text = trackTextKeepingTotal(toQString(properties[name].front()), c.after);
        properties.erase(name);
        if (!text.isEmpty())
            properties.insert(name, TagLib::StringList(toTString(text)));
    }
    file.setProperties(properties);
}

// ---- AIFF text chunks ----

const char* aiffChunk(AudioField field)
{
    switch (field) {
    case AudioField::Title: return "NAME";
    case AudioField::Artist: return "AUTH";
    case AudioField::Copyright: return "(c) ";
    case AudioField::Comments: return "ANNO";
    default: return nullptr;
    }
}

QByteArray chunkText(const QString& text)
{
    const bool latin1 = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x100; });
    return latin1 ? text.toLatin1() : text.toUtf8();
}

// ---- dispatch ----

struct Job {
    AudioContainer container = AudioContainer::Unknown;
    int id3Version = 0;
    Changes changes;
    QByteArray artwork;
    bool remove = false;
    Durability durability = Durability::FlushEach;
};

bool edit(TagLib::File& file, const Job& job, QString* problem)
{
    using namespace TagLib;
    if (auto mpeg = dynamic_cast<MPEG::File*>(&file)) {
        if (job.remove)
            return mpeg->strip(MPEG::File::AllTags);
        setId3Fields(mpeg->ID3v2Tag(true), job.changes);
        if (!job.artwork.isEmpty())
            setId3Picture(mpeg->ID3v2Tag(true), job.artwork);
        const ID3v2::Version version = id3VersionToWrite(mpeg->ID3v2Tag(), job.id3Version);
        fitId3FramesToVersion(mpeg->ID3v2Tag(), version);
        // An ID3v1 or APE tag is saved again only when a field it holds changed: TagLib
        // renders them anew from what it read, trimmed, and the rest of them would change too.
        int tags = MPEG::File::ID3v2;
        if (mpeg->hasID3v1Tag() && touchesId3v1(job.changes)) {
            updateId3v1(mpeg->ID3v1Tag(), job.changes);
            tags |= MPEG::File::ID3v1;
        }
        if (mpeg->hasAPETag()) {
            const Changes held = changesOfHeldFields(mpeg->APETag()->properties(), job.changes);
            if (!held.isEmpty()) {
                setProperties(*mpeg->APETag(), held);
                tags |= MPEG::File::APE;
            }
        }
        return mpeg->save(tags, File::StripNone, version, File::DoNotDuplicate);
    }
    if (auto flac = dynamic_cast<FLAC::File*>(&file)) {
        if (job.remove) {
            flac->removePictures();
            flac->xiphComment(true)->removeAllFields();
            flac->strip(FLAC::File::ID3v1 | FLAC::File::ID3v2);
            return flac->save();
        }
        setXiphFields(flac->xiphComment(true), job.changes);
        if (!job.artwork.isEmpty()) {
            for (FLAC::Picture* picture : flac->pictureList())
                if (picture->type() == FLAC::Picture::FrontCover)
                    flac->removePicture(picture, true);
            flac->addPicture(flacPicture(job.artwork));
        }
        return flac->save();
    }
    if (auto wav = dynamic_cast<RIFF::WAV::File*>(&file)) {
        if (job.remove) {
            wav->strip();
            if (auto chunks = dynamic_cast<WavChunkFile*>(wav))
                removeWavDescriptiveChunks(*chunks);
            return true;
        }
        for (const AudioFieldChange& c : job.changes) {
            if (const char* id = kRiffFields[index(c.field)]) {
                if (c.after.isEmpty())
                    wav->InfoTag()->removeField(id);
                else if (c.field == AudioField::TrackNumber)
                    wav->InfoTag()->setFieldText(
                        id, toTString(trackTextKeepingTotal(toQString(wav->InfoTag()->fieldText(id)), c.after)));
                else
                    wav->InfoTag()->setFieldText(id, toTString(c.after));
            }
        }
        setId3Fields(wav->ID3v2Tag(), job.changes);
        if (!job.artwork.isEmpty())
            setId3Picture(wav->ID3v2Tag(), job.artwork);
        const ID3v2::Version version = id3VersionToWrite(wav->ID3v2Tag(), job.id3Version);
        fitId3FramesToVersion(wav->ID3v2Tag(), version);
        return wav->save(RIFF::WAV::File::AllTags, File::StripNone, version);
    }
    if (auto aiff = dynamic_cast<AiffChunkFile*>(&file)) {
        if (job.remove) {
            for (const char* chunk : {"NAME", "AUTH", "(c) ", "ANNO", "COMT", "ID3 ", "id3 "})
                aiff->remove(chunk);
            return true;
        }
        for (const AudioFieldChange& c : job.changes) {
            if (const char* chunk = aiffChunk(c.field)) {
                aiff->remove(chunk);
                if (!c.after.isEmpty())
                    aiff->set(chunk, toVector(chunkText(c.after)));
            }
        }
        setId3Fields(aiff->tag(), job.changes);
        if (!job.artwork.isEmpty())
            setId3Picture(aiff->tag(), job.artwork);
        const ID3v2::Version version = id3VersionToWrite(aiff->tag(), job.id3Version);
        fitId3FramesToVersion(aiff->tag(), version);
        return aiff->save(version);
    }
    if (auto mp4 = dynamic_cast<MP4::File*>(&file)) {
        MP4::Tag* tag = mp4->tag();
        if (!tag)
            return false;
        if (job.remove) {
            const MP4::ItemMap items = tag->itemMap();
            for (const auto& [name, item] : items)
                tag->removeItem(name);
            return mp4->save();
        }
        if (const QString lost = mp4ItemTagLibDrops(*tag); !lost.isEmpty()) {
            *problem = QStringLiteral("TagLib cannot write back the item \"%1\" (a ':' in its name); "
                                      "nothing was written").arg(lost);
            return false;
        }
        setMp4Fields(tag, job.changes);
        if (!job.artwork.isEmpty())
            setMp4Picture(tag, job.artwork);
        return mp4->save();
    }
    if (auto ogg = dynamic_cast<Ogg::File*>(&file)) {
        auto xiph = dynamic_cast<Ogg::XiphComment*>(ogg->tag());
        if (!xiph)
            return false;
        if (job.remove) {
            xiph->removeAllFields();
            xiph->removeAllPictures();
            return ogg->save();
        }
        setXiphFields(xiph, job.changes);
        if (!job.artwork.isEmpty()) {
            for (FLAC::Picture* picture : xiph->pictureList())
                if (picture->type() == FLAC::Picture::FrontCover)
                    xiph->removePicture(picture, true);
            xiph->addPicture(flacPicture(job.artwork));
        }
        return ogg->save();
    }
    if (auto asf = dynamic_cast<ASF::File*>(&file)) {
        if (job.remove)
            removeAsfTags(asf->tag());
        else
            setProperties(file, job.changes);
        if (!job.artwork.isEmpty())
            setAsfFrontCover(asf->tag(), job.artwork, mimeOf(job.artwork));
        return asf->save();
    }
    if (job.remove) {
        // strip() only drops the tags in memory; the save writes the file without them.
        if (auto ape = dynamic_cast<APE::File*>(&file))
            ape->strip();
        else if (auto wavpack = dynamic_cast<WavPack::File*>(&file))
            wavpack->strip();
        else if (auto mpc = dynamic_cast<MPC::File*>(&file))
            mpc->strip();
        else if (auto tta = dynamic_cast<TrueAudio::File*>(&file))
            tta->strip();
        else
            file.setProperties(PropertyMap());
        return file.save();
    }
    setProperties(file, job.changes);
    return file.save();
}

bool editCaf(const QString& source, const QString& target, const Job& job, const AudioReading& reading,
             QString* problem)
{
    CafInfoEntries entries;
    if (!job.remove) {
        QFile file(source);
        if (!file.open(QIODevice::ReadOnly)) {
            *problem = file.errorString();
            return false;
        }
        entries = readCafInfo(file, problem);
        if (!problem->isEmpty())
            return false;
        for (const AudioFieldChange& c : job.changes) {
            const char* key = kCafKeys[index(c.field)];
            if (!key)
                continue;
            const QString name = QString::fromLatin1(key);
            auto it = std::find_if(entries.begin(), entries.end(),
                                   [&](const CafInfoEntry& e) { return e.key == name; });
            if (it == entries.end() && !c.after.isEmpty())
                entries.append({name, c.after});
            else if (it != entries.end() && c.after.isEmpty())
                entries.erase(it);
            else if (it != entries.end())
                it->value = c.field == AudioField::TrackNumber ? trackTextKeepingTotal(it->value, c.after)
                                                               : c.after;
        }
    }
    AtomicFileWriter writer(target, source, job.durability);
    if (!writer.open() || !writeCafWithInfo(source, entries, writer, problem)) {
        if (problem->isEmpty())
            *problem = writer.error();
        return false;
    }
    writer.setCheck([&](const QString& pending) { return audioReadBackProblem(pending, source, reading); });
    if (!writer.commit()) {
        if (problem->isEmpty())
            *problem = writer.error();
        return false;
    }
    return true;
}

// TagLib names a WAV's tag chunk "ID3 "; exiftool and other readers look for "id3 ", the name
// most files use, so the chunk takes that name.
bool renameWavId3Chunk(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        return false;
    const qint64 size = file.size();
    qint64 offset = 12;
    while (offset + 8 <= size) {
        if (!file.seek(offset))
            return false;
        const QByteArray header = file.read(8);
        if (header.size() != 8)
            return false;
        if (header.startsWith("ID3 "))
            return file.seek(offset) && file.write("id3 ", 4) == 4;
        const quint32 length = qFromLittleEndian<quint32>(header.constData() + 4);
        offset += 8 + qint64(length) + (length & 1);
    }
    return true;
}

bool editWithTagLib(const QString& path, const Job& job, QString* problem)
{
    CheckedFileStream stream(path);
    const std::unique_ptr<TagLib::File> file = openFile(job.container, &stream);
    if (!file || !file->isValid()) {
        *problem = QStringLiteral("TagLib cannot read this %1 file").arg(audioContainerName(job.container));
        return false;
    }
    const bool saved = edit(*file, job, problem);
    if (stream.writeError() != 0) {
        *problem = QStringLiteral("cannot write the tags: %1").arg(writeErrorText(stream.writeError()));
        return false;
    }
    if (!saved) {
        if (problem->isEmpty())
            *problem = QStringLiteral("TagLib could not save the tags");
        return false;
    }
    return true;
}

// TagLib saves a damaged MP4 or ASF file in its own reading of the damage: tags where no
// other reader looks, or a header repaired into something else. Such files are skipped.
QString damageTagLibWouldHide(AudioContainer container, const QString& source)
{
    if (container == AudioContainer::Mp4)
        return mp4DamageProblem(source);
    if (container == AudioContainer::Asf)
        return asfHeaderProblem(source);
    return {};
}

// Runs one job: checks, dry-run plan, copy, edit, commit, dates.
CommandResult run(const QString& source, Job job, const QString& openingCreated,
                  const QString& created, const CommandContext& context)
{
    CommandResult result;
    const AudioReading reading = readAudioItems(source);
    job.container = reading.container;
    job.id3Version = reading.id3Version;
    if (job.container == AudioContainer::Unknown) {
        result.skip(source, reading.problem);
        return result;
    }
    if (!audioCapabilities(job.container).writeArtwork && !job.artwork.isEmpty()) {
        result.skip(source, QStringLiteral("%1 files cannot hold artwork here; nothing was written")
                                .arg(audioContainerName(job.container)));
        return result;
    }
    const QString target = context.claimOutput(storageOutputPath(context.storageFolder, QFileInfo(source).fileName()), source);
    // The output takes the typed created date when it was changed and is a date, else the
    // source's own dates.
    const FileDateReading dates = readFileDates(source);
    QDateTime createdDate = dates.created;
    QDateTime modifiedDate = dates.modified;
    if (created != openingCreated) {
        if (const auto clock = parseDateText(created))
            createdDate = modifiedDate = instantFromWallClock(*clock);
    }
    if (context.dryRun) {
        for (const AudioFieldChange& c : job.changes)
            result.plan(source, audioFieldName(c.field), c.before, c.after);
        if (!job.artwork.isEmpty())
            result.plan(source, QStringLiteral("artwork"), {}, mimeOf(job.artwork));
        if (job.remove)
            result.plan(source, QStringLiteral("all tags and pictures"), QStringLiteral("present"), {});
        setOutputFileDates(target, createdDate, modifiedDate, context, result);
        return result;
    }
    QString problem;
    if (!ensureFolder(context.storageFolder, &problem)) {
        result.skip(source, problem);
        return result;
    }
    bool ok = false;
    try {
        if (job.container == AudioContainer::Caf) {
            ok = editCaf(source, target, job, reading, &problem);
        } else if (job.container == AudioContainer::Mp4 && mp4KeepsQuickTimeKeys(source)) {
            ok = writeMp4KeyTags(source, target, job.changes, job.artwork, job.remove, &problem,
                                 [&](const QString& pending) { return audioReadBackProblem(pending, source, reading); },
                                 job.durability);
        } else if (const QString damage = damageTagLibWouldHide(job.container, source); !damage.isEmpty()) {
            problem = QStringLiteral("the file is damaged (%1); nothing was written").arg(damage);
        } else {
            AudioScratchCopy copy(source, target, job.durability);
            ok = copy.create() && dropEmptyId3Frames(copy.path(), job.container)
                 && editWithTagLib(copy.path(), job, &problem)
                 && (job.container != AudioContainer::Wav || renameWavId3Chunk(copy.path()));
            ok = ok && copy.commit([&](const QString& scratch) { return audioReadBackProblem(scratch, source, reading); });
            if (!ok && problem.isEmpty())
                problem = copy.error();
        }
    } catch (const std::exception& e) {
        ok = false;
        problem = QString::fromLocal8Bit(e.what());
    }
    if (!ok) {
        result.skip(source, problem);
        return result;
    }
    setOutputFileDates(target, createdDate, modifiedDate, context, result);
    result.addWritten(target);
    context.reveal.reveal(target);
    return result;
}

bool isPicture(const QByteArray& artwork) { return !QImage::fromData(artwork).isNull(); }

// One edit; artworkIsPicture tells whether edit.artwork (when given) decodes.
CommandResult saveEdit(const AudioEdit& edit, const CommandContext& context, Durability durability,
                       bool artworkIsPicture)
{
    if (!edit.artwork.isEmpty() && !artworkIsPicture) {
        CommandResult result;
        result.skip(edit.sourcePath, QStringLiteral("the artwork is not a picture"));
        return result;
    }
    Job job;
    job.durability = durability;
    job.changes = changedAudioFields(edit);
    job.artwork = edit.artwork;
    return run(edit.sourcePath, job, edit.openingCreatedDate, edit.createdDate, context);
}

CommandResult removeTags(const QString& sourcePath, const CommandContext& context, Durability durability)
{
    Job job;
    job.durability = durability;
    job.remove = true;
    return run(sourcePath, job, {}, {}, context);
}

// Runs one item after another, each written without a flush of its own, and flushes the storage
// folder once after the last (also when cancelled).
template <typename Item, typename RunOne>
CommandResult runBatch(const QList<Item>& items, const CommandContext& context, RunOne runOne)
{
    CommandResult result;
    int done = 0;
    for (const Item& item : items) {
        if (context.isCancelled())
            break;
        result.merge(runOne(item));
        context.report(++done, int(items.size()));
    }
    if (!context.dryRun && done > 0)
        flushFileSystem(context.storageFolder);
    return result;
}

}  // namespace

CommandResult saveAudioEdits(const AudioEdit& edit, const CommandContext& context)
{
    return saveEdit(edit, context, Durability::FlushEach, edit.artwork.isEmpty() || isPicture(edit.artwork));
}

CommandResult saveAudioEdits(const QList<AudioEdit>& edits, const CommandContext& context)
{
    // A batch usually gives every song the same picture: it is decoded once to be checked.
    QByteArray checked;
    return runBatch(edits, context, [&](const AudioEdit& edit) {
        const bool picture = edit.artwork.isEmpty() || edit.artwork == checked || isPicture(edit.artwork);
        if (picture && !edit.artwork.isEmpty())
            checked = edit.artwork;
        return saveEdit(edit, context, Durability::Deferred, picture);
    });
}

CommandResult removeAudioTags(const QString& sourcePath, const CommandContext& context)
{
    return removeTags(sourcePath, context, Durability::FlushEach);
}

CommandResult removeAudioTags(const QStringList& sourcePaths, const CommandContext& context)
{
    return runBatch(sourcePaths, context,
                    [&](const QString& path) { return removeTags(path, context, Durability::Deferred); });
}

}  // namespace pelorin
