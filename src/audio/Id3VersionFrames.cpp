#include "audio/Id3VersionFrames.h"

#include <taglib/textidentificationframe.h>
#include <taglib/unknownframe.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <utility>
#include <vector>

namespace pelorin::taglib {
namespace {

using TagLib::ID3v2::Frame;
using TagLib::ID3v2::FrameList;
using TagLib::ID3v2::Tag;

// TagLib flags the v2.3 frames it reads as outdated "discard when the tag is altered" in the
// frame header, which Frame keeps protected; this is the one way to clear that flag.
struct FrameHeaderAccess : Frame {
    static Frame::Header* of(const Frame* frame) { return (frame->*(&FrameHeaderAccess::header))(); }
};

bool isDigits(const TagLib::String& text, unsigned length)
{
    if (text.size() != length)
        return false;
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

TagLib::String firstText(Tag* tag, const char* id)
{
    const FrameList frames = tag->frameList(id);
    return frames.isEmpty() ? TagLib::String() : frames.front()->toString();
}

// v2.3 keeps a date in three frames: TYER "YYYY", TDAT "DDMM" and TIME "HHMM".
TagLib::String v24Date(Tag* tag)
{
    const TagLib::String year = firstText(tag, "TYER").stripWhiteSpace();
    const TagLib::String day = firstText(tag, "TDAT").stripWhiteSpace();
    const TagLib::String time = firstText(tag, "TIME").stripWhiteSpace();
    if (!isDigits(year, 4) || !isDigits(day, 4))
        return year;
    TagLib::String date = year + "-" + day.substr(2, 2) + "-" + day.substr(0, 2);
    if (isDigits(time, 4))
        date += "T" + time.substr(0, 2) + ":" + time.substr(2, 2);
    return date;
}

void addTextFrame(Tag* tag, const char* id, const TagLib::String& text)
{
    if (text.isEmpty())
        return;
    auto frame = new TagLib::ID3v2::TextIdentificationFrame(id, TagLib::String::UTF8);
    frame->setText(text);
    tag->addFrame(frame);
}

void fitToV24(Tag* tag)
{
    if (tag->frameList("TDRC").isEmpty())
        addTextFrame(tag, "TDRC", v24Date(tag));
    if (!tag->frameList("TDRC").isEmpty())
        removeId3Frames(tag, {"TYER", "TDAT", "TIME"});
    if (tag->frameList("TDOR").isEmpty())
        addTextFrame(tag, "TDOR", firstText(tag, "TORY").stripWhiteSpace());
    if (!tag->frameList("TDOR").isEmpty())
        removeId3Frames(tag, {"TORY"});
}

// v2.2 frames TagLib reads but cannot name in v2.3/v2.4 terms: it keeps their three-letter
// IDs, which no later version can hold, so they would be dropped on save. Their v2.3 frames
// have the same layout.
const std::pair<const char*, const char*> kV22Leftovers[] = {
    {"RVA", "RVAD"}, {"EQU", "EQUA"}, {"TIM", "TIME"}, {"TDA", "TDAT"}, {"TSI", "TSIZ"}};

// Frames that only v2.4 defines, as TagLib names what it read (iTunes' v2.2 sort orders among them).
const char* const kOnlyV24[] = {"TSOA", "TSOP", "TSOT", "TSST", "TMOO", "TPRO", "TDRL", "TDEN",
                                "TDTG", "TIPL", "TMCL", "RVA2", "EQU2", "ASPI", "SEEK", "SIGN"};
// Frames that only v2.3 defines and that v2.4 has no way to hold.
const char* const kOnlyV23[] = {"RVA", "EQU", "TIM", "TDA", "TSI", "RVAD", "EQUA", "TIME", "TDAT",
                                "TSIZ", "TRDA"};

bool holdsAny(Tag* tag, const auto& ids)
{
    return std::any_of(std::begin(ids), std::end(ids),
                       [&](const char* id) { return !tag->frameList(id).isEmpty(); });
}

void renameV22Leftovers(Tag* tag)
{
    const std::vector<Frame*> frames(tag->frameList().begin(), tag->frameList().end());
    for (Frame* frame : frames) {
        for (const auto& [old, v23] : kV22Leftovers) {
            if (frame->frameID() == old) {
                tag->removeFrame(frame, false);  // filed under its ID: out, renamed, back in
                FrameHeaderAccess::of(frame)->setFrameID(v23);
                tag->addFrame(frame);
            }
        }
    }
}

// TagLib writes a v2.4 date as v2.3's TYER (+ TDAT, TIME) from its first four characters; a
// year frame of another form ("95", "2004-05", text) would be cut or dropped, so it stays a
// TYER of the same text.
void keepOddYear(Tag* tag)
{
    static const std::regex kWritten(R"(\d{4}(-\d{2}-\d{2}(T\d{2}:\d{2}(:\d{2})?)?)?)");
    const FrameList dates = tag->frameList("TDRC");
    if (dates.size() != 1)
        return;
    auto date = dynamic_cast<TagLib::ID3v2::TextIdentificationFrame*>(dates.front());
    if (!date || std::regex_match(date->toString().to8Bit(true), kWritten))
        return;
    auto year = new TagLib::ID3v2::TextIdentificationFrame("TYER", date->textEncoding());
    year->setText(date->fieldList());
    tag->removeFrame(date);
    tag->addFrame(year);
}

void fitToV23(Tag* tag)
{
    renameV22Leftovers(tag);
    keepOddYear(tag);
    // TagLib writes TDAT from a TDRC of a whole day and TIME from one with a time of day.
    const TagLib::String date = firstText(tag, "TDRC");
    const bool writesDay = date.size() >= 10 && date[4] == '-' && date[7] == '-';
    const bool writesTime = writesDay && date.size() >= 16 && date[10] == 'T' && date[13] == ':';
    // Plain pointers: a copy of TagLib's own list would delete the frames along with itself.
    const std::vector<Frame*> frames(tag->frameList().begin(), tag->frameList().end());
    for (Frame* frame : frames) {
        if (!dynamic_cast<TagLib::ID3v2::UnknownFrame*>(frame))
            continue;
        const TagLib::ByteVector id = frame->frameID();
        if ((id == "TDAT" && writesDay) || (id == "TIME" && writesTime)) {
            tag->removeFrame(frame);
            continue;
        }
        if (id == "TRDA" || id == "TSIZ" || id == "EQUA" || id == "RVAD" || id == "TDAT" || id == "TIME")
            FrameHeaderAccess::of(frame)->setTagAlterPreservation(false);
    }
}

}  // namespace

void removeId3Frames(Tag* tag, std::initializer_list<const char*> ids)
{
    for (const char* id : ids) {
        const FrameList frames = tag->frameList(id);  // a copy: removing changes the map
        for (Frame* frame : frames)
            tag->removeFrame(frame);
    }
}

TagLib::ID3v2::Version id3VersionToWrite(Tag* tag, int sourceVersion)
{
    if (sourceVersion == 4)
        return TagLib::ID3v2::v4;
    if (sourceVersion == 2 && holdsAny(tag, kOnlyV24) && !holdsAny(tag, kOnlyV23))
        return TagLib::ID3v2::v4;
    return TagLib::ID3v2::v3;
}

void fitId3FramesToVersion(Tag* tag, TagLib::ID3v2::Version version)
{
    if (version == TagLib::ID3v2::v4)
        fitToV24(tag);
    else
        fitToV23(tag);
}

}  // namespace pelorin::taglib
