#include "audio/AudioStoredOrder.h"

#include "isobmff/BoxTree.h"
#include "isobmff/ByteSource.h"

#include <QFile>

namespace pelorin {
namespace {

// Chunks walked before giving up on a RIFF file; real files hold a handful.
constexpr int kMaxChunks = 10000;
// An INFO list larger than this is not read for its order.
constexpr qint64 kMaxInfoList = 16 * 1024 * 1024;

quint32 le32(const QByteArray& b, qsizetype at)
{
    return quint32(uchar(b[at])) | quint32(uchar(b[at + 1])) << 8 | quint32(uchar(b[at + 2])) << 16
           | quint32(uchar(b[at + 3])) << 24;
}

}  // namespace

QList<QByteArray> storedIlstOrder(const QString& path)
{
    QList<QByteArray> order;
    FileByteSource source(path);
    QString error;
    if (!source.open(&error))
        return order;
    const BoxTree tree = readBoxTree(source);
    const Box* ilst = tree.find("moov/udta/meta/ilst");
    if (!ilst)
        return order;
    for (const Box& child : ilst->children)
        order.append(child.type);
    return order;
}

QList<QByteArray> storedRiffInfoOrder(const QString& path)
{
    QList<QByteArray> order;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return order;
    const QByteArray header = file.read(12);
    if (header.size() < 12 || !header.startsWith("RIFF") || header.mid(8, 4) != "WAVE")
        return order;
    qint64 pos = 12;
    for (int n = 0; n < kMaxChunks && pos + 8 <= file.size(); ++n) {
        file.seek(pos);
        const QByteArray chunk = file.read(12);
        if (chunk.size() < 8)
            break;
        const qint64 size = le32(chunk, 4);
        if (chunk.startsWith("LIST") && chunk.size() == 12 && chunk.mid(8, 4) == "INFO" && size <= kMaxInfoList) {
            const QByteArray list = file.read(size - 4);
            for (qsizetype at = 0; at + 8 <= list.size();) {
                order.append(list.mid(at, 4));
                const qint64 fieldSize = le32(list, at + 4);
                at += 8 + fieldSize + (fieldSize & 1);
            }
            return order;
        }
        pos += 8 + size + (size & 1);
    }
    return order;
}

}  // namespace pelorin
