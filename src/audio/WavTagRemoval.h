#pragma once
// TagLib is used only inside src/audio.
#include "audio/TagLibFiles.h"

namespace pelorin::taglib {

// What "remove all tags" takes from a WAV file besides its ID3 and INFO tags: the XMP packet
// ('_PMX') and the broadcast cart chunk go; of the Broadcast Wave 'bext' chunk the texts that
// describe or identify the recording go (description, originator, its reference, the
// origination date and time, the UMID, the coding history), while the time reference, the
// version and the loudness values stay, because editors place and level the sound by them.
void removeWavDescriptiveChunks(WavChunkFile& wav);

}  // namespace pelorin::taglib
