#include "video/MovieRemux.h"

#include "model/SafeOutput.h"
#include "video/FfmpegInput.h"
#include "video/RemuxReadBack.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
}

#include <memory>

namespace pelorin {

namespace {

struct OutputCloser {
    void operator()(AVFormatContext* context) const
    {
        if (context->pb)
            ffmpeg().avio_closep(&context->pb);
        ffmpeg().avformat_free_context(context);
    }
};

struct PacketFree {
    void operator()(AVPacket* packet) const { ffmpeg().av_packet_free(&packet); }
};

// The muxer that writes the source's own container again; null when none keeps tags.
const char* muxerFor(const AVFormatContext* input, const QString& path)
{
    if (!QByteArray(input->iformat->name).contains("matroska"))
        return nullptr;
    return QFileInfo(path).suffix().compare(QLatin1String("webm"), Qt::CaseInsensitive) == 0 ? "webm" : "matroska";
}

// Copies the streams into a file of the same container; false with the reason. The packets
// come from input; each stream's parameters from described, the same file opened without
// FFmpeg's probing, so that the output says what the source's container said: no field order,
// aspect, frame rate or sample format that FFmpeg found by decoding (the muxer writes each).
bool remuxInto(AVFormatContext* input, const AVFormatContext* described, const char* muxer, AVDictionary* tags,
               const QString& output, QString* error)
{
    if (described->nb_streams != input->nb_streams) {
        *error = QStringLiteral("FFmpeg finds streams the container does not describe");
        return false;
    }
    AVFormatContext* raw = nullptr;
    const QByteArray outputName = QFile::encodeName(output);
    int status = ffmpeg().avformat_alloc_output_context2(&raw, nullptr, muxer, outputName.constData());
    if (status < 0) {
        *error = ffmpegError(status);
        return false;
    }
    std::unique_ptr<AVFormatContext, OutputCloser> out(raw);
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        AVStream* stream = ffmpeg().avformat_new_stream(out.get(), nullptr);
        const AVStream* own = described->streams[i];
        if (!stream || ffmpeg().avcodec_parameters_copy(stream->codecpar, own->codecpar) < 0) {
            *error = QStringLiteral("stream %1 cannot be copied").arg(i);
            return false;
        }
        stream->codecpar->codec_tag = 0;
        // How far decoding runs ahead of display: the muxer checks the packets' times by it.
        stream->codecpar->video_delay = input->streams[i]->codecpar->video_delay;
        stream->time_base = input->streams[i]->time_base;
        stream->disposition = input->streams[i]->disposition;
        // Matroska's DefaultDuration and display size: the muxer writes them from these.
        stream->avg_frame_rate = own->avg_frame_rate;
        stream->sample_aspect_ratio = own->sample_aspect_ratio;
        ffmpeg().av_dict_copy(&stream->metadata, input->streams[i]->metadata, 0);
    }
    if (input->nb_chapters > 0) {
        out->chapters = static_cast<AVChapter**>(ffmpeg().av_calloc(input->nb_chapters, sizeof(AVChapter*)));
        if (!out->chapters) {
            *error = QStringLiteral("out of memory");
            return false;
        }
        for (unsigned i = 0; i < input->nb_chapters; ++i) {
            const AVChapter* source = input->chapters[i];
            auto* chapter = static_cast<AVChapter*>(ffmpeg().av_mallocz(sizeof(AVChapter)));
            if (!chapter) {
                *error = QStringLiteral("out of memory");
                return false;
            }
            chapter->id = source->id;
            chapter->time_base = source->time_base;
            chapter->start = source->start;
            chapter->end = source->end;
            ffmpeg().av_dict_copy(&chapter->metadata, source->metadata, 0);
            out->chapters[out->nb_chapters++] = chapter;
        }
    }
    ffmpeg().av_dict_copy(&out->metadata, tags, 0);
    if ((status = ffmpeg().avio_open(&out->pb, outputName.constData(), AVIO_FLAG_WRITE)) < 0
        || (status = ffmpeg().avformat_write_header(out.get(), nullptr)) < 0) {
        *error = ffmpegError(status);
        return false;
    }
    std::unique_ptr<AVPacket, PacketFree> packet(ffmpeg().av_packet_alloc());
    while ((status = ffmpeg().av_read_frame(input, packet.get())) >= 0) {
        const AVStream* from = input->streams[packet->stream_index];
        const AVStream* to = out->streams[packet->stream_index];
        ffmpeg().av_packet_rescale_ts(packet.get(), from->time_base, to->time_base);
        packet->pos = -1;
        status = ffmpeg().av_interleaved_write_frame(out.get(), packet.get());
        if (status < 0) {
            *error = ffmpegError(status);
            return false;
        }
    }
    if (status != AVERROR_EOF) {
        *error = QStringLiteral("the media data cannot be read: %1").arg(ffmpegError(status));
        return false;
    }
    if ((status = ffmpeg().av_write_trailer(out.get())) < 0) {
        *error = ffmpegError(status);
        return false;
    }
    return true;
}

}  // namespace

