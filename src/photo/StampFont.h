#pragma once

#include <QString>

namespace pelorin {

// The font family the date stamp is really drawn with: the chosen family when it is installed,
// else the desktop's general font (rather than whatever a font-matching fallback happens to pick,
// which may lack the digits' shapes the user expects). Needs a QGuiApplication.
QString stampFontFamily(const QString& chosenFamily);

// Whether the chosen family is installed on this machine (case is ignored, as the font
// database does).
bool isFontFamilyInstalled(const QString& family);

}  // namespace pelorin
