#include "audio/Id3VersionFrames.h"

#include <taglib/textidentificationframe.h>
#include <taglib/unknownframe.h>

#include <algorithm>
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

void fitToV23(Tag* tag)
{
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

void fitId3FramesToVersion(Tag* tag, TagLib::ID3v2::Version version)
{
    if (version == TagLib::ID3v2::v4)
        fitToV24(tag);
    else
        fitToV23(tag);
}

}  // namespace pelorin::taglib
