#include "audio/AudioTagWriter.h"

#include "audio/ContainerTagWriters.h"

#include <QMimeDatabase>

namespace pelorin {

std::unique_ptr<AudioTagWriter> audioTagWriterFor(AudioContainer container, bool mp4QuickTimeKeys)
{
    switch (container) {
    case AudioContainer::Mpeg: return mpegTagWriter();
    case AudioContainer::Flac: return flacTagWriter();
    case AudioContainer::Wav: return wavTagWriter();
    case AudioContainer::Aiff: return aiffTagWriter();
    case AudioContainer::Caf: return cafTagWriter();
    case AudioContainer::Mp4: return mp4QuickTimeKeys ? mp4KeyTagWriter() : mp4TagWriter();
    case AudioContainer::OggVorbis:
    case AudioContainer::OggOpus:
    case AudioContainer::OggFlac:
    case AudioContainer::OggSpeex: return oggTagWriter(container);
    case AudioContainer::Asf: return asfTagWriter();
    case AudioContainer::Ape:
    case AudioContainer::WavPack:
    case AudioContainer::Mpc:
    case AudioContainer::TrueAudio: return propertyTagWriter(container);
    case AudioContainer::Unknown: break;
    }
    return nullptr;
}

QString artworkMimeType(const QByteArray& image)
{
    return QMimeDatabase().mimeTypeForData(image).name();
}

}  // namespace pelorin
