#pragma once
// The writers that edit a song through TagLib. TagLib is used only inside src/audio.
#include "audio/AudioTagWriter.h"

#include <taglib/tfile.h>
#include <taglib/tiostream.h>

namespace pelorin {

// TagLib saves in place, so these writers edit a scratch copy of the song in the storage folder
// and give it the target's name once it is checked. Each container's writer opens its own TagLib
// class on the copy and edits it.
class TagLibTagWriter : public AudioTagWriter {
public:
    explicit TagLibTagWriter(AudioContainer container) : container_(container) {}
    bool write(const QString& source, const QString& target, const AudioTagEdit& edit,
               const OutputCheck& check, Durability durability, QString* problem) const final;

protected:
    // Opens the copy on stream, applies the edit and saves; false with the reason when not.
    virtual bool edit(TagLib::IOStream* stream, const AudioTagEdit& edit, QString* problem) const = 0;
    // Why TagLib must not save this source (damage it would save in its own reading), or empty.
    virtual QString damage(const QString& source) const;
    // A last step on the saved copy.
    virtual bool finish(const QString& copyPath) const;
    // False, with the reason, when TagLib could not parse the copy as this container.
    bool readable(const TagLib::File& file, QString* problem) const;

private:
    AudioContainer container_;
};

}  // namespace pelorin
