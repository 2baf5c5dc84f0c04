#pragma once
// MP4 files that TagLib would save with a loss: they are refused with the reason instead.
#include <QString>

namespace TagLib::MP4 {
class Tag;
}

namespace pelorin::taglib {

// TagLib rewrites 'moov' trusting the box sizes; where they do not add up (a truncated file, a
// box larger than its parent) the tags land where no reader looks. Empty when the boxes are sound.
QString mp4DamageProblem(const QString& path);

// TagLib drops on saving every free-form item whose name holds a ':' of its own (Gracenote's
// "UFIDhttp://www.cddb.com/..."); the first such item, empty when there is none.
QString mp4ItemTagLibDrops(const TagLib::MP4::Tag& tag);

}  // namespace pelorin::taglib
