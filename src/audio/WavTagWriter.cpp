#include "audio/ContainerTagWriters.h"
#include "audio/AudioTagChanges.h"
#include "audio/Id3TagEdits.h"
#include "audio/TagLibFiles.h"
#include "audio/TagLibTagWriter.h"
#include "audio/WavTagRemoval.h"

#include <taglib/infotag.h>

#include <QFile>
#include <QtEndian>

namespace pelorin {
namespace {

using namespace taglib;

void setInfoFields(TagLib::RIFF::Info::Tag* info, const QList<AudioFieldChange>& changes)
{
    for (const AudioFieldChange& c : changes) {
        const char* id = audioFieldRow(c.field).riff;
        if (!id)
            continue;
        if (c.after.isEmpty())
            info->removeField(id);
        else if (c.field == AudioField::TrackNumber)
            info->setFieldText(id, toTString(trackTextKeepingTotal(toQString(info->fieldText(id)), c.after)));
        else
            info->setFieldText(id, toTString(c.after));
    }
}

// TagLib names a WAV's tag chunk "ID3 "; exiftool and other readers look for "id3 ", the name
// most files use, so the chunk takes that name.
bool renameId3Chunk(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        return false;
    const qint64 size = file.size();
    qint64 offset = 12;
    while (offset + 8 <= size) {
        if (!file.seek(offset))
            return false;
        const QByteArray header = file.read(8);
        if (header.size() != 8)
            return false;
        if (header.startsWith("ID3 "))
            return file.seek(offset) && file.write("id3 ", 4) == 4;
        const quint32 length = qFromLittleEndian<quint32>(header.constData() + 4);
        offset += 8 + qint64(length) + (length & 1);
    }
    return true;
}

// WAV: the RIFF INFO list and the ID3 chunk; a removal drops the descriptive chunks as well.
class WavTagWriter final : public TagLibTagWriter {
public:
    WavTagWriter() : TagLibTagWriter(AudioContainer::Wav) {}

protected:
    bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const override
    {
        WavChunkFile file(stream);
        if (!readable(file, problem))
            return false;
        if (edit.removeAll) {
            file.strip();
            removeWavDescriptiveChunks(file);
            return true;
        }
        setInfoFields(file.InfoTag(), edit.changes);
        const TagLib::ID3v2::Version version = editId3Tag(file.ID3v2Tag(), edit);
        return file.save(TagLib::RIFF::WAV::File::AllTags, TagLib::File::StripNone, version);
    }

    bool finish(const QString& copyPath) const override { return renameId3Chunk(copyPath); }
};

}  // namespace

std::unique_ptr<AudioTagWriter> wavTagWriter() { return std::make_unique<WavTagWriter>(); }

}  // namespace pelorin
