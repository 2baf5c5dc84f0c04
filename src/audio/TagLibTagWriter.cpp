#include "audio/TagLibTagWriter.h"

#include "audio/AudioScratchCopy.h"
#include "audio/CheckedFileStream.h"
#include "audio/Id3EmptyFrames.h"

namespace pelorin {

QString TagLibTagWriter::damage(const QString&) const { return {}; }

bool TagLibTagWriter::finish(const QString&) const { return true; }

bool TagLibTagWriter::readable(const TagLib::File& file, QString* problem) const
{
    if (file.isValid())
        return true;
    *problem = QStringLiteral("TagLib cannot read this %1 file").arg(audioContainerName(container_));
    return false;
}

bool TagLibTagWriter::write(const QString& source, const QString& target, const AudioTagEdit& tagEdit,
                            const OutputCheck& check, Durability durability, QString* problem) const
{
    if (const QString damaged = damage(source); !damaged.isEmpty()) {
        *problem = QStringLiteral("the file is damaged (%1); nothing was written").arg(damaged);
        return false;
    }
    AudioScratchCopy copy(source, target, durability);
    if (!copy.create() || !dropEmptyId3Frames(copy.path(), container_)) {
        *problem = copy.error().isEmpty() ? QStringLiteral("cannot write the copy") : copy.error();
        return false;
    }
    bool saved = false;
    {
        CheckedFileStream stream(copy.path());
        saved = edit(&stream, tagEdit, problem);
        if (stream.writeError() != 0) {
            *problem = QStringLiteral("cannot write the tags: %1").arg(writeErrorText(stream.writeError()));
            return false;
        }
    }
    if (!saved) {
        if (problem->isEmpty())
            *problem = QStringLiteral("TagLib could not save the tags");
        return false;
    }
    if (!finish(copy.path()) || !copy.commit(check)) {
        *problem = copy.error().isEmpty() ? QStringLiteral("cannot finish the copy") : copy.error();
        return false;
    }
    return true;
}

}  // namespace pelorin
