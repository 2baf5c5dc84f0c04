#pragma once
// Field and picture edits of an ID3v2 tag, shared by the MP3, WAV and AIFF writers. TagLib is
// used only inside src/audio.
#include "audio/AudioTagWriter.h"

#include <taglib/id3v2tag.h>

namespace pelorin::taglib {

// Sets each changed field's frame: the first frame of its kind is edited in place so that it
// keeps its position, duplicates go; a bare track number keeps the stored total; a year
// replaces the older date frames.
void setId3Fields(TagLib::ID3v2::Tag* tag, const QList<AudioFieldChange>& changes);
// Makes image the front cover; other pictures stay.
void setId3Picture(TagLib::ID3v2::Tag* tag, const QByteArray& image);
// Applies the edit's fields and picture, and fits the frames to the version the tag is saved in.
TagLib::ID3v2::Version editId3Tag(TagLib::ID3v2::Tag* tag, const AudioTagEdit& edit);

}  // namespace pelorin::taglib
