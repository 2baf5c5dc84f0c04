#pragma once
// The frames that ID3v2.3 and ID3v2.4 name differently. An edited tag is saved in the version
// the file had; these make its frames fit that version. TagLib is used only inside src/audio.
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>

#include <initializer_list>

namespace pelorin::taglib {

void removeId3Frames(TagLib::ID3v2::Tag* tag, std::initializer_list<const char*> ids);

// The version an edited tag is saved in: the file's own, except that a v2.2 tag (which TagLib
// cannot write) becomes v2.4 when it holds frames only v2.4 defines (iTunes' sort orders) and
// none that only v2.3 can hold (volume and equalisation adjustments, date parts), else v2.3.
TagLib::ID3v2::Version id3VersionToWrite(TagLib::ID3v2::Tag* tag, int sourceVersion);

// Before a save in `version`:
// - v2.3: gives v2.2 frames TagLib left under their three-letter IDs (RVA, EQU, TIM, TDA, TSI)
//   their v2.3 IDs; keeps a year that is not a plain date as TYER of the same text; keeps the v2.3 frames TagLib reads as outdated (TRDA, TSIZ, EQUA, RVAD, and TDAT or
//   TIME it could not fold into the year) instead of dropping them; TDAT and TIME only where
//   TagLib does not write them anew from the date.
// - v2.4: turns v2.3 date frames into their v2.4 frames (TYER + TDAT + TIME -> TDRC,
//   TORY -> TDOR) where the v2.4 frame is missing, so that v2.4 readers find the year.
void fitId3FramesToVersion(TagLib::ID3v2::Tag* tag, TagLib::ID3v2::Version version);

}  // namespace pelorin::taglib
