#include "cli/CliMain.h"

#include "model/BatchAllocator.h"

#include <QDir>
#include <QCoreApplication>
#include <QLoggingCategory>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace pelorin::cli {

int runCliMain(int argc, char** argv, std::unique_ptr<CliApp> (*makeApp)(), ApplicationMaker makeApplication)
{
    tuneAllocatorForBatches();
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
    const std::unique_ptr<QCoreApplication> app = makeApplication(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Quorvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Pelorin"));
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    const int status = makeApp()->run(args);
#if !defined(__SANITIZE_ADDRESS__)
    // Every file is written and the command object gone; what remains is the libraries' teardown,
    // which for the GUI application object loads the whole font configuration only to release it
    // again (15-20 ms, more than the work of a one-file command). The sanitizer build tears down,
    // so that leaks are still found.
    std::fflush(nullptr);
    std::_Exit(status);
#endif
    return status;
}

}  // namespace pelorin::cli
