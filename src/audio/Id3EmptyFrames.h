#pragma once
#include "audio/AudioContainer.h"

#include <QString>

namespace pelorin {

// Drops the frames without content from the ID3v2 tag of a file (the tag in front of MPEG audio,
// the ID3 chunk of a WAV or AIFF file), in place and at the same size: the frames behind move
// up and padding fills the end. TagLib stops reading a tag at such a frame, so every frame
// behind it would be lost when the tag is saved; an empty frame itself holds nothing.
// A tag this does not follow (unsynchronised, with an extended header, frames that do not add
// up) is left as it is. False only when the file cannot be read or written.
bool dropEmptyId3Frames(const QString& path, AudioContainer container);

}  // namespace pelorin
