#pragma once

#include <QByteArray>

#include <functional>

namespace pelorin {

// Called for each strip or tile of a TIFF: the offset of the directory it belongs to, and where
// the piece lies in the file.
using TiffPieceVisitor = std::function<void(quint32 directory, quint32 offset, quint32 length)>;

// Walks every directory of a TIFF (the IFD chain and the SubIFDs) and checks that each one, its
// values and its strips or tiles lie inside the file; false when one does not. Each piece goes
// to visit in file-structure order.
bool walkTiffPieces(const QByteArray& bytes, const TiffPieceVisitor& visit = {});

}  // namespace pelorin
