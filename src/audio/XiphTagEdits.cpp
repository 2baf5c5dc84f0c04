#include "audio/XiphTagEdits.h"

#include "audio/AudioTagChanges.h"
#include "audio/TagLibFiles.h"

#include <QImage>

namespace pelorin::taglib {
namespace {

// Vorbis comments keep the total either in the track number ("3/12") or in a field of its own;
// an edit keeps whichever form the file uses.
void setXiphTrack(TagLib::Ogg::XiphComment* xiph, const QString& typed)
{
    const TagLib::String number = audioFieldRow(AudioField::TrackNumber).xiph;
    const TagLib::Ogg::FieldListMap fields = xiph->fieldListMap();
    const auto stored = fields.find(number);
    const QString storedText = stored == fields.end() || stored->second.isEmpty()
                                   ? QString() : toQString(stored->second.front());
    const QList<QByteArray> totals = xiphTrackTotalNames();
    const bool separateTotal = std::any_of(totals.begin(), totals.end(),
                                           [&](const QByteArray& name) { return fields.contains(name.constData()); });
    xiph->removeFields(number);
    if (typed.isEmpty())
        return;
    if (!separateTotal) {
        xiph->addField(number, toTString(trackTextKeepingTotal(storedText, typed)));
        return;
    }
    xiph->addField(number, toTString(typed.section(QLatin1Char('/'), 0, 0).trimmed()));
    if (typed.contains(QLatin1Char('/'))) {
        for (const QByteArray& name : totals)
            xiph->removeFields(name.constData());
        xiph->addField(xiphTrackTotalName(), toTString(typed.section(QLatin1Char('/'), 1, 1).trimmed()));
    }
}

}  // namespace

void setXiphFields(TagLib::Ogg::XiphComment* xiph, const QList<AudioFieldChange>& changes)
{
    for (const AudioFieldChange& c : changes) {
        if (c.field == AudioField::TrackNumber) {
            setXiphTrack(xiph, c.after);
            continue;
        }
        const TagLib::String name = audioFieldRow(c.field).xiph;
        xiph->removeFields(name);
        if (!c.after.isEmpty())
            xiph->addField(name, toTString(c.after));
    }
}

TagLib::FLAC::Picture* flacPicture(const QByteArray& image)
{
    auto picture = new TagLib::FLAC::Picture;
    picture->setType(TagLib::FLAC::Picture::FrontCover);
    picture->setMimeType(toTString(artworkMimeType(image)));
    picture->setData(toVector(image));
    const QImage decoded = QImage::fromData(image);
    picture->setWidth(decoded.width());
    picture->setHeight(decoded.height());
    picture->setColorDepth(decoded.depth());
    return picture;
}

}  // namespace pelorin::taglib
