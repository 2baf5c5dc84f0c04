#pragma once
#include "audio/AudioItems.h"

#include <QString>

namespace pelorin {

// Reads a finished output back before it takes its name: it must not be empty, must parse as the
// source's container and must still hold the source's audio (same sample rate and channels, a
// duration when the source has one). Answers why the output is refused, or an empty string.
QString audioReadBackProblem(const QString& outputPath, const AudioReading& source);

}  // namespace pelorin
