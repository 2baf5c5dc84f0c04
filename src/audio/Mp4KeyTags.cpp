#include "audio/Mp4KeyTags.h"

#include "isobmff/MovieBoxRewrite.h"
#include "isobmff/QuickTimeKeys.h"

namespace pelorin {

namespace {

// The key FFmpeg reads and writes for each field (exiftool knows them as well).
QString keyFor(AudioField field)
{
    static const char* const keys[] = {
        "title", "subtitle", "album", "artist", "track", "composer", "date",
        "year", "copyright", "publisher", "album_artist", "comment", "lyrics",
    };
    return QString::fromLatin1(keys[static_cast<int>(field)]);
}

}  // namespace

bool mp4KeepsQuickTimeKeys(const QString& path)
{
    FileByteSource source(path);
    if (!source.open(nullptr))
        return false;
    const BoxTree tree = readBoxTree(source);
    const Box* meta = tree.find("moov/udta/meta");
    return meta && meta->child("keys") && meta->child("ilst");
}

bool writeMp4KeyTags(const QString& source, const QString& target, const QList<AudioFieldChange>& changes,
                     const QByteArray& artwork, bool removeAll, QString* problem)
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
            if (!changeQuickTimeKey(moov, keyFor(change.field), value, {}, error))
                return false;
        }
        if (!artwork.isEmpty()) {
            const bool png = artwork.startsWith("\x89PNG");
            if (!changeQuickTimeKey(moov, QStringLiteral("com.apple.quicktime.artwork"), QVariant(artwork),
                                    png ? QStringLiteral("PNG") : QStringLiteral("JPEG"), error))
                return false;
        }
        return true;
    };
    const RewriteReport report = rewriteMovieBox(source, target, edit);
    if (!report.written)
        *problem = report.error;
    return report.written;
}

}  // namespace pelorin
