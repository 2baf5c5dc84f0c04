#pragma once

#include <QString>

namespace pelorin::test {

// Folder of the sample files (tests/data), fixed at configure time.
inline QString dataPath(const QString& name)
{
    return QStringLiteral(PELORIN_TEST_DATA_DIR "/") + name;
}

}  // namespace pelorin::test
