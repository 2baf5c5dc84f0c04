#pragma once
#include "audio/AudioItems.h"

#include <QString>

namespace pelorin {

// Reads a finished output back before it takes its name: it must not be empty, must parse as the
// source's container and must hold audio (a rate, channels, a bit rate and a length), with the
// source's sample rate and channels, and the source's audio bytes. Answers why the output is
// refused, or an empty string.
QString audioReadBackProblem(const QString& outputPath, const QString& sourcePath, const AudioReading& source);

}  // namespace pelorin
