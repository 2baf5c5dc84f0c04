#include "cli/PrefsCommand.h"

#include "cli/CliOutput.h"
#include "model/Preferences.h"
#include "model/SafeOutput.h"

#include <QJsonObject>

namespace pelorin::cli {

QString PrefsCommand::summary() const
{
    return QStringLiteral("show the preferences, or set one");
}

QString PrefsCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli prefs\n"
        "       pelorin-cli prefs set KEY VALUE\n"
        "\n"
        "Without arguments, prints every preference with its value; values that have never\n"
        "been stored are marked '(default)'.\n"
        "\n"
        "Keys:\n"
        "  storagePath  the folder every command writes its output into (created when set)\n"
        "  fontName     font family of the date stamp\n"
        "  fontsize     font size of the date stamp, in points\n"
        "  Postion      corner of the date stamp: Upper left corner, Upper right corner,\n"
        "               Lower left corner or Lower right corner (any letter case)\n"
        "  Dateformat   date format of the stamp: MM/DD/YYYY HH:MM, DD/MM/YYYY HH:MM or\n"
        "               YYYY/MM/DD HH:MM");
}

int PrefsCommand::run(CliInvocation& invocation)
{
    if (invocation.args.isEmpty())
        return show(invocation);
    if (invocation.args.first() == QLatin1String("set"))
        return set(invocation);
    return usageError(invocation, name(),
                      QStringLiteral("unknown argument '%1'").arg(invocation.args.first()));
}

int PrefsCommand::show(CliInvocation& invocation)
{
    Preferences preferences;
    const PreferenceValues values = preferences.peek();
    const QList<std::pair<QString, QString>> rows = {
        {PreferenceKey::StoragePath, values.storagePath},
        {PreferenceKey::FontName, values.fontName},
        {PreferenceKey::FontSize, QString::number(values.fontSize)},
        {PreferenceKey::Position, values.cornerTitle},
        {PreferenceKey::DateFormat, values.dateFormatTitle},
    };
    if (invocation.json) {
        QJsonObject object;
        for (const auto& [key, value] : rows) {
            if (key == PreferenceKey::FontSize)
                object.insert(key, values.fontSize);
            else
                object.insert(key, value);
        }
        printJson(invocation.out, object);
        return ExitSuccess;
    }
    for (const auto& [key, value] : rows) {
        const QString marker = preferences.isStored(key) ? QString() : QStringLiteral("  (default)");
        printLine(invocation.out, QStringLiteral("%1\t%2%3").arg(key, value, marker));
    }
    return ExitSuccess;
}

int PrefsCommand::set(CliInvocation& invocation)
{
    if (invocation.args.size() != 3)
        return usageError(invocation, name(), QStringLiteral("'set' takes a key and a value"));
    const QString key = invocation.args.at(1);
    const QString value = invocation.args.at(2);
    Preferences preferences;
    QString error;
    if (!preferences.setFromText(key, value, &error))
        return usageError(invocation, name(), error);
    if (key == PreferenceKey::StoragePath) {
        const QString folder = preferences.storagePath();
        if (!ensureFolder(folder, &error)) {
            printLine(invocation.err, QStringLiteral("pelorin-cli prefs: %1").arg(error));
            return ExitItemFailed;
        }
    }
    return show(invocation);
}

}  // namespace pelorin::cli
