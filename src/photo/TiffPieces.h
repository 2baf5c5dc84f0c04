#pragma once

#include <QByteArray>

#include <functional>

namespace pelorin {

// Called for each strip or tile of a TIFF: the offset of the directory it belongs to, and where
// the piece lies in the file.
using TiffPieceVisitor = std::function<void(quint32 directory, quint32 offset, quint32 length)>;

// Where a strip's or tile's offset and byte count are written in the file: each a SHORT (2) or
// LONG (4) in the file's byte order.
struct TiffPieceSlots {
    quint32 directory = 0;
    quint32 offset = 0;
    quint32 length = 0;
    qsizetype offsetAt = 0;
    int offsetSize = 0;
    qsizetype lengthAt = 0;
    int lengthSize = 0;
};
using TiffPieceSlotVisitor = std::function<void(const TiffPieceSlots&)>;

// Walks every directory of a TIFF (the IFD chain and the SubIFDs) and checks that each one, its
// values and its strips or tiles lie inside the file; false when one does not. Each piece goes
// to visit in file-structure order.
bool walkTiffPieces(const QByteArray& bytes, const TiffPieceVisitor& visit = {});
// The same walk, telling where each piece's offset and length are written.
bool walkTiffPieceSlots(const QByteArray& bytes, const TiffPieceSlotVisitor& visit);

}  // namespace pelorin
