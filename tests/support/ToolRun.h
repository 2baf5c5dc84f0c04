#pragma once
// Runs one of the tools the tests make or read files with (ffmpeg, sox, lame, flac, convert...).
#include <QProcess>
#include <QString>
#include <QStringList>

namespace pelorin::test {

// True when the program ran to a normal end with exit status 0 within the time.
inline bool runs(const QString& program, const QStringList& args, int timeoutMs = 120000)
{
    QProcess process;
    process.start(program, args);
    return process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit
           && process.exitCode() == 0;
}

}  // namespace pelorin::test
