// Audio files come from anywhere and their tags go through TagLib: whatever the bytes, reading
// gives items or a problem, and an edit of both field groups (or a removal of every tag) either
// refuses with a reason, leaving nothing behind, or writes a file our reader opens again.
#include "FuzzScratch.h"
#include "audio/AudioTagChanges.h"
#include "audio/AudioItems.h"

#include <cstdint>
#include <cstdlib>

using namespace pelorin;

namespace {

QString extensionFor(const QByteArray& head)
{
    if (head.startsWith("fLaC"))
        return QStringLiteral("flac");
    if (head.mid(4, 4) == "ftyp")
        return QStringLiteral("m4a");
    if (head.startsWith("RIFF"))
        return QStringLiteral("wav");
    if (head.startsWith("FORM"))
        return QStringLiteral("aif");
    if (head.startsWith("OggS"))
        return QStringLiteral("ogg");
    if (head.startsWith("caff"))
        return QStringLiteral("caf");
    return QStringLiteral("mp3");
}

// What a command wrote must be exactly what is in the output folder, and readable.
void checkWritten(const fuzz::Scratch& scratch, const CommandResult& result)
{
    scratch.checkCommand(result);
    for (const QString& path : result.written)
        fuzz::require(readAudioItems(path).problem.isEmpty(), "the written file cannot be read again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::Scratch scratch;
    const QByteArray head = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(std::min<std::size_t>(size, 12)));
    const QString input = scratch.writeInput(QStringLiteral("track.") + extensionFor(head), data, size);
    readAudioItems(input);

    CommandContext context;
    context.storageFolder = scratch.outputFolder();
    AudioTagChanges changes;
    changes.fields = {{AudioField::Title, QStringLiteral("Harbour")},
                    {AudioField::Artist, QStringLiteral("Jane")},
                    {AudioField::TrackNumber, QStringLiteral("3")},
                    {AudioField::Year, QStringLiteral("2021")},
                    {AudioField::Comments, QString()}};
    const CommandResult saved = saveAudioTags({input}, changes, context);
    checkWritten(scratch, saved);
    for (const QString& path : saved.written)
        QFile::remove(path);

    CommandContext removal;
    removal.storageFolder = scratch.outputFolder();
    checkWritten(scratch, removeAudioTags({input}, removal));
    return 0;
}
