#pragma once
#include <QString>

namespace pelorin {

// Compares dotted version texts part by part as numbers, so that 1.10 is newer than 1.9 and
// 1.2 equals 1.2.0. A missing or non-numeric part counts as 0; any text is accepted.
// Returns <0, 0 or >0 as `a` is older than, equal to or newer than `b`.
int compareVersions(const QString& a, const QString& b);

bool isNewerVersion(const QString& candidate, const QString& current);

}  // namespace pelorin
