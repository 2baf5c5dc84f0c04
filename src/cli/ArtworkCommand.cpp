#include "cli/ArtworkCommand.h"

#include "audio/AudioExports.h"
#include "cli/CliOutput.h"

namespace pelorin::cli {

QString ArtworkCommand::summary() const
{
    return QStringLiteral("export the artwork of audio files as JPEG");
}

QString ArtworkCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli artwork export FILE...\n"
        "\n"
        "Writes each file's front picture into the output folder as NAME.jpg, NAME being the\n"
        "file's full name (song.mp3 gives song.mp3.jpg). JPEG pictures keep their bytes; other\n"
        "pictures are converted. Files without a picture are reported and skipped.");
}

int ArtworkCommand::run(CliInvocation& invocation)
{
    if (invocation.args.value(0) != QLatin1String("export"))
        return usageError(invocation, name(), QStringLiteral("say export"));
    const QStringList files = invocation.args.mid(1);
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    CliReporter reporter(invocation);
    return reporter.report(exportAudioArtwork(files, reporter.context()));
}

}  // namespace pelorin::cli
