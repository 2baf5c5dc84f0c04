#include "audio/ContainerTagWriters.h"
#include "audio/Id3TagEdits.h"
#include "audio/TagLibFiles.h"
#include "audio/TagLibTagWriter.h"

namespace pelorin {
namespace {

using namespace taglib;

QByteArray chunkText(const QString& text)
{
    const bool latin1 = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x100; });
    return latin1 ? text.toLatin1() : text.toUtf8();
}

// AIFF: the text chunks of the fields that have one, and the ID3 chunk.
class AiffTagWriter final : public TagLibTagWriter {
public:
    AiffTagWriter() : TagLibTagWriter(AudioContainer::Aiff) {}

protected:
    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        AiffChunkFile file(stream);
        if (!readable(file, problem))
            return false;
        if (edit.removeAll) {
            for (const QByteArray& chunk : aiffTagChunks())
                file.remove(toVector(chunk));
            return true;
        }
        for (const AudioFieldChange& c : edit.changes) {
            if (const char* chunk = audioFieldRow(c.field).aiff) {
                file.remove(chunk);
                if (!c.after.isEmpty())
                    file.set(chunk, toVector(chunkText(c.after)));
            }
        }
        return file.save(editId3Tag(file.tag(), edit));
    }
};

}  // namespace

std::unique_ptr<AudioTagWriter> aiffTagWriter() { return std::make_unique<AiffTagWriter>(); }

}  // namespace pelorin
