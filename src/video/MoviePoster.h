#pragma once
#include <QImage>
#include <QString>

namespace pelorin {

// The first picture of a movie, scaled so that its longer side is at most maxSide, for the photo
// browser. Its cover picture when the file carries one. Null with the reason when the movie has
// no picture that can be decoded within the first few hundred packets.
QImage moviePosterFrame(const QString& path, int maxSide, QString* error = nullptr);

}  // namespace pelorin
