#pragma once
// Artwork and tag removal for ASF (WMA) files. TagLib is used only inside src/audio.
#include <taglib/asftag.h>

#include <QByteArray>
#include <QString>

namespace pelorin::taglib {

// Makes `image` the file's front cover: earlier front covers go, other pictures stay behind it.
void setAsfFrontCover(TagLib::ASF::Tag* tag, const QByteArray& image, const QString& mimeType);

// Removes the content description (title, author, copyright, description, rating) and every
// attribute but those that describe the encoding itself (bit-rate mode, levels, SDK version),
// pictures included.
void removeAsfTags(TagLib::ASF::Tag* tag);

}  // namespace pelorin::taglib
