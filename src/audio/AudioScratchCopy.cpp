#include "audio/AudioScratchCopy.h"

#include "model/SafeOutput.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace pelorin {

AudioScratchCopy::AudioScratchCopy(QString sourcePath, QString targetPath, Durability durability)
    : source_(std::move(sourcePath)), target_(std::move(targetPath)), durability_(durability)
{
}

AudioScratchCopy::~AudioScratchCopy()
{
    if (!scratch_.isEmpty())
        QFile::remove(scratch_);
}

bool AudioScratchCopy::create()
{
    if (isSameFile(source_, target_)) {
        error_ = QStringLiteral("%1 is the original file; an output never replaces it").arg(target_);
        return false;
    }
    const QFileInfo target(target_);
    const QString name = QStringLiteral("%1/.%2.pelorin-%3")
                             .arg(target.absolutePath(), target.fileName(),
                                  QString::number(QRandomGenerator::global()->generate64(), 36));
    if (!copyFileAtomically(source_, name, &error_, Durability::Deferred))
        return false;
    scratch_ = name;
    return true;
}

bool AudioScratchCopy::commit(const OutputCheck& check)
{
    if (scratch_.isEmpty()) {
        error_ = QStringLiteral("no copy to commit");
        return false;
    }
    if (const QString problem = verifyFinishedOutput(scratch_, check); !problem.isEmpty()) {
        error_ = verificationFailed(problem);
        return false;
    }
    const QByteArray scratch = QFile::encodeName(scratch_);
    bool synced = true;
    if (durability_ == Durability::FlushEach) {
        const int fd = ::open(scratch.constData(), O_RDONLY | O_CLOEXEC);
        synced = fd >= 0 && ::fsync(fd) == 0;
        if (fd >= 0)
            ::close(fd);
    }
    if (!synced || isSameFile(source_, target_)
        || ::rename(scratch.constData(), QFile::encodeName(target_).constData()) != 0) {
        error_ = QStringLiteral("cannot write %1: %2")
                     .arg(target_, writeErrorText(errno));
        return false;
    }
    scratch_.clear();
    return true;
}

}  // namespace pelorin
