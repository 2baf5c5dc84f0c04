// The editor's changes, as its lines produce them, saved into movies as FFmpeg writes them and
// checked by ffprobe and exiftool.
#include "ExifTool.h"
#include "ToolMovies.h"
#include "video/MovieEditorModel.h"
#include "video/MovieReader.h"
#include "video/MovieSave.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

// The changes of an editor that showed the record and now holds the typed texts instead.
MovieChanges editorChanges(const IKImageItem& record, const std::map<MovieField, QStringList>& typed)
{
    MovieChanges changes;
    for (const MovieFieldRow& row : movieFieldTable()) {
        const QStringList shown = movieEditorTexts(record, row.field);
        const auto found = typed.find(row.field);
        addEditedField(changes, row.field, shown, found == typed.end() ? shown : found->second);
    }
    return changes;
}

}  // namespace

TEST(MovieEditorChanges, OnlyWhatTheUserChangedReachesTheMovie)
{
    for (const bool keys : {false, true}) {
        SCOPED_TRACE(keys ? "use_metadata_tags" : "user data");
        QTemporaryDir dir;
        const QString source = dir.filePath("pier.mov");
        QStringList metadata = {"-metadata", "title=Pier", "-metadata", "artist=Ines", "-metadata", "copyright=(c) Hald"};
        if (keys)
            metadata << "-movflags" << "use_metadata_tags" << "-metadata"
                     << "com.apple.quicktime.location.ISO6709=+48.858222+002.294500/";
        ASSERT_TRUE(test::makeFfmpegFile(source, metadata));
        const IKImageItem record = readMovieFile(source).item;
        ASSERT_EQ(record.fileArist, "Ines");

        // A new title, the artist emptied, the copyright typed over with its own text, a
        // latitude alone: a title and a removal, and nothing else.
        const MovieChanges changes = editorChanges(
            record, {{MovieField::Title, {"Quay"}},
                     {MovieField::Artist, {""}},
                     {MovieField::Copyright, {"(c) Hald"}},
                     {MovieField::Location, {keys ? "48.858222" : "10", "", ""}}});
        ASSERT_EQ(changes.texts.size(), 2u);
        EXPECT_EQ(changes.texts.at(MovieField::Title), "Quay");
        EXPECT_EQ(changes.texts.at(MovieField::Artist), std::nullopt);
        EXPECT_FALSE(changes.location || changes.recordingDate || changes.createdDate || changes.artworkPath);

        CommandContext context;
        context.storageFolder = dir.filePath("out");
        const CommandResult result = saveMovieFields({source}, changes, context);
        ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
        const QString output = result.written.value(0);
        QMap<QString, QString> before = test::ffprobeTags(source);
        QMap<QString, QString> after = test::ffprobeTags(output);
        EXPECT_EQ(after.take("title"), "Quay");
        EXPECT_FALSE(after.contains("artist"));
        before.remove("title");
        before.remove("artist");
        // The location keeps its six decimals: it was not written again.
        EXPECT_EQ(after, before);
        const QJsonObject tags = test::exiftool(output);
        EXPECT_EQ(tags.value(keys ? "Keys:Title" : "UserData:Title").toString(), "Quay");
        EXPECT_FALSE(tags.contains("ItemList:Title"));
        EXPECT_EQ(test::streamHash(output), test::streamHash(source));
    }
}
