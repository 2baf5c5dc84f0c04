#pragma once
// Field and picture edits of Vorbis comments, shared by the FLAC and Ogg writers. TagLib is used
// only inside src/audio.
#include "audio/AudioTagWriter.h"

#include <taglib/flacpicture.h>
#include <taglib/xiphcomment.h>

namespace pelorin::taglib {

// Sets each changed field; the track total stays in the form the file keeps it.
void setXiphFields(TagLib::Ogg::XiphComment* xiph, const QList<AudioFieldChange>& changes);
// A front-cover picture block of the image, with its size and depth.
TagLib::FLAC::Picture* flacPicture(const QByteArray& image);

}  // namespace pelorin::taglib
