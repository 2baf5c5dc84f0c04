#include "cli/CameraCommand.h"

#include "camera/CameraCommands.h"
#include "camera/CameraDevices.h"
#include "camera/CameraPaths.h"
#include "camera/CameraSession.h"
#include "cli/CliOutput.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>

#include <optional>

namespace pelorin::cli {
namespace {

struct CameraOptions {
    QString action;
    QString camera;  // --camera NAME
    QString port;    // --port PORT
    bool edit = false;
    QStringList files;
};

// Answers a usage message when the arguments are wrong.
std::optional<QString> parseOptions(const QStringList& args, CameraOptions& options)
{
    options.action = args.value(0);
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& arg = args[i];
        QString* value = nullptr;
        if (arg == QLatin1String("--camera") || arg.startsWith(QLatin1String("--camera=")))
            value = &options.camera;
        else if (arg == QLatin1String("--port") || arg.startsWith(QLatin1String("--port=")))
            value = &options.port;
        if (value) {
            const qsizetype equals = arg.indexOf(QLatin1Char('='));
            if (equals < 0 && i + 1 >= args.size())
                return QStringLiteral("%1 needs a value").arg(arg);
            *value = equals >= 0 ? arg.mid(equals + 1) : args[++i];
            if (value->isEmpty())
                return QStringLiteral("%1 cannot be empty").arg(arg.left(equals));
        } else if (arg == QLatin1String("--edit") && options.action == QLatin1String("download")) {
            options.edit = true;
        } else if (arg.startsWith(QLatin1String("--"))) {
            return QStringLiteral("unknown option '%1'").arg(arg);
        } else {
            options.files << arg;
        }
    }
    if (!options.camera.isEmpty() && !options.port.isEmpty())
        return QStringLiteral("give either --camera or --port, not both");
    return std::nullopt;
}

QString describeChoices(const QList<CameraDevice>& devices)
{
    if (devices.isEmpty())
        return QStringLiteral("no camera is connected (a folder opens as one with --port disk:/folder)");
    QStringList names;
    for (const CameraDevice& device : devices)
        names << QStringLiteral("%1 (%2)").arg(device.name, device.port);
    return QStringLiteral("connected: %1").arg(names.join(QStringLiteral(", ")));
}

// The camera the options name, or the only one connected; otherwise the exit status, after
// saying why.
std::optional<CameraDevice> chooseDevice(const CliInvocation& invocation, const CameraOptions& options,
                                         int& status)
{
    if (options.port.startsWith(QLatin1String("disk:"))) {
        const QString folder = options.port.mid(5);
        return directoryCamera(QDir::cleanPath(QDir(folder.isEmpty() ? QStringLiteral(".") : folder).absolutePath()));
    }
    QString error;
    const QList<CameraDevice> devices = detectCameras(&error);
    if (!error.isEmpty()) {
        printLine(invocation.err, QStringLiteral("pelorin-cli camera: %1").arg(error));
        status = ExitItemFailed;
        return std::nullopt;
    }
    QList<CameraDevice> matches;
    for (const CameraDevice& device : devices) {
        if ((options.camera.isEmpty() || device.name == options.camera)
            && (options.port.isEmpty() || device.port == options.port))
            matches << device;
    }
    if (matches.size() == 1)
        return matches.first();
    QString problem;
    if (!options.port.isEmpty())
        problem = QStringLiteral("no camera answers on %1").arg(options.port);
    else if (!options.camera.isEmpty() && matches.isEmpty())
        problem = QStringLiteral("no camera named '%1'").arg(options.camera);
    else if (matches.size() > 1)
        problem = QStringLiteral("several cameras match; choose one with --port");
    else if (!devices.isEmpty())
        problem = QStringLiteral("choose a camera with --camera or --port");
    const QString choices = describeChoices(devices);
    status = usageError(invocation, QStringLiteral("camera"),
                        problem.isEmpty() ? choices : QStringLiteral("%1; %2").arg(problem, choices));
    return std::nullopt;
}

std::unique_ptr<CameraSession> openChosen(const CliInvocation& invocation, const CameraOptions& options,
                                          int& status)
{
    const std::optional<CameraDevice> device = chooseDevice(invocation, options, status);
    if (!device)
        return nullptr;
    QString error;
    std::unique_ptr<CameraSession> session = CameraSession::open(*device, &error);
    if (!session) {
        printLine(invocation.err, QStringLiteral("pelorin-cli camera: %1").arg(error));
        status = ExitItemFailed;
    }
    return session;
}

int listCameras(const CliInvocation& invocation, const CameraOptions& options)
{
    QList<CameraDevice> devices;
    if (options.camera.isEmpty() && options.port.isEmpty()) {
        QString error;
        devices = detectCameras(&error);
        if (!error.isEmpty()) {
            printLine(invocation.err, QStringLiteral("pelorin-cli camera: %1").arg(error));
            return ExitItemFailed;
        }
    } else {
        int status = ExitSuccess;
        const std::unique_ptr<CameraSession> session = openChosen(invocation, options, status);
        if (!session)
            return status;
        devices << session->device();
    }
    // An empty list on the terminal reads like a hang-up; say it (on stderr, so scripts still
    // get an empty stdout).
    if (devices.isEmpty() && !invocation.json)
        printLine(invocation.err, QStringLiteral("No camera or phone found. Connect one with a cable, unlock a phone "
                                                 "and allow access, or use --port disk:/folder."));
    QJsonArray rows;
    for (const CameraDevice& device : devices) {
        if (invocation.json)
            rows.append(QJsonObject{{QStringLiteral("name"), device.name}, {QStringLiteral("port"), device.port}});
        else
            printLine(invocation.out, device.name + QLatin1Char('\t') + device.port);
    }
    if (invocation.json)
        printJson(invocation.out, rows);
    return ExitSuccess;
}

int listFiles(const CliInvocation& invocation, CameraSession& session)
{
    QString error;
    const QList<CameraFileInfo> files = session.listFiles(nullptr, &error);
    QJsonArray rows;
    for (const CameraFileInfo& file : files) {
        const QString path = cameraFilePath(file.ref);
        if (invocation.json) {
            rows.append(QJsonObject{
                {QStringLiteral("path"), path},
                {QStringLiteral("folder"), file.ref.folder},
                {QStringLiteral("name"), file.ref.name},
                {QStringLiteral("size"), file.size >= 0 ? QJsonValue(file.size) : QJsonValue()},
                {QStringLiteral("modified"), file.modified.isValid()
                                                 ? QJsonValue(file.modified.toString(Qt::ISODate))
                                                 : QJsonValue()}});
        } else {
            printLine(invocation.out, path + QLatin1Char('\t')
                                          + (file.size >= 0 ? QString::number(file.size) : QStringLiteral("?")));
        }
    }
    if (invocation.json)
        printJson(invocation.out, rows);
    if (error.isEmpty())
        return ExitSuccess;
    printLine(invocation.err, QStringLiteral("pelorin-cli camera: %1").arg(error));
    return ExitItemFailed;
}

// FILE arguments as refs: "folder/name" as given; a bare name is looked up on the device and,
// when nowhere, taken from the root folder (the device then says it is missing).
QList<CameraFileRef> resolveFiles(CameraSession& session, const QStringList& arguments,
                                  CommandResult& unresolved)
{
    std::optional<QList<CameraFileInfo>> listing;
    QString listingError;
    QList<CameraFileRef> refs;
    for (const QString& argument : arguments) {
        if (argument.contains(QLatin1Char('/'))) {
            refs << cameraFileFromPath(session.device().port, argument);
            continue;
        }
        if (!listing)
            listing = session.listFiles(nullptr, &listingError);
        QStringList matches;
        for (const CameraFileInfo& file : *listing) {
            if (file.ref.name == argument)
                matches << cameraFilePath(file.ref);
        }
        if (matches.size() > 1)
            unresolved.skip(argument, QStringLiteral("several files have this name (%1); give folder/name")
                                          .arg(matches.join(QStringLiteral(", "))));
        else if (matches.isEmpty() && listing->isEmpty() && !listingError.isEmpty())
            unresolved.skip(argument, listingError);
        else
            refs << cameraFileFromPath(session.device().port, matches.value(0, argument));
    }
    return refs;
}

int download(const CliInvocation& invocation, CameraSession& session, const CameraOptions& options)
{
    CommandResult result;
    const QList<CameraFileRef> refs = resolveFiles(session, options.files, result);
    CliReporter reporter(invocation);
    CommandContext context = reporter.context();
    // Paths are printed as they finish only for --edit, where a script takes them further.
    const bool quiet = !options.edit && !invocation.json;
    if (quiet)
        context.reveal = {};
    if (!refs.isEmpty())
        result.merge(downloadCameraFiles(session, refs, context));
    if (quiet && !invocation.dryRun) {
        printLine(invocation.out, QStringLiteral("downloaded %1 of %2 files into %3")
                                      .arg(result.written.size())
                                      .arg(options.files.size())
                                      .arg(context.storageFolder));
        result.written.clear();
    }
    return reporter.report(result);
}

QJsonArray skippedJson(const CommandResult& result)
{
    QJsonArray skipped;
    for (const SkippedItem& item : result.skipped)
        skipped.append(QJsonObject{{QStringLiteral("path"), item.path}, {QStringLiteral("reason"), item.reason}});
    return skipped;
}

int remove(const CliInvocation& invocation, CameraSession& session, const CameraOptions& options)
{
    CommandResult result;
    const QList<CameraFileRef> refs = resolveFiles(session, options.files, result);
    CliReporter reporter(invocation);
    QList<CameraFileRef> deleted;
    if (!refs.isEmpty())
        result.merge(deleteCameraFiles(session, refs, reporter.context(), &deleted));
    QStringList deletedPaths;
    for (const CameraFileRef& ref : deleted)
        deletedPaths << cameraFilePath(ref);
    if (!invocation.json) {
        for (const QString& path : deletedPaths)
            printLine(invocation.out, path);
        return reporter.report(result);
    }
    QJsonObject object{{QStringLiteral("deleted"), QJsonArray::fromStringList(deletedPaths)},
                       {QStringLiteral("skipped"), skippedJson(result)}};
    if (invocation.dryRun) {
        QJsonArray planned;
        for (const PlannedChange& change : result.planned)
            planned.append(change.file);
        object.insert(QStringLiteral("planned"), planned);
    }
    printJson(invocation.out, object);
    return result.skipped.isEmpty() ? ExitSuccess : ExitItemFailed;
}

}  // namespace

