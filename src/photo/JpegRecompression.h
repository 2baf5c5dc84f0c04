#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QImage>
#include <QString>

namespace pelorin {

// JPEG quality of the small copies. Measured on camera and phone photos (450x600 to 858x570):
// quality 40 gives 36-61 KB where quality 90 gives 107-170 KB and the originals 100-260 KB,
// without the blocks that quality 10 shows in skies and faces.
constexpr int kSmallCopyJpegQuality = 40;

// Re-encoding holds the whole upright picture in memory, 4 bytes a pixel: larger pictures are
// refused with the reason. 110 megapixels take in the 102-megapixel medium-format cameras and
// bound the decoded picture to about 440 MB.
constexpr qint64 kMaxReencodedPixels = qint64(110) * 1000 * 1000;

// "<folder>/<base>_date.<ext>" for a photo; a PNG (or any non-JPEG) source gives ".jpg", since
// the copy holds JPEG data. An empty folder means the photo's own folder.
QString recompressedOutputPath(const QString& sourcePath, const QString& folder = {});

// Writes a small JPEG copy of a photo: the picture turned upright, EXIF, IPTC, XMP and the ICC
// profile carried over with the orientation set to 1 and the pixel dimensions updated (the old
// embedded thumbnail is dropped), and the file dates set to the capture date. Appends the output or the
// reason to the result. When picture is not null it replaces the photo's own pixels (a stamped
// picture), so no intermediate file is ever written.
void compressPhotowithFilePath(const QString& sourcePath, const QString& outputPath,
                               const CommandContext& context, CommandResult& result,
                               const QImage& picture = {});

// The photo's pixels, upright; null with the reason when it cannot be decoded.
QImage decodeUprightPhoto(const QString& path, QString* error);

// Recompresses each photo of the list into the output folder of the context.
CommandResult recompressPhotos(const QStringList& paths, const CommandContext& context);

}  // namespace pelorin
