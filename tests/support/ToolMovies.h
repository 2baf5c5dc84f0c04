#pragma once
// Movies and songs made at test time by FFmpeg, and what ffprobe, an independent reader, finds
// in them.
#include <QMap>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace pelorin::test {

// Runs ffmpeg with a one-second test picture (and tone, when audio is asked for) and the extra
// arguments before the output path; true when the file was made.
inline bool makeFfmpegFile(const QString& path, const QStringList& extra, bool video = true, bool audio = false)
{
    QStringList args = {QStringLiteral("-y"), QStringLiteral("-v"), QStringLiteral("error")};
    if (video)
        args += {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                 QStringLiteral("testsrc=size=64x48:rate=5")};
    if (audio)
        args += {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), QStringLiteral("sine")};
    args += {QStringLiteral("-t"), QStringLiteral("1")};
    if (video)
        args += {QStringLiteral("-c:v"), QStringLiteral("mpeg4")};
    if (audio)
        args += {QStringLiteral("-c:a"), QStringLiteral("aac")};
    args += extra;
    args.append(path);
    return QProcess::execute(QStringLiteral("ffmpeg"), args) == 0;
}

// The container tags ffprobe reads, by name.
inline QMap<QString, QString> ffprobeTags(const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("ffprobe"),
                  {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                   QStringLiteral("format_tags"), QStringLiteral("-of"), QStringLiteral("flat=s=|"), path});
    process.waitForFinished(60000);
    QMap<QString, QString> tags;
    for (const QString& line : QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'))) {
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (!line.startsWith(QLatin1String("format|tags|")) || eq < 0)
            continue;
        QString value = line.mid(eq + 1);
        if (value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"')))
            value = value.mid(1, value.size() - 2);
        tags.insert(line.mid(12, eq - 12), value);
    }
    return tags;
}

// FFmpeg's hash of every stream's packets, copied without decoding.
inline QByteArray streamHash(const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                                             QStringLiteral("-map"), QStringLiteral("0"), QStringLiteral("-c"),
                                             QStringLiteral("copy"), QStringLiteral("-f"), QStringLiteral("streamhash"),
                                             QStringLiteral("-")});
    process.waitForFinished(60000);
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

}  // namespace pelorin::test
