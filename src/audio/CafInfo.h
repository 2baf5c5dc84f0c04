#pragma once
#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

class QIODevice;

namespace pelorin {

class AtomicFileWriter;

// Core Audio Format files: the chunk list and the 'info' chunk of key/value strings, which no
// packaged library reads. Every size is checked against the file before it is used.
struct CafChunk {
    QByteArray type;         // four characters
    std::int64_t offset = 0;  // of the chunk header
    std::int64_t size = 0;    // of the chunk data; -1 for a last 'data' chunk of unknown length
};

struct CafInfoEntry {
    QString key;
    QString value;
    friend bool operator==(const CafInfoEntry&, const CafInfoEntry&) = default;
};
using CafInfoEntries = QList<CafInfoEntry>;

struct CafLayout {
    QList<CafChunk> chunks;
    QString problem;  // empty when the chunk list is sound
    bool ok() const { return problem.isEmpty(); }
};

// Reads the file header and the chunk headers of a CAF stream.
CafLayout readCafLayout(QIODevice& device);
// The entries of the first 'info' chunk, in file order; empty when there is none. problem is
// set when the chunk list or the info chunk is malformed.
CafInfoEntries readCafInfo(QIODevice& device, QString* problem = nullptr);
// Parses the body of an 'info' chunk.
CafInfoEntries parseCafInfoBody(const QByteArray& body, QString* problem = nullptr);
QByteArray renderCafInfoBody(const CafInfoEntries& entries);

// The audio facts of the 'desc', 'pakt' and 'data' chunks.
struct CafAudioFormat {
    double sampleRate = 0;
    int channels = 0;
    double durationSeconds = 0;  // 0 when the packets cannot be counted
    std::int64_t audioBytes = 0;
};
std::optional<CafAudioFormat> readCafAudioFormat(QIODevice& device);

// Writes a copy of the CAF file at sourcePath into the open writer with its 'info' chunks
// replaced by one holding entries (none when entries is empty); every other chunk is copied
// byte for byte and in order.
bool writeCafWithInfo(const QString& sourcePath, const CafInfoEntries& entries,
                      AtomicFileWriter& writer, QString* problem);

}  // namespace pelorin
