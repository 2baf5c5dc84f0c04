#include "audio/AudioReadBack.h"

#include "audio/AudioPayload.h"

#include <QFileInfo>

namespace pelorin {
namespace {

const QString kSampleRate = QStringLiteral("kMDItemAudioSampleRate");
const QString kChannels = QStringLiteral("kMDItemAudioChannelCount");
const QString kDuration = QStringLiteral("kMDItemDurationSeconds");
const QString kBitRate = QStringLiteral("kMDItemAudioBitRate");

// A format header alone (a FLAC STREAMINFO, Vorbis header pages) names a rate and channels
// and may even give a bit rate or a length; only audio behind it gives both.
bool hasAudio(const QVariantMap& attributes)
{
    return attributes.value(kSampleRate).toInt() > 0 && attributes.value(kChannels).toInt() > 0
           && attributes.value(kBitRate).toLongLong() > 0 && attributes.value(kDuration).toDouble() > 0;
}

}  // namespace

QString audioReadBackProblem(const QString& outputPath, const QString& sourcePath, const AudioReading& source)
{
    const QString name = audioContainerName(source.container);
    if (QFileInfo(outputPath).size() <= 0)
        return QStringLiteral("the %1 output would be empty; nothing was written").arg(name);
    const AudioReading back = readAudioItems(outputPath);
    if (back.container != source.container)
        return QStringLiteral("the output does not read back as a %1 file; nothing was written").arg(name);
    if (!back.problem.isEmpty())
        return QStringLiteral("the output does not read back (%1); nothing was written").arg(back.problem);
    if (!hasAudio(back.indexAttributes))
        return QStringLiteral("the %1 file holds no audio frames; nothing was written").arg(name);
    const QVariantMap& before = source.indexAttributes;
    const QVariantMap& after = back.indexAttributes;
    if (hasAudio(before)
        && (before.value(kSampleRate) != after.value(kSampleRate) || before.value(kChannels) != after.value(kChannels)))
        return QStringLiteral("the output's audio differs from the source's; nothing was written");
    return audioPayloadDifference(sourcePath, outputPath, source.container);
}

}  // namespace pelorin
