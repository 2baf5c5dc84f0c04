#pragma once

#include <QProcess>
#include <QStringList>

namespace pelorin::test {

// Makes a test picture with ImageMagick's convert, a writer independent of ours
// (for example {"-size", "64x48", "gradient:red-blue", "out.png"}).
inline bool imageMagick(const QStringList& args)
{
    QProcess process;
    process.start(QStringLiteral("convert"), args);
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit
           && process.exitCode() == 0;
}

}  // namespace pelorin::test