bool canRemuxWithTags(const QString& path)
{
    if (!ffmpegLibrary())
        return false;
    AVFormatContext* raw = nullptr;
    if (ffmpeg().avformat_open_input(&raw, QFile::encodeName(path).constData(), nullptr, nullptr) < 0)
        return false;
    std::unique_ptr<AVFormatContext, InputCloser> input(raw);
    return muxerFor(input.get(), path) != nullptr;
}

RewriteReport remuxWithTags(const QString& sourcePath, const QList<ContainerTagChange>& changes,
                            const QString& targetPath, bool removeOthers, Durability durability)
{
    RewriteReport report;
    if (isSameFile(sourcePath, targetPath)) {
        report.error = QStringLiteral("the output would replace the source");
        return report;
    }
    const MovieInput input = openMovieInput(sourcePath, &report.error);
    const MovieInput described = input ? openContainerInput(sourcePath, &report.error) : nullptr;
    if (!described)
        return report;
    const char* muxer = muxerFor(input.get(), sourcePath);
    if (!muxer) {
        report.error = QStringLiteral("tags of the '%1' container cannot be written").arg(QString::fromUtf8(input->iformat->name));
        return report;
    }

    AVDictionary* tags = nullptr;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = ffmpeg().av_dict_get(input->metadata, "", entry, AV_DICT_IGNORE_SUFFIX))) {
        if (!removeOthers || QByteArray(entry->key).compare("encoder", Qt::CaseInsensitive) == 0)
            ffmpeg().av_dict_set(&tags, entry->key, entry->value, 0);
    }
    for (const auto& [key, value] : changes) {
        // Matroska tag names differ in case between writers ("ARTIST", "artist"): drop them all.
        QList<QByteArray> existing;
        entry = nullptr;
        while ((entry = ffmpeg().av_dict_get(tags, "", entry, AV_DICT_IGNORE_SUFFIX))) {
            if (QString::fromUtf8(entry->key).compare(key, Qt::CaseInsensitive) == 0)
                existing.append(entry->key);
        }
        for (const QByteArray& name : existing)
            ffmpeg().av_dict_set(&tags, name.constData(), nullptr, 0);
        if (value)
            ffmpeg().av_dict_set(&tags, key.toUtf8().constData(), value->toUtf8().constData(), 0);
    }

    // FFmpeg writes and seeks in a file of its own beside the target; the finished file then
    // takes the target's name through the safe writer.
    QTemporaryDir scratch(QFileInfo(targetPath).absolutePath() + QStringLiteral("/.pelorin-remux-XXXXXX"));
    const QString temporary = scratch.filePath(QFileInfo(targetPath).fileName());
    const bool remuxed = scratch.isValid() && remuxInto(input.get(), described.get(), muxer, tags, temporary, &report.error);
    ffmpeg().av_dict_free(&tags);
    if (!remuxed) {
        if (report.error.isEmpty())
            report.error = QStringLiteral("no scratch space beside the target");
        return report;
    }
    if (const QString problem = verifyFinishedOutput(
            temporary, [&](const QString& pending) { return remuxReadBackProblem(sourcePath, pending); });
        !problem.isEmpty()) {
        report.error = verificationFailed(problem);
        return report;
    }
    QString error;
    if (!copyFileAtomically(temporary, targetPath, &error, durability)) {
        report.error = error;
        return report;
    }
    report.written = true;
    return report;
}

}  // namespace pelorin
