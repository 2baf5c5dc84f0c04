#include "cli/GpsCommand.h"

#include "cli/CliOutput.h"
#include "cli/CliValues.h"
#include "cli/SetDateCommand.h"
#include "dates/GpsSave.h"
#include "photo/PhotoProperties.h"

#include <QJsonObject>

namespace pelorin::cli {
namespace {

// A stored magnitude with its reference letter (or 1 for below sea level) as a signed number.
double signedValue(const QVariantMap& gps, const QString& key, const QString& refKey, const QString& negativeRef)
{
    const double magnitude = gps.value(key).toDouble();
    const QString ref = gps.value(refKey).toString().trimmed();
    return ref.compare(negativeRef, Qt::CaseInsensitive) == 0 ? -magnitude : magnitude;
}

// Degrees come back from rationals with noise in the last digits; ten are more than enough.
QString number(double value) { return QString::number(value, 'g', 10); }
double rounded(double value) { return number(value).toDouble(); }

}  // namespace

QString GpsCommand::summary() const
{
    return QStringLiteral("write copies of photos with a new location, or show a photo's");
}

QString GpsCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli gps set --lat X --lon Y --alt Z [--date YYYY:MM:DD --time HH:MM:SS]\n"
        "                           [--camera] FILE...\n"
        "       pelorin-cli gps show [--camera] FILE\n"
        "\n"
        "set writes a copy of each photo into the output folder whose whole GPS group is\n"
        "replaced: latitude X (south negative), longitude Y (west negative), altitude Z metres\n"
        "(below sea level negative), and the GPS date and time stamps. When the date and time\n"
        "make a date, both file dates of the copy become it in the local time zone. With\n"
        "--camera, each FILE names a camera photo downloaded into the output folder; that copy\n"
        "is changed in place.\n"
        "show prints the signed latitude, longitude and altitude, the date and the time stamp.");
}

int GpsCommand::run(CliInvocation& invocation)
{
    const QString action = invocation.args.value(0);
    if (action == QLatin1String("set"))
        return set(invocation);
    if (action == QLatin1String("show"))
        return show(invocation);
    return usageError(invocation, name(), action.isEmpty() ? QStringLiteral("say set or show")
                                                           : QStringLiteral("unknown action '%1'").arg(action));
}

int GpsCommand::set(CliInvocation& invocation)
{
    const QString lat = QStringLiteral("--lat"), lon = QStringLiteral("--lon"), alt = QStringLiteral("--alt");
    const QString date = QStringLiteral("--date"), time = QStringLiteral("--time");
    const DateCommandArgs args = parseDateCommandArgs(invocation.args.mid(1), {lat, lon, alt, date, time},
                                                      {QStringLiteral("--camera")});
    if (!args.error.isEmpty())
        return usageError(invocation, name(), args.error);
    if (!args.has(lat) || !args.has(lon) || !args.has(alt))
        return usageError(invocation, name(), QStringLiteral("give --lat, --lon and --alt"));
    const std::pair<QString, ValueKind> checks[] = {{lat, ValueKind::Latitude}, {lon, ValueKind::Longitude},
                                                    {alt, ValueKind::Altitude}, {date, ValueKind::Date},
                                                    {time, ValueKind::Time}};
    for (const auto& [option, kind] : checks)
        if (const QString error = checkOptionValue(kind, option, args.value(option)); !error.isEmpty())
            return usageError(invocation, name(), error);
    if (args.files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    const GpsInput input{args.value(lat), args.value(lon), args.value(alt), args.value(date), args.value(time)};
    CliReporter reporter(invocation);
    return reporter.report(savePhotoGps(dateCommandSelection(args), input, reporter.context()));
}

int GpsCommand::show(CliInvocation& invocation)
{
    const DateCommandArgs args = parseDateCommandArgs(invocation.args.mid(1), {}, {QStringLiteral("--camera")});
    if (!args.error.isEmpty())
        return usageError(invocation, name(), args.error);
    if (args.files.size() != 1)
        return usageError(invocation, name(), QStringLiteral("give one file"));
    const IKImageItem item = dateCommandSelection(args).items.first();
    const QString path = args.flags.contains(QStringLiteral("--camera"))
                             ? invocation.outputFolder + QLatin1Char('/') + item.fileName
                             : item.filePath;
    const PhotoProperties read = readPhotoProperties(path);
    if (!read.ok()) {
        printLine(invocation.err, QStringLiteral("pelorin-cli gps: %1: %2").arg(path, read.error));
        return ExitItemFailed;
    }
    const QVariantMap gps = read.properties.value(QStringLiteral("{GPS}")).toMap();
    if (!gps.contains(QStringLiteral("Latitude")) || !gps.contains(QStringLiteral("Longitude"))) {
        printLine(invocation.err, QStringLiteral("No GPS Data: The selected photo does not contain GPS information."));
        return ExitItemFailed;
    }
    const double latitude = signedValue(gps, QStringLiteral("Latitude"), QStringLiteral("LatitudeRef"), QStringLiteral("S"));
    const double longitude = signedValue(gps, QStringLiteral("Longitude"), QStringLiteral("LongitudeRef"), QStringLiteral("W"));
    const double altitude = signedValue(gps, QStringLiteral("Altitude"), QStringLiteral("AltitudeRef"), QStringLiteral("1"));
    const QString dateStamp = gps.value(QStringLiteral("DateStamp")).toString();
    const QString timeStamp = gps.value(QStringLiteral("TimeStamp")).toString();
    if (invocation.json) {
        QJsonObject object{{QStringLiteral("file"), path},
                           {QStringLiteral("latitude"), rounded(latitude)},
                           {QStringLiteral("longitude"), rounded(longitude)},
                           {QStringLiteral("date"), dateStamp},
                           {QStringLiteral("time"), timeStamp}};
        if (gps.contains(QStringLiteral("Altitude")))
            object.insert(QStringLiteral("altitude"), rounded(altitude));
        printJson(invocation.out, object);
        return ExitSuccess;
    }
    printLine(invocation.out, QStringLiteral("latitude\t%1").arg(number(latitude)));
    printLine(invocation.out, QStringLiteral("longitude\t%1").arg(number(longitude)));
    if (gps.contains(QStringLiteral("Altitude")))
        printLine(invocation.out, QStringLiteral("altitude\t%1").arg(number(altitude)));
    printLine(invocation.out, QStringLiteral("date\t%1").arg(dateStamp));
    printLine(invocation.out, QStringLiteral("time\t%1").arg(timeStamp));
    return ExitSuccess;
}

}  // namespace pelorin::cli
