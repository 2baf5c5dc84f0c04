#pragma once
#include "audio/AudioTagWriter.h"

namespace pelorin {

// Each container's writer; audioTagWriterFor chooses among them.
std::unique_ptr<AudioTagWriter> mpegTagWriter();
std::unique_ptr<AudioTagWriter> flacTagWriter();
std::unique_ptr<AudioTagWriter> wavTagWriter();
std::unique_ptr<AudioTagWriter> aiffTagWriter();
std::unique_ptr<AudioTagWriter> cafTagWriter();
std::unique_ptr<AudioTagWriter> mp4TagWriter();     // an iTunes item list, through TagLib
std::unique_ptr<AudioTagWriter> mp4KeyTagWriter();  // QuickTime keys, through the box writer
std::unique_ptr<AudioTagWriter> oggTagWriter(AudioContainer container);
std::unique_ptr<AudioTagWriter> asfTagWriter();
std::unique_ptr<AudioTagWriter> propertyTagWriter(AudioContainer container);  // APE, WavPack, MPC, TTA

}  // namespace pelorin
