// Edits of a record that has a working copy read and replace that copy; the imported file is
// never rewritten, not even when it lies in the storage folder itself.
#include "DateTestFiles.h"
#include "dates/PhotoDateEdit.h"
#include "photo/PhotoRemoval.h"

namespace pelorin {
namespace {

using test::DatePhotos;
using test::tag;

CommandContext contextFor(const QString& storage)
{
    CommandContext context;
    context.storageFolder = storage;
    return context;
}

const PhotoDateEdit kEdit{QStringLiteral("2015:06:01 10:00:00"), QStringLiteral("2015:06:01 10:00:00")};

TEST(WorkingCopyEdits, ALaterEditBuildsOnTheCopyAndReplacesIt)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("et-GPS.jpg"));
    const QByteArray sourceHash = test::fileHash(source);
    PhotoSelection selection = DatePhotos::select({source});

    const CommandResult removed = removePhotoMetadata(MetadataRemoval::Gps, selection, contextFor(photos.storage()));
    ASSERT_TRUE(removed.succeeded());
    const QString copy = photos.output(source);
    ASSERT_EQ(removed.editedCopies, QList<EditedCopy>({{source, copy}}));

    selection.items[0].workingCopyPath = copy;
    const CommandResult dated = savePhotoDates(selection, kEdit, contextFor(photos.storage()));
    ASSERT_TRUE(dated.succeeded());
    EXPECT_EQ(dated.editedCopies, QList<EditedCopy>({{source, copy}}));
    EXPECT_EQ(tag(copy, QStringLiteral("ExifIFD:DateTimeOriginal")), QStringLiteral("2015:06:01 10:00:00"));
    EXPECT_TRUE(tag(copy, QStringLiteral("GPS:GPSLatitude")).isEmpty());
    EXPECT_EQ(QDir(photos.storage()).entryList(QDir::Files), QStringList({QStringLiteral("et-GPS.jpg")}));
    EXPECT_EQ(test::fileHash(source), sourceHash);

    // A working copy that vanished is a reason, not a silent restart from the original.
    ASSERT_TRUE(QFile::remove(copy));
    for (const CommandResult& result : {savePhotoDates(selection, kEdit, contextFor(photos.storage())),
                                        removePhotoMetadata(MetadataRemoval::Iptc, selection, contextFor(photos.storage()))}) {
        ASSERT_EQ(result.skipped.size(), 1);
        EXPECT_TRUE(result.skipped.first().reason.contains(QStringLiteral("edited copy"))) << result.skipped.first().reason.toStdString();
        EXPECT_TRUE(result.editedCopies.isEmpty());
        EXPECT_FALSE(QFileInfo::exists(copy));
    }
}

TEST(WorkingCopyEdits, AnImportedFileInTheStorageFolderIsNeverRewritten)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("et-GPS.jpg"));
    ASSERT_TRUE(QDir().mkpath(photos.storage()));
    const QString imported = photos.output(source);
    ASSERT_TRUE(QFile::copy(source, imported));
    const QByteArray hash = test::fileHash(imported);
    const PhotoSelection selection = DatePhotos::select({imported});
    for (const CommandResult& result : {savePhotoDates(selection, kEdit, contextFor(photos.storage())),
                                        removePhotoMetadata(MetadataRemoval::Gps, selection, contextFor(photos.storage()))}) {
        EXPECT_EQ(result.skipped.size(), 1);
        EXPECT_TRUE(result.editedCopies.isEmpty());
        EXPECT_EQ(test::fileHash(imported), hash);
    }
}

}  // namespace
}  // namespace pelorin
