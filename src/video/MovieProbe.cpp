#include "video/MovieProbe.h"

#include "video/FfmpegInput.h"

#include <QFile>
#include <QMimeDatabase>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
}

#include <memory>

namespace pelorin {

namespace {

}  // namespace

MovieProbe probeMovie(const QString& path)
{
    MovieProbe probe;
    const QMimeType mime = QMimeDatabase().mimeTypeForFile(path);
    if (mime.isValid() && !mime.isDefault())
        probe.attributes.insert(QStringLiteral("kMDItemKind"), mime.comment());

    const MovieInput context = openMovieInput(path, &probe.error);
    if (!context)
        return probe;
    probe.opened = true;
    if (context->duration != AV_NOPTS_VALUE && context->duration > 0)
        probe.attributes.insert(QStringLiteral("kMDItemDurationSeconds"), double(context->duration) / AV_TIME_BASE);
    bool video = false;
    bool audio = false;
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVStream* stream = context->streams[i];
        const AVCodecParameters* codec = stream->codecpar;
        if (codec->codec_type == AVMEDIA_TYPE_VIDEO && !video && !(stream->disposition & AV_DISPOSITION_ATTACHED_PIC)
            && codec->width > 0 && codec->height > 0) {
            video = true;
            probe.attributes.insert(QStringLiteral("kMDItemPixelWidth"), codec->width);
            probe.attributes.insert(QStringLiteral("kMDItemPixelHeight"), codec->height);
        } else if (codec->codec_type == AVMEDIA_TYPE_AUDIO && !audio) {
            audio = true;
            if (codec->bit_rate > 0)
                probe.attributes.insert(QStringLiteral("kMDItemAudioBitRate"), qint64(codec->bit_rate));
            if (codec->sample_rate > 0)
                probe.attributes.insert(QStringLiteral("kMDItemAudioSampleRate"), codec->sample_rate);
            if (codec->ch_layout.nb_channels > 0)
                probe.attributes.insert(QStringLiteral("kMDItemAudioChannelCount"), codec->ch_layout.nb_channels);
        }
    }
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = ffmpeg().av_dict_get(context->metadata, "", tag, AV_DICT_IGNORE_SUFFIX))) {
        const QString key = QString::fromUtf8(tag->key);
        probe.tags.append({QStringLiteral("ffmpeg"), key, QStringLiteral("ffmpeg/") + key,
                           QString::fromUtf8(tag->value), QStringLiteral("UTF-8"), {}});
    }
    return probe;
}

}  // namespace pelorin
