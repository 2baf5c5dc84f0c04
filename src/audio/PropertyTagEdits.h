#pragma once
// Field edits through TagLib's property maps, for the containers whose tags TagLib names by
// Vorbis-like properties (APE, ASF, WavPack, MPC, TrueAudio, and an MP3's APE tag).
#include "audio/AudioTagChanges.h"
#include "audio/AudioTagWriter.h"
#include "audio/TagLibFiles.h"

#include <taglib/tpropertymap.h>

namespace pelorin::taglib {

// The changes of the fields a tag already holds: a second tag beside the main one (an MP3's APE
// tag) follows edits of its own fields, so that it never contradicts the main tag, but does not
// take on new ones.
inline QList<AudioFieldChange> changesOfHeldFields(const TagLib::PropertyMap& held,
                                                   const QList<AudioFieldChange>& changes)
{
    QList<AudioFieldChange> kept;
    for (const AudioFieldChange& c : changes)
        if (held.contains(audioFieldRow(c.field).xiph))
            kept.append(c);
    return kept;
}

// Sets the changed fields in a whole file's or one tag's properties.
template <typename Holder>
void setProperties(Holder& holder, const QList<AudioFieldChange>& changes)
{
    TagLib::PropertyMap properties = holder.properties();
    for (const AudioFieldChange& c : changes) {
        const TagLib::String name = audioFieldRow(c.field).xiph;
        QString text = c.after;
        if (c.field == AudioField::TrackNumber && properties.contains(name) && !properties[name].isEmpty())
            text = trackTextKeepingTotal(toQString(properties[name].front()), c.after);
        properties.erase(name);
        if (!text.isEmpty())
            properties.insert(name, TagLib::StringList(toTString(text)));
    }
    holder.setProperties(properties);
}

}  // namespace pelorin::taglib
