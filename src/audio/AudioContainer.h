#pragma once
#include <QByteArray>
#include <QString>

namespace pelorin {

// The container an audio file really is, judged by its bytes: a file's name can lie, and a
// TagLib class opened on the wrong container may claim success and then damage it on save.
enum class AudioContainer {
    Unknown,
    Mpeg,       // MP3 and other MPEG audio, possibly behind ID3v2
    Flac,
    Wav,        // RIFF/WAVE
    Aiff,       // FORM/AIFF and FORM/AIFC
    Caf,
    Mp4,        // M4A, M4B, M4R, AAC/ALAC in MP4
    OggVorbis,
    OggOpus,
    OggFlac,
    OggSpeex,
    Asf,        // WMA
    Ape,
    WavPack,
    Mpc,
    TrueAudio,
};

// Detects the container from the first bytes of a file (header holds at least its first 64
// bytes when the file is that long).
AudioContainer detectAudioContainer(const QByteArray& header);
// Reads the start of the file and detects its container; Unknown for unreadable files.
AudioContainer detectAudioContainerOfFile(const QString& path, QString* problem = nullptr);

QString audioContainerName(AudioContainer container);

// Which reader the import uses for an extension: the WAV reader for wav, flac and au, the AIFF
// reader for aif, aiff and caf, the MP3 reader for every other audio kind.
enum class AudioReaderRoute { Wav, Aiff, Mp3 };
AudioReaderRoute audioReaderRoute(const QString& extension);

// What each container's writer can store.
struct AudioCapabilities {
    bool writeTags = false;
    bool writeArtwork = false;
};
AudioCapabilities audioCapabilities(AudioContainer container);
// Why songs of this container cannot take artwork, as both front ends say it; empty when they
// can, or when the container is unknown (the reading explains that).
QString audioArtworkRefusal(AudioContainer container);

}  // namespace pelorin
