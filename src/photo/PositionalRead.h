#pragma once

#include <QByteArray>

namespace pelorin {

// Exactly length bytes of the open file at offset, read without moving its position (so a
// QFile's buffer is left alone); empty when the file ends before or cannot be read.
QByteArray readExactlyAt(int fd, qint64 offset, qint64 length);

}  // namespace pelorin
