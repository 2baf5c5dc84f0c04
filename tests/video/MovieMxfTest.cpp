#include "video/MovieSave.h"

#include "QtPrinters.h"
#include "ScopedTimeZone.h"
#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

}  // namespace

TEST(MovieSave, MxfCopiesTakeOnlyTheCreatedDate)
{
    test::ScopedTimeZone tz("Asia/Kolkata");
    QTemporaryDir dir;
    const QString source = dir.filePath("clip.mxf");
    ASSERT_EQ(QProcess::execute("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "testsrc=duration=0.2:size=64x64:rate=25",
                                           "-c:v", "mpeg2video", "-f", "mxf", source}),
              0);
    CommandContext context;
    context.storageFolder = dir.filePath("out");
    MovieChanges edits;
    edits.createdDate = "2015:06:01 10:00:00";
    const CommandResult dated = saveMovieFields({source}, edits, context);
    ASSERT_TRUE(dated.succeeded()) << dated.skipped.value(0).reason.toStdString();
    const QString output = context.storageFolder + "/clip.mxf";
    EXPECT_EQ(readAll(output), readAll(source));
    EXPECT_EQ(readFileDates(output).modified, instantFromWallClock(*parseDateText(QStringLiteral("2015:06:01 10:00:00"))));

    // Other fields cannot go into an MXF: the copy is made and the result says what was left out.
    edits.texts[MovieField::Title] = "Title";
    CommandContext next;  // a second command: it may replace the first one's output
    next.storageFolder = context.storageFolder;
    const CommandResult titled = saveMovieFields({source}, edits, next);
    EXPECT_EQ(titled.written, QStringList{output});
    EXPECT_EQ(titled.notes.filter("MXF").size(), 1);
}
