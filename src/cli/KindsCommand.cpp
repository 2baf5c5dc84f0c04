#include "cli/KindsCommand.h"

#include "cli/CliOutput.h"
#include "model/FileKinds.h"

#include <QJsonArray>
#include <QJsonObject>

namespace pelorin::cli {
namespace {

struct KindName {
    FileKindList list;
    const char* name;
};

// The order in which kinds are named when an extension has several.
constexpr KindName kKinds[] = {
    {FileKindList::Image, "image"},
    {FileKindList::Raw, "raw"},
    {FileKindList::Video, "video"},
    {FileKindList::Audio, "audio"},
};

}  // namespace

QString KindsCommand::summary() const
{
    return QStringLiteral("tell the kind of file each extension names");
}

QString KindsCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli kinds EXT...\n"
        "\n"
        "Prints one line per extension: the extension, its kind (image, raw, video, audio, or\n"
        "none; an extension in several lists names them all, joined by '+'), then its position\n"
        "in each list that holds it, counting from 0. Letter case does not matter; the whole\n"
        "extension is compared, so 'ts.bak' names no kind.");
}

int KindsCommand::run(CliInvocation& invocation)
{
    if (invocation.args.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one extension"));
    QJsonArray rows;
    for (const QString& extension : invocation.args) {
        QStringList kinds;
        QStringList positions;
        QJsonObject positionObject;
        for (const KindName& kind : kKinds) {
            const int position = kindPosition(kind.list, extension);
            if (position < 0)
                continue;
            const QString kindName = QString::fromLatin1(kind.name);
            kinds << kindName;
            positions << QStringLiteral("%1 %2").arg(kindName).arg(position);
            positionObject.insert(kindName, position);
        }
        if (invocation.json) {
            rows.append(QJsonObject{{QStringLiteral("extension"), extension},
                                    {QStringLiteral("kinds"), QJsonArray::fromStringList(kinds)},
                                    {QStringLiteral("positions"), positionObject}});
        } else {
            const QString kindText = kinds.isEmpty() ? QStringLiteral("none")
                                                     : kinds.join(QLatin1Char('+'));
            QString line = extension + QLatin1Char('\t') + kindText;
            if (!positions.isEmpty())
                line += QLatin1Char('\t') + positions.join(QStringLiteral(", "));
            printLine(invocation.out, line);
        }
    }
    if (invocation.json)
        printJson(invocation.out, rows);
    return ExitSuccess;
}

}  // namespace pelorin::cli
