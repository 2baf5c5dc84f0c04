#include "cli/StampDatesCommand.h"

#include "cli/CliOutput.h"
#include "model/Preferences.h"
#include "photo/PhotoDateStamp.h"

#include <QFileInfo>

namespace pelorin::cli {
namespace {

// The item of a pop-up's list that the text names, letter case ignored.
std::optional<QString> itemNamed(const QStringList& items, const QString& text)
{
    for (const QString& item : items) {
        if (item.compare(text.trimmed(), Qt::CaseInsensitive) == 0)
            return item;
    }
    return std::nullopt;
}

}  // namespace

QString StampDatesCommand::summary() const
{
    return QStringLiteral("draw the capture date onto photos (small JPEG copies)");
}

QString StampDatesCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli stamp [--font FAMILY] [--size N] [--color #RRGGBB] [--corner CORNER]\n"
        "                         [--format FORMAT] [--camera] FILE...\n"
        "\n"
        "Draws each photo's capture date (DateTimeOriginal, else DateTimeDigitized, in EXIF or\n"
        "else in XMP, else the file's modification date) onto the upright picture and writes a\n"
        "small JPEG copy <name>_date.<ext> with the photo's metadata and colour profile into\n"
        "the output folder. The style defaults to the preferences (see pelorin-cli prefs).\n"
        "  --size N      text height in pixels for a picture whose shorter side is 1000 pixels\n"
        "  --corner      Upper left corner, Upper right corner, Lower left corner or\n"
        "                Lower right corner\n"
        "  --format      MM/DD/YYYY HH:MM, DD/MM/YYYY HH:MM or YYYY/MM/DD HH:MM");
}

int StampDatesCommand::run(CliInvocation& invocation)
{
    DateStampStyle style = stampStyleFromPreferences(Preferences().peek());
    PhotoSelection selection;
    const QStringList& args = invocation.args;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        const bool takesValue = arg == QLatin1String("--font") || arg == QLatin1String("--size")
                                || arg == QLatin1String("--color") || arg == QLatin1String("--corner")
                                || arg == QLatin1String("--format");
        if (takesValue && i + 1 >= args.size())
            return usageError(invocation, name(), QStringLiteral("%1 needs a value").arg(arg));
        if (arg == QLatin1String("--font")) {
            style.fontFamily = args[++i];
        } else if (arg == QLatin1String("--size")) {
            bool ok = false;
            style.fontSize = args[++i].toInt(&ok);
            if (!ok || style.fontSize <= 0 || style.fontSize > 1000)
                return usageError(invocation, name(), QStringLiteral("the size must be a whole number from 1 to 1000"));
        } else if (arg == QLatin1String("--color")) {
            style.color = QColor::fromString(args[++i]);
            if (!style.color.isValid())
                return usageError(invocation, name(), QStringLiteral("'%1' is no colour").arg(args[i]));
        } else if (arg == QLatin1String("--corner")) {
            const auto corner = itemNamed(stampCornerTitles(), args[++i]);
            if (!corner)
                return usageError(invocation, name(), QStringLiteral("unknown corner '%1'").arg(args[i]));
            style.corner = *corner;
        } else if (arg == QLatin1String("--format")) {
            const auto format = itemNamed(stampDateFormatTitles(), args[++i]);
            if (!format)
                return usageError(invocation, name(), QStringLiteral("unknown format '%1'").arg(args[i]));
            style.dateFormat = *format;
        } else if (arg == QLatin1String("--camera")) {
            selection.source = PhotoSource::Camera;
        } else if (arg.startsWith(QLatin1String("--"))) {
            return usageError(invocation, name(), QStringLiteral("unknown option '%1'").arg(arg));
        } else {
            selection.items << itemFromArgument(arg);
        }
    }
    if (selection.items.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    CliReporter reporter(invocation);
    return reporter.report(stampPhotoDates(selection, style, reporter.context()));
}

}  // namespace pelorin::cli
