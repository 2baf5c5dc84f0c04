#pragma once

#include <QByteArray>

namespace pelorin {

// Exactly length bytes of the open file at offset into out, read without moving its position
// (so a QFile's buffer is left alone); false when the file ends before or cannot be read.
bool readExactlyInto(int fd, qint64 offset, char* out, qint64 length);

// The same as a byte array; empty when the file ends before or cannot be read.
QByteArray readExactlyAt(int fd, qint64 offset, qint64 length);

}  // namespace pelorin
