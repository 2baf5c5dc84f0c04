#include "audio/ContainerTagWriters.h"
#include "audio/TagLibTagWriter.h"
#include "audio/XiphTagEdits.h"

#include <taglib/flacfile.h>
#include <taglib/id3v2framefactory.h>

namespace pelorin {
namespace {

using namespace taglib;

// FLAC: the Vorbis comment block and the picture blocks.
class FlacTagWriter final : public TagLibTagWriter {
public:
    FlacTagWriter() : TagLibTagWriter(AudioContainer::Flac) {}

protected:
    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        TagLib::FLAC::File file(stream, TagLib::ID3v2::FrameFactory::instance());
        if (!readable(file, problem))
            return false;
        if (edit.removeAll) {
            file.removePictures();
            file.xiphComment(true)->removeAllFields();
            file.strip(TagLib::FLAC::File::ID3v1 | TagLib::FLAC::File::ID3v2);
            return file.save();
        }
        setXiphFields(file.xiphComment(true), edit.changes);
        if (!edit.artwork.isEmpty()) {
            for (TagLib::FLAC::Picture* picture : file.pictureList())
                if (picture->type() == TagLib::FLAC::Picture::FrontCover)
                    file.removePicture(picture, true);
            file.addPicture(flacPicture(edit.artwork));
        }
        return file.save();
    }
};

}  // namespace

std::unique_ptr<AudioTagWriter> flacTagWriter() { return std::make_unique<FlacTagWriter>(); }

}  // namespace pelorin
