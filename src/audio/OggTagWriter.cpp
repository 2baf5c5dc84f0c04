#include "audio/ContainerTagWriters.h"
#include "audio/TagLibTagWriter.h"
#include "audio/XiphTagEdits.h"

#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/speexfile.h>
#include <taglib/vorbisfile.h>

namespace pelorin {
namespace {

using namespace taglib;

bool editComment(TagLib::Ogg::XiphComment* xiph, const AudioTagEdit& edit)
{
    if (edit.removeAll) {
        xiph->removeAllFields();
        xiph->removeAllPictures();
        return true;
    }
    setXiphFields(xiph, edit.changes);
    if (!edit.artwork.isEmpty()) {
        for (TagLib::FLAC::Picture* picture : xiph->pictureList())
            if (picture->type() == TagLib::FLAC::Picture::FrontCover)
                xiph->removePicture(picture, true);
        xiph->addPicture(flacPicture(edit.artwork));
    }
    return true;
}

// Ogg Vorbis, Opus, FLAC and Speex: the Vorbis comment, with pictures as picture fields.
class OggTagWriter final : public TagLibTagWriter {
public:
    explicit OggTagWriter(AudioContainer container) : TagLibTagWriter(container), container_(container) {}

protected:
    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        switch (container_) {
        case AudioContainer::OggOpus: return editFile<TagLib::Ogg::Opus::File>(stream, edit, problem);
        case AudioContainer::OggFlac: return editFile<TagLib::Ogg::FLAC::File>(stream, edit, problem);
        case AudioContainer::OggSpeex: return editFile<TagLib::Ogg::Speex::File>(stream, edit, problem);
        default: return editFile<TagLib::Ogg::Vorbis::File>(stream, edit, problem);
        }
    }

private:
    template <typename OggFile>
    bool editFile(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const
    {
        OggFile file(stream);
        if (!readable(file, problem) || !file.tag())
            return false;
        return editComment(file.tag(), edit) && file.save();
    }

    AudioContainer container_;
};

}  // namespace

std::unique_ptr<AudioTagWriter> oggTagWriter(AudioContainer container)
{
    return std::make_unique<OggTagWriter>(container);
}

}  // namespace pelorin
