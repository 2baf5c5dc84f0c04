#pragma once

#include "audio/AudioContainer.h"

#include <QString>

namespace pelorin {

// Why the output's audio is not the source's, byte for byte, or empty when it is. The audio is
// what no tag writer may touch: the MPEG frames between the tags of an MP3, the frames behind a
// FLAC's metadata blocks, the sample chunk of a WAV, AIFF or CAF, the media data of an MP4, the
// bodies of an Ogg stream's audio pages. Other containers are not compared. Audio at the same
// offsets in both files was copied in the kernel and never held by a writer: its length and its
// first and last 64 KiB are compared. Audio that moved is compared whole.
QString audioPayloadDifference(const QString& sourcePath, const QString& outputPath, AudioContainer container);

}  // namespace pelorin
