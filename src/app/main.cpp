// The editor: one window over the metadata engine.
#include "app/AppDelegate.h"
#include "app/ImportActions.h"
#include "app/MediaImporter.h"
#include "model/BatchAllocator.h"
#include "model/Preferences.h"
#include "ui/WindowLook.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>

#include <csignal>

int main(int argc, char** argv)
{
    // The editor runs the same batches as the command line.
    pelorin::tuneAllocatorForBatches();
    // Qt Multimedia's GStreamer backend plays no H.264/AAC on a stock system; FFmpeg does.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    // A file-size limit (ulimit -f) would kill the window mid-batch; ignored, the write fails
    // and the item is reported as skipped for lack of space.
    std::signal(SIGXFSZ, SIG_IGN);
    QApplication app(argc, argv);
    Q_INIT_RESOURCE(pelorin);
    QApplication::setOrganizationName(QStringLiteral("Quorvane"));
    QApplication::setApplicationName(QStringLiteral("Pelorin"));
    QApplication::setApplicationDisplayName(QStringLiteral("Quorvane Pelorin"));
    QApplication::setApplicationVersion(QStringLiteral(PELORIN_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("pelorin"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/pelorin.svg")));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Views and fixes the metadata of photos, audio and video."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("files"), QStringLiteral("Files or folders to import at start."),
                                 QStringLiteral("[FILE...]"));
    parser.process(app);

    pelorin::applyWindowLook(app);
    pelorin::AppDelegate delegate;
    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();

    QStringList files;
    for (const QString& argument : parser.positionalArguments())
        files.append(QFileInfo(argument).absoluteFilePath());
    if (!files.isEmpty())
        delegate.importer()->import(files, pelorin::ImportScope::AllMedia);
    return app.exec();
}
