#include "audio/ContainerTagWriters.h"
#include "audio/AudioTagChanges.h"
#include "audio/Mp4TagLibRefusal.h"
#include "audio/TagLibFiles.h"
#include "audio/TagLibTagWriter.h"

#include <taglib/mp4file.h>

namespace pelorin {
namespace {

using namespace taglib;

void setTrack(TagLib::MP4::Tag* tag, const TagLib::String& atom, const QString& typed)
{
    const TagLib::MP4::Item::IntPair stored = tag->item(atom).toIntPair();
    const QString text = trackTextKeepingTotal(
        stored.second > 0 ? QStringLiteral("%1/%2").arg(stored.first).arg(stored.second) : QString(), typed);
    tag->setItem(atom, TagLib::MP4::Item(text.section(QLatin1Char('/'), 0, 0).toInt(),
                                         text.section(QLatin1Char('/'), 1, 1).toInt()));
}

void setFields(TagLib::MP4::Tag* tag, const QList<AudioFieldChange>& changes)
{
    for (const AudioFieldChange& c : changes) {
        const TagLib::String atom(audioFieldRow(c.field).mp4, TagLib::String::Latin1);
        if (c.after.isEmpty())
            tag->removeItem(atom);
        else if (c.field == AudioField::TrackNumber)
            setTrack(tag, atom, c.after);
        else
            tag->setItem(atom, TagLib::StringList(toTString(c.after)));
    }
}

// The first cover is the front one; later ones stay.
void setFrontCover(TagLib::MP4::Tag* tag, const QByteArray& image)
{
    using TagLib::MP4::CoverArt;
    const char* atom = audioArtworkKeys().mp4;
    const CoverArt::Format format = artworkMimeType(image) == QLatin1String("image/png") ? CoverArt::PNG
                                                                                       : CoverArt::JPEG;
    TagLib::MP4::CoverArtList covers;
    covers.append(CoverArt(format, toVector(image)));
    const TagLib::MP4::CoverArtList old = tag->item(atom).toCoverArtList();
    for (auto it = old.begin(); it != old.end(); ++it)
        if (it != old.begin())
            covers.append(*it);
    tag->setItem(atom, TagLib::MP4::Item(covers));
}

// M4A with an iTunes item list.
class Mp4TagWriter final : public TagLibTagWriter {
public:
    Mp4TagWriter() : TagLibTagWriter(AudioContainer::Mp4) {}

protected:
    // TagLib rewrites a damaged file in its own reading of the damage: tags where no other reader
    // looks. Such files are refused.
    QString damage(const QString& source) const override { return mp4DamageProblem(source); }

    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        TagLib::MP4::File file(stream);
        if (!readable(file, problem) || !file.tag())
            return false;
        TagLib::MP4::Tag* tag = file.tag();
        if (edit.removeAll) {
            const TagLib::MP4::ItemMap items = tag->itemMap();
            for (const auto& [name, item] : items)
                tag->removeItem(name);
            return file.save();
        }
        if (const QString lost = mp4ItemTagLibDrops(*tag); !lost.isEmpty()) {
            *problem = QStringLiteral("TagLib cannot write back the item \"%1\" (a ':' in its name); "
                                      "nothing was written").arg(lost);
            return false;
        }
        setFields(tag, edit.changes);
        if (!edit.artwork.isEmpty())
            setFrontCover(tag, edit.artwork);
        return file.save();
    }
};

}  // namespace

std::unique_ptr<AudioTagWriter> mp4TagWriter() { return std::make_unique<Mp4TagWriter>(); }

}  // namespace pelorin
