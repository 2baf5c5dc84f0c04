#pragma once

#include <QString>

#include <optional>

namespace pelorin {

// The date text ("yyyy:MM:dd HH:mm:ss") a movie's file name (without extension) gives: the
// manual parse of the name first, kept when the detector finds a date in it; otherwise our own
// detector of the common camera and phone naming schemes over the whole name. Nothing when
// neither gives a date.
std::optional<QString> dateTextFromFileName(const QString& baseName);

// The manual parse alone: digits and the separators "_ .-" of the name, split and reassembled.
std::optional<QString> manualDateTextFromName(const QString& baseName);

// The first date (and time, midnight when the text has none) that the detector finds in a
// text, as "yyyy:MM:dd HH:mm:ss"; only valid calendar dates and times count.
std::optional<QString> detectDateText(const QString& text);

}  // namespace pelorin
