#pragma once
// Runs the built pelorin-cli (PELORIN_CLI_PATH) with a home of its own, so that the user's
// preferences are never touched.
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

namespace pelorin::test {

struct CliRun {
    int exitCode = -1;
    QString out;
    QString err;
    bool finished = false;
};

inline CliRun runCli(const QStringList& args, const QTemporaryDir& home, int timeoutMs = 60000)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral(".config")));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(PELORIN_CLI_PATH), args);
    CliRun run;
    run.finished = process.waitForFinished(timeoutMs);
    run.exitCode = process.exitCode();
    run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

}  // namespace pelorin::test
