#pragma once

#include "model/WallClock.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace pelorin {

// The two forms in which the editors accept and the metadata stores dates.
enum class DateTextForm {
    Exif,  // "yyyy:MM:dd HH:mm:ss"
    Dash,  // "yyyy-MM-dd HH:mm:ss"
};

// Parses the whole text (surrounding blanks ignored) in one form; valid calendar dates only.
std::optional<WallClock> parseDateText(QStringView text, DateTextForm form);
// The EXIF form first, the dash form only when that gives nothing.
std::optional<WallClock> parseDateText(QStringView text);

QString renderDateText(const WallClock& clock, DateTextForm form);

// True when the text is a date in one of the two accepted forms.
bool CheckDateFormatWithDateString(const QString& text);

// Moves a date text by the given seconds on the wall clock and answers it in dash form; the text
// comes back unchanged when it is no date or the result leaves years 1 to 9999. A fraction of a
// second is dropped the way a clock shows it (toward the earlier second).
QString GetChangeDateforExifDate(const QString& text, double seconds);

// The same shift, reporting failure instead of echoing the input.
std::optional<WallClock> shiftDateText(QStringView text, double seconds);

// A date text in dash form turned into EXIF form: every '-' becomes ':'.
QString toExifForm(QString text);

}  // namespace pelorin
