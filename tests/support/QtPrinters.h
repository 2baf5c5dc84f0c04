#pragma once

// Readable Qt values in GoogleTest's failure messages.

#include <QString>
#include <QVariant>

#include <ostream>

inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList& l, std::ostream* os) { *os << '[' << l.join(QStringLiteral(", ")).toStdString() << ']'; }
