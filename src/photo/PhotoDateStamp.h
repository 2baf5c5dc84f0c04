#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"
#include "model/WallClock.h"

#include <QColor>
#include <QImage>
#include <QString>

namespace pelorin {

// How the capture date is drawn: the preferences' font, size, colour, corner and format.
struct DateStampStyle {
    QString fontFamily = QStringLiteral("Lucida Grande");
    int fontSize = 14;  // text height in pixels for a picture whose shorter side is 1000 pixels
    QColor color = Qt::white;
    QString corner = QStringLiteral("Lower left corner");  // a title of the corner pop-up
    QString dateFormat = QStringLiteral("MM/DD/YYYY HH:MM");  // a title of the format pop-up
};

struct PreferenceValues;

// The style the preferences hold (font, size, corner, date format), in white: what both the
// window and the command line stamp with unless told otherwise.
DateStampStyle stampStyleFromPreferences(const PreferenceValues& preferences);

// The date in one of the three formats ("MM/DD/YYYY HH:MM", "DD/MM/YYYY HH:MM",
// "YYYY/MM/DD HH:MM"); an unknown format gives the first.
QString dateStampText(const WallClock& date, const QString& dateFormat);

// The picture with the text drawn in the style's corner, with a margin and a soft shadow.
QImage drawDateStamp(QImage picture, const QString& text, const DateStampStyle& style);

// Stamps each selected photo with its capture date (DateTimeOriginal, else DateTimeDigitized,
// else its file's modification date) and writes the small JPEG copy
// "<storage>/<base>_date.<ext>" with the photo's metadata. No intermediate file is written.
CommandResult stampPhotoDates(const PhotoSelection& selection, const DateStampStyle& style,
                              const CommandContext& context);

}  // namespace pelorin
