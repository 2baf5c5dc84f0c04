#include "QtPrinters.h"
#include "model/CommandContext.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace pelorin;

TEST(OutputNamesTest, LaterOutputsOfOneCommandTakeTheNextFreeName)
{
    QTemporaryDir dir;
    const QString photo = dir.filePath(QStringLiteral("photo.jpg"));
    // A file left by an earlier command may be replaced; a numbered name that exists is passed over.
    QFile(photo).open(QIODevice::WriteOnly);
    QFile(dir.filePath(QStringLiteral("photo-2.jpg"))).open(QIODevice::WriteOnly);
    CommandContext context;
    EXPECT_EQ(context.claimOutput(photo), photo);
    EXPECT_EQ(context.claimOutput(photo), dir.filePath(QStringLiteral("photo-3.jpg")));
    // The same path spelled differently is the same output.
    EXPECT_EQ(QDir::cleanPath(context.claimOutput(dir.path() + QStringLiteral("/./photo.jpg"))),
              dir.filePath(QStringLiteral("photo-4.jpg")));
    EXPECT_EQ(context.claimOutput(dir.filePath(QStringLiteral("archive.tar.gz"))), dir.filePath(QStringLiteral("archive.tar.gz")));
    EXPECT_EQ(context.claimOutput(dir.filePath(QStringLiteral("archive.tar.gz"))), dir.filePath(QStringLiteral("archive.tar-2.gz")));
    EXPECT_EQ(context.claimOutput(dir.filePath(QStringLiteral("README"))), dir.filePath(QStringLiteral("README")));
    EXPECT_EQ(context.claimOutput(dir.filePath(QStringLiteral("README"))), dir.filePath(QStringLiteral("README-2")));

    // An output rewriting its own input (a download of this command) keeps its name.
    const QString copy = dir.filePath(QStringLiteral("IMG_1.JPG"));
    EXPECT_EQ(context.claimOutput(copy), copy);
    EXPECT_EQ(context.claimOutput(copy, copy), copy);

    // Copies of a context are the same command; a new context is a new command.
    const CommandContext same = context;
    EXPECT_EQ(same.claimOutput(photo), dir.filePath(QStringLiteral("photo-5.jpg")));
    EXPECT_EQ(CommandContext().claimOutput(photo), photo);
}

TEST(OutputNamesTest, ParallelClaimsNeverShareAName)
{
    QTemporaryDir dir;
    const QString wanted = dir.filePath(QStringLiteral("photo.jpg"));
    CommandContext context;
    std::vector<QString> names(64);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&, t] {
            for (int i = t; i < 64; i += 8)
                names[size_t(i)] = context.claimOutput(wanted);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(QSet<QString>(names.begin(), names.end()).size(), 64);
}
