#include "video/MovieChanges.h"

namespace pelorin {

void MovieChanges::take(MovieField field, int input, const QString& value)
{
    switch (field) {
    case MovieField::RecordingDate:
        recordingDate = value;
        break;
    case MovieField::CreatedDate:
        createdDate = value;
        break;
    case MovieField::Artwork:
        artworkPath = value;
        break;
    case MovieField::Location: {
        MovieLocationText& place = location ? *location : location.emplace();
        (input == 0 ? place.latitude : input == 1 ? place.longitude : place.altitude) = value;
        break;
    }
    default:
        texts[field] = value.isEmpty() ? std::nullopt : std::optional(value);
    }
}

bool MovieChanges::onlyFileDates() const
{
    return texts.empty() && !recordingDate && !location && !artworkPath;
}

bool MovieChanges::isEmpty() const
{
    return onlyFileDates() && !createdDate;
}

}  // namespace pelorin
