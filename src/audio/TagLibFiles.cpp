#include "audio/TagLibFiles.h"

#include <taglib/apefile.h>
#include <taglib/asffile.h>
#include <taglib/flacfile.h>
#include <taglib/mp4file.h>
#include <taglib/mpcfile.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/speexfile.h>
#include <taglib/trueaudiofile.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/wavpackfile.h>

#include <QStringDecoder>

namespace pelorin::taglib {

std::unique_ptr<TagLib::File> openFile(AudioContainer container, TagLib::IOStream* stream)
{
    using namespace TagLib;
    switch (container) {
    case AudioContainer::Mpeg: return std::make_unique<MPEG::File>(stream, ID3v2::FrameFactory::instance());
    case AudioContainer::Flac: return std::make_unique<FLAC::File>(stream, ID3v2::FrameFactory::instance());
    case AudioContainer::Wav: return std::make_unique<WavChunkFile>(stream);
    case AudioContainer::Aiff: return std::make_unique<AiffChunkFile>(stream);
    case AudioContainer::Mp4: return std::make_unique<MP4::File>(stream);
    case AudioContainer::OggVorbis: return std::make_unique<Ogg::Vorbis::File>(stream);
    case AudioContainer::OggOpus: return std::make_unique<Ogg::Opus::File>(stream);
    case AudioContainer::OggFlac: return std::make_unique<Ogg::FLAC::File>(stream);
    case AudioContainer::OggSpeex: return std::make_unique<Ogg::Speex::File>(stream);
    case AudioContainer::Asf: return std::make_unique<ASF::File>(stream);
    case AudioContainer::Ape: return std::make_unique<APE::File>(stream);
    case AudioContainer::WavPack: return std::make_unique<WavPack::File>(stream);
    case AudioContainer::Mpc: return std::make_unique<MPC::File>(stream);
    case AudioContainer::TrueAudio: return std::make_unique<TrueAudio::File>(stream);
    case AudioContainer::Caf:
    case AudioContainer::Unknown: break;
    }
    return nullptr;
}

QString decodeChunkText(const QByteArray& bytes)
{
    QByteArray text = bytes;
    while (text.endsWith('\0'))
        text.chop(1);
    auto decoder = QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString utf8 = decoder(text);
    return decoder.hasError() ? QString::fromLatin1(text) : utf8;
}

}  // namespace pelorin::taglib
