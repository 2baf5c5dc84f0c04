#include "audio/ContainerTagWriters.h"
#include "audio/Id3TagEdits.h"
#include "audio/PropertyTagEdits.h"
#include "audio/TagLibTagWriter.h"

#include <taglib/apetag.h>
#include <taglib/id3v1tag.h>
#include <taglib/mpegfile.h>

namespace pelorin {
namespace {

using namespace taglib;

bool touchesId3v1(const QList<AudioFieldChange>& changes)
{
    return std::any_of(changes.begin(), changes.end(), [](const AudioFieldChange& c) {
        switch (c.field) {
        case AudioField::Title: case AudioField::Artist: case AudioField::Album:
        case AudioField::Comments: case AudioField::Year: case AudioField::TrackNumber: return true;
        default: return false;
        }
    });
}

void updateId3v1(TagLib::ID3v1::Tag* tag, const QList<AudioFieldChange>& changes)
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

// MP3: the ID3v2 tag in front, saved in its own version; an ID3v1 or APE tag beside it follows
// the edits of the fields it holds.
class MpegTagWriter final : public TagLibTagWriter {
public:
    MpegTagWriter() : TagLibTagWriter(AudioContainer::Mpeg) {}

protected:
    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        using TagLib::MPEG::File;
        File file(stream, TagLib::ID3v2::FrameFactory::instance());
        if (!readable(file, problem))
            return false;
        if (edit.removeAll)
            return file.strip(File::AllTags);
        const TagLib::ID3v2::Version version = editId3Tag(file.ID3v2Tag(true), edit);
        // An ID3v1 or APE tag is saved again only when a field it holds changed: TagLib renders
        // them anew from what it read, trimmed, and the rest of them would change too.
        int tags = File::ID3v2;
        if (file.hasID3v1Tag() && touchesId3v1(edit.changes)) {
            updateId3v1(file.ID3v1Tag(), edit.changes);
            tags |= File::ID3v1;
        }
        if (file.hasAPETag()) {
            const QList<AudioFieldChange> held = changesOfHeldFields(file.APETag()->properties(), edit.changes);
            if (!held.isEmpty()) {
                setProperties(*file.APETag(), held);
                tags |= File::APE;
            }
        }
        return file.save(tags, TagLib::File::StripNone, version, TagLib::File::DoNotDuplicate);
    }
};

}  // namespace

std::unique_ptr<AudioTagWriter> mpegTagWriter() { return std::make_unique<MpegTagWriter>(); }

}  // namespace pelorin
