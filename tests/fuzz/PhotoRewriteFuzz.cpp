// Photos come from anywhere and the rewrite hands them to exiv2: whatever the bytes, an edit
// touching several groups either refuses with a reason, leaving nothing behind, or writes a
// photo our reader opens again with the values set and without the removed GPS group.
#include "FuzzScratch.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"

#include <cstdint>
#include <cstdlib>

using namespace pelorin;

namespace {

QString extensionFor(const QByteArray& head)
{
    if (head.startsWith("\x89PNG"))
        return QStringLiteral("png");
    if (head.startsWith("II*") || head.startsWith("MM\0*"))
        return QStringLiteral("tif");
    if (head.startsWith("RIFF") && head.mid(8, 4) == "WEBP")
        return QStringLiteral("webp");
    return QStringLiteral("jpg");
}

QVariantMap with(QVariantMap group, const QString& key, const QVariant& value)
{
    group.insert(key, value);
    return group;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::Scratch scratch;
    const QByteArray head = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(std::min<std::size_t>(size, 12)));
    const QString name = QStringLiteral("photo.") + extensionFor(head);
    const QString input = scratch.writeInput(name, data, size);
    const PhotoProperties before = readPhotoProperties(input);

    PhotoChanges edit;
    edit.groups.insert(QStringLiteral("{GPS}"), QVariant());
    edit.groups.insert(QStringLiteral("{IPTC}"), with(before.properties.value(QStringLiteral("{IPTC}")).toMap(),
                                                      QStringLiteral("ObjectName"), QStringLiteral("Harbour")));
    edit.groups.insert(QStringLiteral("{TIFF}"), with(before.properties.value(QStringLiteral("{TIFF}")).toMap(),
                                                      QStringLiteral("Artist"), QStringLiteral("Jane")));
    edit.groups.insert(QStringLiteral("{Exif}"), with(before.properties.value(QStringLiteral("{Exif}")).toMap(),
                                                      QStringLiteral("DateTimeOriginal"), QStringLiteral("2021:06:01 10:20:30")));
    PhotoChanges strip;
    strip.removeAllMetadata = true;

    PhotoWriteOptions options;
    options.durability = Durability::Deferred;
    const QString output = QDir(scratch.outputFolder()).filePath(name);
    for (const PhotoChanges* changes : {&edit, &strip}) {
        QFile::remove(output);
        QFile::remove(output + QStringLiteral(".xmp"));
        const PhotoWriteResult result = CopyPhotoWithProperties(input, *changes, output, options);
        scratch.checkWritten(result.written);
        fuzz::require(result.ok() || !result.reason.isEmpty(), "a failed rewrite gives no reason");
        scratch.keepIfRefusedByVerification({result.reason});
        if (result.outcome != PhotoWriteResult::Outcome::Rewritten)
            continue;
        const PhotoProperties after = readPhotoProperties(output);
        fuzz::require(after.ok(), "the rewritten photo cannot be read again");
        fuzz::require(!after.properties.contains(QStringLiteral("{GPS}")), "the GPS group survived its removal");
        // Values that could not be written are warned about; all others must read back.
        if (changes == &edit && result.warnings.isEmpty()) {
            const QVariantMap tiff = after.properties.value(QStringLiteral("{TIFF}")).toMap();
            fuzz::require(tiff.value(QStringLiteral("Artist")) == QStringLiteral("Jane"), "the artist was not written");
        }
    }
    return 0;
}
