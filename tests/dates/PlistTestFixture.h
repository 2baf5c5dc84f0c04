#pragma once

// Shared by the export, import and apply tests: scoped copies of sample photos, a storage
// folder, a context that records what is revealed, and independent readers (Python's plistlib,
// exiftool).

#include "model/CommandContext.h"
#include "model/PhotoSelection.h"

#include "ExifTool.h"
#include "QtPrinters.h"
#include "TestPaths.h"
#include "TestSelection.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin::test {

class PlistTestFixture : public ::testing::Test {
protected:
    QString copyOf(const QString& name, const QString& as = {})
    {
        const QString path = inputs.filePath(as.isEmpty() ? name : as);
        QFile::copy(dataPath(name), path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        return path;
    }
    static PhotoSelection select(const QStringList& paths, PhotoSource source = PhotoSource::Computer)
    {
        return test::selectionOf(paths, source);
    }
    CommandContext context(bool dryRun = false)
    {
        CommandContext c;
        c.storageFolder = store.path();
        c.reveal.revealFile = [this](const QString& f) { revealed << f; };
        c.dryRun = dryRun;
        return c;
    }
    QString stored(const QString& name) const { return store.filePath(name); }
    QStringList storedFiles() const { return QDir(store.path()).entryList(QDir::Files | QDir::Hidden); }

    // Evaluates a Python expression over the property list d, read by plistlib: "TYPE REPR".
    static QString python(const QString& plist, const QString& expression)
    {
        QProcess p;
        p.start(QStringLiteral("python3"),
                {QStringLiteral("-c"),
                 QStringLiteral("import plistlib,sys\nd=plistlib.load(open(sys.argv[1],'rb'))\n"
                                "v=eval(sys.argv[2])\nprint(type(v).__name__, repr(v))"),
                 plist, expression});
        p.waitForFinished(30000);
        return QString::fromUtf8(p.readAllStandardOutput()).trimmed() + QString::fromUtf8(p.readAllStandardError()).trimmed();
    }
    // One exiftool value ("IFD0:Artist"), as text; empty when the tag is absent.
    static QString tag(const QString& path, const QString& key)
    {
        return exiftool(path).value(key).toVariant().toString();
    }

    QTemporaryDir inputs;
    QTemporaryDir store;
    QStringList revealed;
};

}  // namespace pelorin::test
