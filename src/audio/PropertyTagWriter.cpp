#include "audio/ContainerTagWriters.h"
#include "audio/PropertyTagEdits.h"
#include "audio/TagLibTagWriter.h"

#include <taglib/apefile.h>
#include <taglib/mpcfile.h>
#include <taglib/trueaudiofile.h>
#include <taglib/wavpackfile.h>

namespace pelorin {
namespace {

using namespace taglib;

// APE, WavPack, Musepack and TrueAudio: their tags through TagLib's properties. strip() drops
// the tags in memory; the save writes the file without them.
class PropertyTagWriter final : public TagLibTagWriter {
public:
    explicit PropertyTagWriter(AudioContainer container) : TagLibTagWriter(container), container_(container) {}

protected:
    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        switch (container_) {
        case AudioContainer::Ape: return editFile<TagLib::APE::File>(stream, edit, problem);
        case AudioContainer::WavPack: return editFile<TagLib::WavPack::File>(stream, edit, problem);
        case AudioContainer::Mpc: return editFile<TagLib::MPC::File>(stream, edit, problem);
        default: return editFile<TagLib::TrueAudio::File>(stream, edit, problem);
        }
    }

private:
    template <typename File>
    bool editFile(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const
    {
        File file(stream);
        if (!readable(file, problem))
            return false;
        if (edit.removeAll)
            file.strip();
        else
            setProperties(file, edit.changes);
        return file.save();
    }

    AudioContainer container_;
};

}  // namespace

std::unique_ptr<AudioTagWriter> propertyTagWriter(AudioContainer container)
{
    return std::make_unique<PropertyTagWriter>(container);
}

}  // namespace pelorin
