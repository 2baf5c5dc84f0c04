// Movies come from anywhere and their items are written by our box engine: whatever the bytes,
// setting fields (text, a recording date, a location) and removing the descriptive items either
// refuse with a reason, leaving nothing behind, or write a movie whose boxes read back cleanly
// and which holds the title that was set.
#include "FuzzScratch.h"
#include "isobmff/BoxTree.h"
#include "video/MovieItems.h"
#include "video/MovieRemoval.h"
#include "video/MovieSave.h"

#include <cstdint>
#include <cstdlib>

using namespace pelorin;

namespace {

// What a command wrote must be exactly what is in the output folder, with its boxes intact.
void checkWritten(const fuzz::Scratch& scratch, const CommandResult& result)
{
    scratch.checkCommand(result);
    for (const QString& path : result.written) {
        FileByteSource source(path);
        fuzz::require(source.open(nullptr), "the written movie cannot be opened");
        fuzz::require(readBoxTree(source).top("moov") != nullptr, "the written movie has no movie box");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::Scratch scratch;
    const QByteArray head = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(std::min<std::size_t>(size, 12)));
    const bool quickTime = head.mid(8, 4) == "qt  ";
    const QString input = scratch.writeInput(quickTime ? QStringLiteral("clip.mov") : QStringLiteral("clip.mp4"), data, size);

    CommandContext context;
    context.storageFolder = scratch.outputFolder();
    MovieChanges changes;
    changes.texts[MovieField::Title] = QStringLiteral("Harbour");
    changes.texts[MovieField::Artist] = QStringLiteral("Jane");
    changes.texts[MovieField::Keywords] = QStringLiteral("sea,boat");
    changes.recordingDate = QStringLiteral("2021:06:01 10:20:30");
    changes.location = MovieLocationText{QStringLiteral("48.8583"), QStringLiteral("-2.2945"), {}};
    const CommandResult saved = saveMovieFields({input}, changes, context);
    checkWritten(scratch, saved);
    for (const QString& path : saved.written) {
        bool titled = false;
        for (const MediaMetadataItem& item : readMovieItemsOfFile(path))
            titled = titled || item.value.toString() == QLatin1String("Harbour");
        fuzz::require(titled, "the written movie does not hold the title");
        QFile::remove(path);
    }

    CommandContext removal;
    removal.storageFolder = scratch.outputFolder();
    checkWritten(scratch, removeMovieMetadata({input}, removal));
    return 0;
}
