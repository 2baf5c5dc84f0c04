#include "media/MediaRemoval.h"

#include "audio/AudioTagChanges.h"
#include "model/FileKinds.h"
#include "video/MovieRemoval.h"

namespace pelorin {

CommandResult removeMediaMetadata(const QStringList& paths, const CommandContext& context)
{
    CommandResult result;
    QStringList songs, movies;
    for (const QString& path : paths) {
        const QString extension = pathExtension(path);
        if (isAudioExtension(extension))
            songs.append(path);
        else if (isVideoExtension(extension))
            movies.append(path);
        else
            result.skip(path, QStringLiteral("not an audio or movie file; photos are stripped from the photo pane"));
    }
    // The songs and then the movies count against all the files.
    const int total = int(songs.size() + movies.size());
    CommandContext songsContext = context;
    songsContext.progress = [&context, total](int done, int) { context.report(done, total); };
    CommandContext moviesContext = context;
    const int songCount = int(songs.size());
    moviesContext.progress = [&context, total, songCount](int done, int) { context.report(songCount + done, total); };
    if (!songs.isEmpty())
        result.merge(removeAudioTags(songs, songsContext));
    if (!movies.isEmpty() && !context.isCancelled())
        result.merge(removeMovieMetadata(movies, moviesContext));
    return result;
}

}  // namespace pelorin
