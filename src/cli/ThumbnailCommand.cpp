#include "cli/ThumbnailCommand.h"

#include "cli/CliOutput.h"
#include "model/ImageReadBack.h"
#include "model/SafeOutput.h"
#include "photo/PhotoThumbnails.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonObject>

namespace pelorin::cli {
namespace {

constexpr int kMaxSize = 10000;

struct ThumbnailArgs {
    QString file;
    QString out;
    int size = 0;
};

// Accepts "--name value" and "--name=value"; answers false when the option is not this one.
bool takeOption(const QStringList& args, qsizetype& i, const QString& name, QString* value,
                QString* problem)
{
    const QString& arg = args[i];
    if (arg.startsWith(name + QLatin1Char('='))) {
        *value = arg.mid(name.size() + 1);
        return true;
    }
    if (arg != name)
        return false;
    if (i + 1 >= args.size())
        *problem = QStringLiteral("%1 needs a value").arg(name);
    else
        *value = args[++i];
    return true;
}

QString parse(const QStringList& args, ThumbnailArgs* parsed)
{
    QString sizeText;
    QString problem;
    for (qsizetype i = 0; i < args.size() && problem.isEmpty(); ++i) {
        if (takeOption(args, i, QStringLiteral("--size"), &sizeText, &problem)
            || takeOption(args, i, QStringLiteral("--out"), &parsed->out, &problem))
            continue;
        if (args[i].startsWith(QLatin1String("--")) && args[i].size() > 2)
            return QStringLiteral("unknown option '%1'").arg(args[i]);
        if (!parsed->file.isEmpty())
            return QStringLiteral("give one file only");
        parsed->file = args[i];
    }
    if (!problem.isEmpty())
        return problem;
    if (parsed->file.isEmpty())
        return QStringLiteral("give the photo to make a thumbnail of");
    bool ok = false;
    parsed->size = sizeText.toInt(&ok);
    if (sizeText.isEmpty())
        return QStringLiteral("give the thumbnail size with --size N");
    if (!ok || parsed->size < 1 || parsed->size > kMaxSize)
        return QStringLiteral("the size must be a whole number from 1 to %1").arg(kMaxSize);
    if (parsed->out.isEmpty())
        return QStringLiteral("give the output file with --out PNG");
    // The output holds PNG data, so its name must say so.
    if (!parsed->out.endsWith(QLatin1String(".png"), Qt::CaseInsensitive))
        return QStringLiteral("the output file name must end in .png");
    return {};
}

}  // namespace

QString ThumbnailCommand::summary() const
{
    return QStringLiteral("write a photo's thumbnail as a PNG file");
}

QString ThumbnailCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli thumbnail FILE --size N --out PNG\n"
        "\n"
        "Makes the thumbnail the photo browser shows for FILE: upright, at most N pixels on its\n"
        "longer side (1 to 10000), the aspect kept. An embedded preview is used when it is big\n"
        "enough, else the image is decoded. HEIC, HEIF and AVIF are recognised by content.\n"
        "The thumbnail is written to PNG (a name ending in .png, relative to the current folder;\n"
        "its folder is created when missing) and its path is printed; with --json, an object\n"
        "with path, width and height. FILE is never changed.\n"
        "\n"
        "Exit status: 1 when FILE cannot be read or the output cannot be written.");
}

int ThumbnailCommand::run(CliInvocation& invocation)
{
    ThumbnailArgs args;
    const QString problem = parse(invocation.args, &args);
    if (!problem.isEmpty())
        return usageError(invocation, name(), problem);

    const QString target = QDir::cleanPath(QDir::current().absoluteFilePath(args.out));
    const auto failed = [&](const QString& path, const QString& reason) {
        printLine(invocation.err,
                  QStringLiteral("pelorin-cli %1: %2: %3").arg(name(), path, reason));
        return int(ExitItemFailed);
    };
    QString error;
    const QImage thumbnail = makePhotoThumbnail(args.file, args.size, &error);
    if (thumbnail.isNull())
        return failed(args.file, error);

    QByteArray png;
    QBuffer buffer(&png);
    if (!buffer.open(QIODevice::WriteOnly) || !thumbnail.save(&buffer, "PNG"))
        return failed(args.file, QStringLiteral("cannot encode the thumbnail as PNG"));
    if (!ensureFolder(QFileInfo(target).absolutePath(), &error)
        || !writeFileAtomically(target, png, args.file, &error, Durability::FlushEach,
                                [&thumbnail](const QString& pending) {
                                    return encodedImageProblem(pending, "PNG", thumbnail.size());
                                }))
        return failed(target, error);

    if (invocation.json) {
        printJson(invocation.out, QJsonObject{{QStringLiteral("path"), target},
                                              {QStringLiteral("width"), thumbnail.width()},
                                              {QStringLiteral("height"), thumbnail.height()}});
    } else {
        printLine(invocation.out, target);
    }
    return ExitSuccess;
}

}  // namespace pelorin::cli
