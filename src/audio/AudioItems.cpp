#include "audio/AudioItems.h"

#include "audio/AudioFields.h"
#include "isobmff/ItemKeys.h"

#include "audio/AudioStoredOrder.h"
#include "audio/Mp4KeyTags.h"

#include "audio/CafInfo.h"
#include "audio/TagLibFiles.h"

#include <taglib/apetag.h>
#include <taglib/asffile.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/commentsframe.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/oggfile.h>
#include <taglib/tfilestream.h>
#include <taglib/tpropertymap.h>
#include <taglib/unknownframe.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <QFile>
#include <QSet>
#include <QLoggingCategory>
#include <QMimeDatabase>
#include <QUrl>

namespace pelorin {

Q_LOGGING_CATEGORY(lcAudio, "pelorin.audio", QtWarningMsg)

namespace {

using namespace taglib;

void add(MediaMetadataItems& items, const QString& space, const QString& key, const QVariant& value,
         const QString& dataType = QStringLiteral("UTF-8"))
{
    const QString identifier = space == QLatin1String("info") ? key : space + QLatin1Char('/') + key;
    items.append({space, key, identifier, value, dataType, {}});
}

// Text of a frame TagLib keeps raw (TRDA and other frames it considers outdated).
QString unknownTextFrame(const TagLib::ID3v2::UnknownFrame* frame)
{
    const TagLib::ByteVector data = frame->data();
    if (data.isEmpty() || frame->frameID()[0] != 'T')
        return {};
    // The byte is checked before it becomes an encoding: other values are no encoding at all.
    const unsigned char encoding = static_cast<unsigned char>(data[0]);
    if (encoding > TagLib::String::UTF8)
        return {};
    QString text = toQString(TagLib::String(data.mid(1), static_cast<TagLib::String::Type>(encoding)));
    while (text.endsWith(QChar(0)))
        text.chop(1);
    return text;
}

struct FrameValue {
    QVariant value;
    QString dataType = QStringLiteral("UTF-8");
    QString description;
};

FrameValue frameValue(const TagLib::ID3v2::Frame* frame)
{
    using namespace TagLib::ID3v2;
    if (auto picture = dynamic_cast<const AttachedPictureFrame*>(frame))
        return {toBytes(picture->picture()), toQString(picture->mimeType()), toQString(picture->description())};
    if (auto comment = dynamic_cast<const CommentsFrame*>(frame))
        return {toQString(comment->text()), QStringLiteral("UTF-8"), toQString(comment->description())};
    if (auto lyrics = dynamic_cast<const UnsynchronizedLyricsFrame*>(frame))
        return {toQString(lyrics->text()), QStringLiteral("UTF-8"), toQString(lyrics->description())};
    if (auto unknown = dynamic_cast<const UnknownFrame*>(frame))
        return {unknownTextFrame(unknown), QStringLiteral("UTF-8"), {}};
    return {toQString(frame->toString()), QStringLiteral("UTF-8"), {}};
}

QByteArray frameIdOnDisk(const TagLib::ID3v2::Frame* frame, int version)
{
    QByteArray id = toBytes(frame->frameID());
    // TagLib turns a v2.3 TYER into TDRC; name the frame the file holds.
    if (version == 3 && id == audioFieldRow(AudioField::Year).id3)
        id = id3OlderDateFrames().first();
    return id;
}

// ID3v2 frames as "id3/XXXX" items.
void id3Items(TagLib::ID3v2::Tag* tag, MediaMetadataItems& items)
{
    if (!tag)
        return;
    const int version = static_cast<int>(tag->header()->majorVersion());
    for (const TagLib::ID3v2::Frame* frame : tag->frameList()) {
        const FrameValue v = frameValue(frame);
        add(items, QStringLiteral("id3"), percentEncodeKey(frameIdOnDisk(frame, version)), v.value, v.dataType);
    }
}

// ID3v2 frames as info-dictionary items (WAV's ID3 chunk).
void id3InfoItems(TagLib::ID3v2::Tag* tag, MediaMetadataItems& items)
{
    if (!tag)
        return;
    const int version = static_cast<int>(tag->header()->majorVersion());
    bool commentTaken = false;
    for (const TagLib::ID3v2::Frame* frame : tag->frameList()) {
        const QByteArray id = frameIdOnDisk(frame, version);
        const FrameValue v = frameValue(frame);
        if (id == audioArtworkKeys().id3) {
            add(items, QStringLiteral("info"), QString::fromLatin1(audioArtworkKeys().info), v.value, v.dataType);
            continue;
        }
        QString key = infoKeyOfId3Frame(id);
        if (id == id3CommentFrame()) {
            if (commentTaken || v.description.startsWith(QLatin1String("iTun")))
                key.clear();
            else
                commentTaken = true;
        }
        if (key.isEmpty())
            add(items, QStringLiteral("id3"), percentEncodeKey(id), v.value, v.dataType);
        else
            add(items, QStringLiteral("info"), key, v.value);
    }
}

void xiphItems(TagLib::Ogg::XiphComment* comment, MediaMetadataItems& items)
{
    if (!comment)
        return;
    for (const auto& [name, values] : comment->fieldListMap()) {
        const QString field = toQString(name);
        const QString key = infoKeyOfXiphName(field);
        for (const TagLib::String& value : values) {
            if (key.isEmpty())
                add(items, QStringLiteral("vorbis"), field, toQString(value));
            else
                add(items, QStringLiteral("info"), key, toQString(value));
        }
    }
    for (const TagLib::FLAC::Picture* picture : comment->pictureList())
        add(items, QStringLiteral("info"), QString::fromLatin1(audioArtworkKeys().info), toBytes(picture->data()),
            toQString(picture->mimeType()));
}

void propertyItems(const TagLib::PropertyMap& properties, MediaMetadataItems& items)
{
    for (const auto& [name, values] : properties) {
        const QString field = toQString(name);
        const QString key = infoKeyOfXiphName(field);
        for (const TagLib::String& value : values) {
            if (key.isEmpty())
                add(items, QStringLiteral("tag"), field, toQString(value));
            else
                add(items, QStringLiteral("info"), key, toQString(value));
        }
    }
}

QString mp4Text(const TagLib::MP4::Item& item)
{
    const TagLib::MP4::Item::IntPair pair = item.toIntPair();
    if (!item.toStringList().isEmpty())
        return toQString(item.toStringList().toString(" / "));
    if (pair.first || pair.second)
        return pair.second ? QStringLiteral("%1/%2").arg(pair.first).arg(pair.second)
                           : QString::number(pair.first);
    return QString::number(item.toInt());
}

void mp4Item(const TagLib::String& name, const TagLib::MP4::Item& item, MediaMetadataItems& items);

// The atoms in the order the file stores them; freeform "----" atoms where the first of them
// stands; anything the walk did not see (a damaged list) after them.
void mp4Items(TagLib::MP4::Tag* tag, const QString& path, MediaMetadataItems& items)
{
    if (!tag)
        return;
    const TagLib::MP4::ItemMap& map = tag->itemMap();
    QSet<QByteArray> done;
    auto take = [&](const TagLib::String& name, const TagLib::MP4::Item& item) {
        const QByteArray raw(name.toCString(false));
        if (done.contains(raw))
            return;
        done.insert(raw);
        mp4Item(name, item, items);
    };
    for (const QByteArray& type : storedIlstOrder(path)) {
        if (type == "----") {
            for (const auto& [name, item] : map) {
                if (name.startsWith("----"))
                    take(name, item);
            }
            continue;
        }
        const TagLib::String name(type.constData(), TagLib::String::Latin1);
        if (map.contains(name))
            take(name, map[name]);
    }
    for (const auto& [name, item] : map)
        take(name, item);
}

void mp4Item(const TagLib::String& name, const TagLib::MP4::Item& item, MediaMetadataItems& items)
{
    {
        const QString key = percentEncodeKey(QByteArray(name.toCString(false)));
        if (name == audioArtworkKeys().mp4) {
            for (const TagLib::MP4::CoverArt& art : item.toCoverArtList()) {
                const bool png = art.format() == TagLib::MP4::CoverArt::PNG;
                add(items, QStringLiteral("itsk"), key, toBytes(art.data()),
                    png ? QStringLiteral("image/png") : QStringLiteral("image/jpeg"));
            }
            return;
        }
        if (name == audioFieldRow(AudioField::TrackNumber).mp4 || name == itunesAtom::discNumber) {
            const auto pair = item.toIntPair();
            add(items, QStringLiteral("itsk"), key,
                pair.second ? QStringLiteral("%1/%2").arg(pair.first).arg(pair.second)
                            : QString::number(pair.first));
            return;
        }
        add(items, QStringLiteral("itsk"), key, mp4Text(item));
    }
}

// The INFO chunks in the order the file stores them, then any the walk did not see.
void riffInfoItems(TagLib::RIFF::Info::Tag* tag, const QString& path, MediaMetadataItems& items)
{
    if (!tag)
        return;
    const TagLib::RIFF::Info::FieldListMap fields = tag->fieldListMap();
    std::vector<std::pair<TagLib::ByteVector, TagLib::String>> ordered;
    QSet<QByteArray> seen;
    for (const QByteArray& id : storedRiffInfoOrder(path)) {
        const TagLib::ByteVector key(id.constData(), uint(id.size()));
        if (fields.contains(key) && !seen.contains(id)) {
            ordered.emplace_back(key, fields[key]);
            seen.insert(id);
        }
    }
    for (const auto& [id, value] : fields) {
        if (!seen.contains(toBytes(id)))
            ordered.emplace_back(id, value);
    }
    for (const auto& [id, value] : ordered) {
        const QByteArray chunk = toBytes(id);
        const QString key = infoKeyOfRiffId(chunk);
        if (key.isEmpty())
            add(items, QStringLiteral("riff"), QString::fromLatin1(chunk), toQString(value));
        else
            add(items, QStringLiteral("info"), key, toQString(value));
    }
}

void aiffItems(AiffChunkFile& file, MediaMetadataItems& items)
{
    for (unsigned int i = 0; i < file.count(); ++i) {
        const QByteArray name = toBytes(file.name(i));
        if (const QString key = infoKeyOfAiffChunk(name); !key.isEmpty()) {
            add(items, QStringLiteral("caaf"),
                QStringLiteral("info-") + percentEncodeKey(key.toUtf8()),
                decodeChunkText(toBytes(file.data(i))));
        } else if (name == "ID3 " || name == "id3 ") {
            id3Items(file.tag(), items);
        }
    }
}

void cafItems(const QString& path, AudioReading& reading)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        reading.problem = file.errorString();
        return;
    }
    if (const auto format = readCafAudioFormat(file)) {
        QVariantMap& attributes = reading.indexAttributes;
        if (format->durationSeconds > 0) {
            attributes.insert(QStringLiteral("kMDItemDurationSeconds"), format->durationSeconds);
            attributes.insert(QStringLiteral("kMDItemAudioBitRate"),
                              qRound64(format->audioBytes * 8 / format->durationSeconds));
        }
        if (format->sampleRate > 0 && format->sampleRate < 1e7)
            attributes.insert(QStringLiteral("kMDItemAudioSampleRate"), qRound(format->sampleRate));
        if (format->channels > 0)
            attributes.insert(QStringLiteral("kMDItemAudioChannelCount"), format->channels);
    }
    QString problem;
    for (const CafInfoEntry& entry : readCafInfo(file, &problem))
        add(reading.items, QStringLiteral("caaf"),
            QStringLiteral("info-") + percentEncodeKey(entry.key.toUtf8()), entry.value);
    reading.problem = problem;
}

