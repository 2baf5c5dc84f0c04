#include "audio/Id3TagEdits.h"

#include "audio/AudioTagChanges.h"
#include "audio/Id3VersionFrames.h"
#include "audio/TagLibFiles.h"

#include <taglib/attachedpictureframe.h>
#include <taglib/commentsframe.h>
#include <taglib/textidentificationframe.h>

namespace pelorin::taglib {
namespace {

void setId3Comment(TagLib::ID3v2::Tag* tag, const QString& text)
{
    using namespace TagLib::ID3v2;
    for (Frame* frame : tag->frameListMap()[id3CommentFrame()]) {
        auto comment = dynamic_cast<CommentsFrame*>(frame);
        if (!comment || comment->description().startsWith("iTun"))
            continue;
        if (text.isEmpty())
            tag->removeFrame(comment);
        else
            comment->setText(toTString(text));
        return;
    }
    if (text.isEmpty())
        return;
    auto comment = new CommentsFrame(TagLib::String::UTF16);
    comment->setLanguage("eng");
    comment->setText(toTString(text));
    tag->addFrame(comment);
}

void setId3Text(TagLib::ID3v2::Tag* tag, const QByteArray& id, const QString& text)
{
    using namespace TagLib::ID3v2;
    const TagLib::ByteVector frameId = toVector(id);
    const FrameList existing = tag->frameListMap()[frameId];
    TextIdentificationFrame* kept = nullptr;
    for (Frame* frame : existing) {
        auto textFrame = dynamic_cast<TextIdentificationFrame*>(frame);
        if (!kept && textFrame && !text.isEmpty())
            kept = textFrame;
        else
            tag->removeFrame(frame);
    }
    if (text.isEmpty())
        return;
    if (!kept) {
        kept = new TextIdentificationFrame(frameId, TagLib::String::UTF16);
        tag->addFrame(kept);
    }
    kept->setText(toTString(text));
}

QString id3Text(TagLib::ID3v2::Tag* tag, const char* id)
{
    const TagLib::ID3v2::FrameList frames = tag->frameList(id);
    return frames.isEmpty() ? QString() : toQString(frames.front()->toString());
}

}  // namespace

void setId3Fields(TagLib::ID3v2::Tag* tag, const QList<AudioFieldChange>& changes)
{
    for (const AudioFieldChange& change : changes) {
        const char* frame = audioFieldRow(change.field).id3;
        if (change.field == AudioField::Comments) {
            setId3Comment(tag, change.after);
        } else if (change.field == AudioField::TrackNumber) {
            setId3Text(tag, frame, trackTextKeepingTotal(id3Text(tag, frame), change.after));
        } else {
            // The year's frame holds the whole date; an older date frame left behind would
            // keep the old year.
            if (change.field == AudioField::Year)
                for (const QByteArray& older : id3OlderDateFrames())
                    tag->removeFrames(toVector(older));
            setId3Text(tag, frame, change.after);
        }
    }
}

void setId3Picture(TagLib::ID3v2::Tag* tag, const QByteArray& image)
{
    using namespace TagLib::ID3v2;
    const FrameList pictures = tag->frameListMap()[audioArtworkKeys().id3];  // a copy: frames go below
    for (Frame* frame : pictures) {
        auto picture = dynamic_cast<AttachedPictureFrame*>(frame);
        if (picture && picture->type() == AttachedPictureFrame::FrontCover)
            tag->removeFrame(picture);
    }
    auto picture = new AttachedPictureFrame;
    picture->setTextEncoding(TagLib::String::UTF16);
    picture->setMimeType(toTString(artworkMimeType(image)));
    picture->setType(AttachedPictureFrame::FrontCover);
    picture->setPicture(toVector(image));
    tag->addFrame(picture);
}

TagLib::ID3v2::Version editId3Tag(TagLib::ID3v2::Tag* tag, const AudioTagEdit& edit)
{
    setId3Fields(tag, edit.changes);
    if (!edit.artwork.isEmpty())
        setId3Picture(tag, edit.artwork);
    const TagLib::ID3v2::Version version = id3VersionToWrite(tag, edit.id3Version);
    fitId3FramesToVersion(tag, version);
    return version;
}

}  // namespace pelorin::taglib
