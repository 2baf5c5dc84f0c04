#pragma once
// The writer targets run millions of inputs in one process: each gets a folder of its own
// (in memory where /dev/shm exists), reused for every input, and checks after each input that
// nothing but the input and the outputs it expected stays behind and no file descriptor leaks.
#include "model/CommandResult.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace pelorin::fuzz {

inline void require(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

class Scratch {
public:
    Scratch()
        : dir_(QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm/pelorin-fuzz-XXXXXX")
                                                          : QDir::tempPath() + QStringLiteral("/pelorin-fuzz-XXXXXX"))
    {
        if (!dir_.isValid() || !QDir(dir_.path()).mkpath(QStringLiteral("out")))
            std::abort();
        openFiles_ = openFileCount();
    }

    QString path(const QString& name) const { return dir_.filePath(name); }
    QString outputFolder() const { return dir_.filePath(QStringLiteral("out")); }

    // Writes the input under name after clearing what the previous input left.
    QString writeInput(const QString& name, const std::uint8_t* data, std::size_t size)
    {
        clear();
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char*>(data), qint64(size));
        input_ = file.fileName();
        return input_;
    }

    // Aborts when the output folder holds anything but the expected files, or when more files
    // are open than before the first input.
    void checkClean(const QStringList& expected) const
    {
        QStringList found = QDir(outputFolder()).entryList(QDir::Files | QDir::Hidden | QDir::System);
        found.sort();
        QStringList wanted = expected;
        wanted.sort();
        if (found != wanted) {
            std::fprintf(stderr, "left in the output folder: %s\n", qPrintable(found.join(QLatin1Char(' '))));
            std::abort();
        }
        if (openFileCount() > openFiles_ + 4) {
            std::fprintf(stderr, "file descriptors leak: %d open, %d at start\n", openFileCount(), openFiles_);
            std::abort();
        }
    }

    // The same for the paths a writer reports as written.
    void checkWritten(const QStringList& paths) const
    {
        QStringList names;
        for (const QString& path : paths)
            names.append(QFileInfo(path).fileName());
        checkClean(names);
    }

    // A command wrote exactly what it reports, or says why it wrote nothing.
    void checkCommand(const CommandResult& result) const
    {
        checkWritten(result.written);
        require(!result.written.isEmpty() || !result.skipped.isEmpty() || result.alert, "nothing written and no reason");
        QStringList reasons;
        for (const SkippedItem& item : result.skipped)
            reasons.append(item.reason);
        keepIfRefusedByVerification(reasons);
    }

    // An output the read-back refused is right for a damaged input but a false alarm for a
    // sound one: with PELORIN_FUZZ_KEEP set, such inputs are kept there (with the reasons) so
    // that someone can look at them; the run goes on.
    void keepIfRefusedByVerification(const QStringList& reasons) const
    {
        static const QString keep = qEnvironmentVariable("PELORIN_FUZZ_KEEP");
        static int kept = 0;
        const QStringList refusals = reasons.filter(QLatin1String("verification failed"));
        QFile input(input_);
        if (keep.isEmpty() || kept >= 500 || refusals.isEmpty() || !input.open(QIODevice::ReadOnly)
            || !QDir().mkpath(keep))
            return;
        const QByteArray bytes = input.readAll();
        const QString name = QDir(keep).filePath(QString::fromLatin1(
            QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex()));
        QFile copy(name);
        QFile why(name + QStringLiteral(".txt"));
        if (copy.exists() || !copy.open(QIODevice::WriteOnly) || !why.open(QIODevice::WriteOnly))
            return;
        copy.write(bytes);
        why.write(refusals.join(QLatin1Char('\n')).toUtf8() + '\n');
        ++kept;
    }

private:
    void clear() const
    {
        for (const QString& folder : {dir_.path(), outputFolder()}) {
            QDir dir(folder);
            for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden | QDir::System))
                dir.remove(name);
        }
    }

    static int openFileCount() { return int(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size()); }

    QTemporaryDir dir_;
    QString input_;
    int openFiles_ = 0;
};

}  // namespace pelorin::fuzz