QString CameraCommand::summary() const
{
    return QStringLiteral("list cameras and phones, their photos and movies; download or delete them");
}

QString CameraCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli camera list [--camera NAME | --port PORT]\n"
        "       pelorin-cli camera files [--camera NAME | --port PORT]\n"
        "       pelorin-cli camera download [--edit] [--camera NAME | --port PORT] FILE...\n"
        "       pelorin-cli camera delete [--camera NAME | --port PORT] FILE...\n"
        "\n"
        "Works with the cameras and phones libgphoto2 can talk to.\n"
        "  list      the connected cameras, one per line: name, a tab, the port\n"
        "  files     every photo and movie on the camera, one per line: folder/name, a tab,\n"
        "            the size in bytes ('?' when the camera does not say)\n"
        "  download  copies each FILE, byte for byte, into the output folder under its name on\n"
        "            the camera (replacing a file of that name), dated as on the camera; prints\n"
        "            how many were downloaded. With --edit, prints the path of each download\n"
        "            instead, one per line, for passing on to other commands\n"
        "  delete    deletes each FILE on the camera and prints the ones deleted\n"
        "FILE is a name or folder/name as 'files' shows it. Without --camera or --port the only\n"
        "connected camera is used. --port disk:/folder opens a folder as a camera (libgphoto2's\n"
        "Directory Browse driver). With --dry-run, download and delete only say what they would\n"
        "do.");
}

int CameraCommand::run(CliInvocation& invocation)
{
    CameraOptions options;
    if (invocation.args.isEmpty())
        return usageError(invocation, name(), QStringLiteral("say list, files, download or delete"));
    if (const std::optional<QString> problem = parseOptions(invocation.args, options))
        return usageError(invocation, name(), *problem);
    const bool takesFiles = options.action == QLatin1String("download") || options.action == QLatin1String("delete");
    if (!takesFiles && options.action != QLatin1String("list") && options.action != QLatin1String("files"))
        return usageError(invocation, name(), QStringLiteral("unknown action '%1'").arg(options.action));
    if (takesFiles && options.files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    if (!takesFiles && !options.files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("unexpected argument '%1'").arg(options.files.first()));
    if (options.action == QLatin1String("list"))
        return listCameras(invocation, options);

    int status = ExitSuccess;
    const std::unique_ptr<CameraSession> session = openChosen(invocation, options, status);
    if (!session)
        return status;
    if (options.action == QLatin1String("files"))
        return listFiles(invocation, *session);
    if (options.action == QLatin1String("download"))
        return download(invocation, *session, options);
    return remove(invocation, *session, options);
}

}  // namespace pelorin::cli
