#include "cli/CliApp.h"

#include <QDir>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    // The tool opens no window; the offscreen platform gives it fonts and painting anywhere,
    // with or without a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QByteArray runtime = QDir::tempPath().toLocal8Bit() + "/pelorin-runtime-" + QByteArray::number(getuid());
        ::mkdir(runtime.constData(), 0700);
        qputenv("XDG_RUNTIME_DIR", runtime);
    }
    // Under a file-size limit (ulimit -f) the kernel would kill the tool mid-batch; ignored,
    // the write fails instead and the item is reported as skipped for lack of space.
    std::signal(SIGXFSZ, SIG_IGN);
    // Decoders' complaints about damaged files would bury the tool's own, clearer reasons.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false"));
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName(QStringLiteral("Quorvane"));
    QGuiApplication::setApplicationName(QStringLiteral("Pelorin"));
    QStringList args = QGuiApplication::arguments();
    args.removeFirst();
    return pelorin::cli::makeCliApp()->run(args);
}
