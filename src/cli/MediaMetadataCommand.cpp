#include "cli/MediaMetadataCommand.h"

#include "audio/AudioExports.h"
#include "cli/CliOutput.h"

namespace pelorin::cli {

QString MediaMetadataCommand::summary() const
{
    return QStringLiteral("export the tags of audio files to metadata.plist");
}

QString MediaMetadataCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli media-metadata export FILE...\n"
        "\n"
        "Writes metadata.plist into the output folder: one dictionary per file name with the\n"
        "file's Created Date, Record Date, Title, Subtitle, Artist, Album, Release Year,\n"
        "Copyright, Keywords, Publisher, Track Number, Composer, Band, Comments and Lyrics, each\n"
        "only when the file has it. Of two files with the same name, the later one counts.");
}

int MediaMetadataCommand::run(CliInvocation& invocation)
{
    if (invocation.args.value(0) != QLatin1String("export"))
        return usageError(invocation, name(), QStringLiteral("say export"));
    const QStringList files = invocation.args.mid(1);
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    CliReporter reporter(invocation);
    return reporter.report(exportAudioMetadata(files, reporter.context()));
}

}  // namespace pelorin::cli
