#include "audio/ContainerTagWriters.h"
#include "audio/AsfHeaderCheck.h"
#include "audio/AsfTags.h"
#include "audio/PropertyTagEdits.h"
#include "audio/TagLibTagWriter.h"

#include <taglib/asffile.h>

namespace pelorin {
namespace {

using namespace taglib;

// WMA: the content description and the attributes, through TagLib's properties.
class AsfTagWriter final : public TagLibTagWriter {
public:
    AsfTagWriter() : TagLibTagWriter(AudioContainer::Asf) {}

protected:
    // TagLib would repair a damaged header into something else; such files are refused.
    QString damage(const QString& source) const override { return asfHeaderProblem(source); }

    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        TagLib::ASF::File file(stream);
        if (!readable(file, problem))
            return false;
        if (edit.removeAll)
            removeAsfTags(file.tag());
        else
            setProperties(file, edit.changes);
        if (!edit.artwork.isEmpty())
            setAsfFrontCover(file.tag(), edit.artwork, artworkMimeType(edit.artwork));
        return file.save();
    }
};

}  // namespace

std::unique_ptr<AudioTagWriter> asfTagWriter() { return std::make_unique<AsfTagWriter>(); }

}  // namespace pelorin
