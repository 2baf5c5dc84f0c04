#pragma once
// Runs the built pelorin-cli (PELORIN_CLI_PATH) with a home of its own, so that the user's
// preferences are never touched.
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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

// How many times a run of pelorin-cli opens path, as strace sees its openat calls; -1 when
// the run fails.
inline int opensOf(const QString& path, const QStringList& args, const QTemporaryDir& home)
{
    const QString trace = home.filePath(QStringLiteral("openat.trace"));
    QProcess strace;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    strace.setProcessEnvironment(env);
    strace.start(QStringLiteral("strace"), QStringList{QStringLiteral("-f"), QStringLiteral("-e"), QStringLiteral("trace=openat"),
                                                      QStringLiteral("-o"), trace, QStringLiteral(PELORIN_CLI_PATH)} + args);
    if (!strace.waitForFinished(60000) || strace.exitCode() != 0)
        return -1;
    QFile file(trace);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return int(file.readAll().count('"' + QFile::encodeName(path) + '"'));
}

// A test that runs pelorin-cli with a home of its own; each run must finish.
class CliTestBase : public ::testing::Test {
protected:
    CliRun cli(const QStringList& args, int timeoutMs = 60000)
    {
        const CliRun run = runCli(args, home, timeoutMs);
        EXPECT_TRUE(run.finished);
        return run;
    }
    QTemporaryDir home;
};

}  // namespace pelorin::test
