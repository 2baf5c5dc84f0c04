#include "audio/Mp4KeyTags.h"

#include "audio/ContainerTagWriters.h"

#include "isobmff/MovieBoxRewrite.h"
#include "isobmff/QuickTimeKeys.h"

namespace pelorin {

bool mp4KeepsQuickTimeKeys(const QString& path)
{
    FileByteSource source(path);
    if (!source.open(nullptr))
        return false;
    const BoxTree tree = readBoxTree(source);
    const Box* meta = tree.find("moov/udta/meta");
    return meta && meta->child("keys") && meta->child("ilst");
}

MediaMetadataItems readMp4KeyTags(const QString& path)
{
    MediaMetadataItems items;
    FileByteSource source(path);
    if (!source.open(nullptr))
        return items;
    const BoxTree tree = readBoxTree(source);
    const Box* meta = tree.find("moov/udta/meta");
    const Box* keys = meta ? meta->child("keys") : nullptr;
    const Box* ilst = meta ? meta->child("ilst") : nullptr;
    // Tags are small; a larger box is damage, not a tag.
    constexpr std::int64_t kMaxTag = std::int64_t(16) << 20;
    if (!keys || !ilst || keys->payloadSize() > kMaxTag)
        return items;
    const QStringList names = quickTimeKeyNamesOf(source.read(keys->payloadOffset(), keys->payloadSize()));
    for (const Box& entry : ilst->children) {
        const std::uint32_t index = readU32(entry.type, 0);
        const Box* data = entry.child("data");
        if (index == 0 || index > std::uint32_t(names.size()) || !data || data->payloadSize() > kMaxTag)
            continue;
        const QByteArray payload = source.read(data->payloadOffset(), data->payloadSize());
        const std::uint32_t type = readU32(payload, 0) & 0xffffff;
        const QString& key = names[int(index - 1)];
        const QString identifier = QStringLiteral("mdta/") + key;
        if (type == 1)
            items.append({QStringLiteral("mdta"), key, identifier, QString::fromUtf8(payload.mid(8)), QStringLiteral("UTF-8"), {}});
        else if (type == 13 || type == 14)
            items.append({QStringLiteral("mdta"), key, identifier, payload.mid(8),
                          type == 14 ? QStringLiteral("image/png") : QStringLiteral("image/jpeg"), {}});
    }
    return items;
}

bool writeMp4KeyTags(const QString& source, const QString& target, const QList<AudioFieldChange>& changes,
                     const QByteArray& artwork, bool removeAll, QString* problem,
                     const OutputCheck& check, Durability durability)
{
    const MovieBoxEditor edit = [&](BoxNode& moov, QString* error) {
        if (removeAll) {
            for (const QString& key : quickTimeKeyNames(moov)) {
                if (!changeQuickTimeKey(moov, key, std::nullopt, {}, error))
                    return false;
            }
            return true;
        }
        for (const AudioFieldChange& change : changes) {
            const std::optional<QVariant> value =
                change.after.isEmpty() ? std::nullopt : std::optional<QVariant>(change.after);
            if (!changeQuickTimeKey(moov, QString::fromLatin1(audioFieldRow(change.field).ffmpeg), value, {}, error))
                return false;
        }
        if (!artwork.isEmpty()) {
            const bool png = artwork.startsWith("\x89PNG");
            if (!changeQuickTimeKey(moov, QString::fromLatin1(audioArtworkKeys().ffmpeg), QVariant(artwork),
                                    png ? QStringLiteral("PNG") : QStringLiteral("JPEG"), error))
                return false;
        }
        return true;
    };
    const RewriteReport report = rewriteMovieBox(source, target, edit, durability, {}, check);
    if (!report.written)
        *problem = report.error;
    return report.written;
}

namespace {

// M4A whose tags are QuickTime keys: written through the box writer, which keeps every other key.
class Mp4KeyTagWriter final : public AudioTagWriter {
public:
    bool write(const QString& source, const QString& target, const AudioTagEdit& edit, const OutputCheck& check,
               Durability durability, QString* problem) const override
    {
        return writeMp4KeyTags(source, target, edit.changes, edit.artwork, edit.removeAll, problem, check, durability);
    }
};

}  // namespace

std::unique_ptr<AudioTagWriter> mp4KeyTagWriter() { return std::make_unique<Mp4KeyTagWriter>(); }

}  // namespace pelorin