// The desktop's kind text; the container's name where the MIME database knows no better.
QString kindText(const QString& path, AudioContainer container)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path);
    return type.isDefault() ? audioContainerName(container) + QStringLiteral(" audio") : type.comment();
}

void audioProperties(const TagLib::AudioProperties* properties, const QString& path,
                     AudioContainer container, QVariantMap& attributes)
{
    attributes.insert(QStringLiteral("kMDItemKind"), kindText(path, container));
    if (!properties)
        return;
    attributes.insert(QStringLiteral("kMDItemDurationSeconds"), properties->lengthInMilliseconds() / 1000.0);
    if (properties->bitrate() > 0)
        attributes.insert(QStringLiteral("kMDItemAudioBitRate"), qlonglong(properties->bitrate()) * 1000);
    if (properties->sampleRate() > 0)
        attributes.insert(QStringLiteral("kMDItemAudioSampleRate"), properties->sampleRate());
    if (properties->channels() > 0)
        attributes.insert(QStringLiteral("kMDItemAudioChannelCount"), properties->channels());
}

void readWithTagLib(const QString& path, AudioReading& reading)
{
    TagLib::FileStream stream(QFile::encodeName(path).constData(), true);
    if (!stream.isOpen()) {
        reading.problem = QStringLiteral("cannot open the file");
        return;
    }
    const std::unique_ptr<TagLib::File> file = openFile(reading.container, &stream);
    if (!file || !file->isValid()) {
        reading.problem = QStringLiteral("TagLib cannot read this %1 file (damaged or truncated)")
                              .arg(audioContainerName(reading.container));
        return;
    }
    audioProperties(file->audioProperties(), path, reading.container, reading.indexAttributes);
    MediaMetadataItems& items = reading.items;
    if (auto mpeg = dynamic_cast<TagLib::MPEG::File*>(file.get())) {
        if (mpeg->hasID3v2Tag())
            reading.id3Version = static_cast<int>(mpeg->ID3v2Tag()->header()->majorVersion());
        id3Items(mpeg->hasID3v2Tag() ? mpeg->ID3v2Tag() : nullptr, items);
        if (!mpeg->hasID3v2Tag() && mpeg->hasID3v1Tag())
            propertyItems(mpeg->ID3v1Tag()->properties(), items);
    } else if (auto flac = dynamic_cast<TagLib::FLAC::File*>(file.get())) {
        xiphItems(flac->hasXiphComment() ? flac->xiphComment() : nullptr, items);
        for (const TagLib::FLAC::Picture* picture : flac->pictureList())
            add(items, QStringLiteral("info"), QString::fromLatin1(audioArtworkKeys().info), toBytes(picture->data()),
                toQString(picture->mimeType()));
    } else if (auto wav = dynamic_cast<TagLib::RIFF::WAV::File*>(file.get())) {
        riffInfoItems(wav->hasInfoTag() ? wav->InfoTag() : nullptr, path, items);
        if (wav->hasID3v2Tag())
            reading.id3Version = static_cast<int>(wav->ID3v2Tag()->header()->majorVersion());
        id3InfoItems(wav->hasID3v2Tag() ? wav->ID3v2Tag() : nullptr, items);
    } else if (auto aiff = dynamic_cast<AiffChunkFile*>(file.get())) {
        if (aiff->hasID3v2Tag())
            reading.id3Version = static_cast<int>(aiff->tag()->header()->majorVersion());
        aiffItems(*aiff, items);
    } else if (auto mp4 = dynamic_cast<TagLib::MP4::File*>(file.get())) {
        reading.mp4QuickTimeKeys = mp4KeepsQuickTimeKeys(path);
        if (reading.mp4QuickTimeKeys)
            items += readMp4KeyTags(path);  // TagLib sees that list as nameless iTunes atoms
        else
            mp4Items(mp4->hasMP4Tag() ? mp4->tag() : nullptr, path, items);
    } else if (auto ogg = dynamic_cast<TagLib::Ogg::File*>(file.get())) {
        xiphItems(dynamic_cast<TagLib::Ogg::XiphComment*>(ogg->tag()), items);
    } else {
        propertyItems(file->properties(), items);
    }
}

}  // namespace

QString percentEncodeKey(const QByteArray& key)
{
    QString out;
    for (const char c : key) {
        const auto b = static_cast<unsigned char>(c);
        if (b > 0x20 && b < 0x7F && b != '%')
            out += QLatin1Char(c);
        else
            out += QStringLiteral("%%1").arg(b, 2, 16, QLatin1Char('0')).toUpper();
    }
    return out;
}

AudioReading readAudioItems(const QString& path)
{
    AudioReading reading;
    reading.container = detectAudioContainerOfFile(path, &reading.problem);
    try {
        if (reading.container == AudioContainer::Caf) {
            reading.indexAttributes.insert(QStringLiteral("kMDItemKind"), kindText(path, reading.container));
            cafItems(path, reading);
        } else if (reading.container != AudioContainer::Unknown) {
            readWithTagLib(path, reading);
        }
    } catch (const std::exception& e) {
        reading.problem = QString::fromLocal8Bit(e.what());
    }
    if (!reading.problem.isEmpty())
        qCDebug(lcAudio) << path << reading.problem;
    return reading;
}

}  // namespace pelorin
