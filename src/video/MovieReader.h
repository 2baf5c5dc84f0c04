#pragma once

#include "model/IKImageItem.h"

#include <QStringList>
#include <QVariantMap>

namespace pelorin {

// One movie read for the media list: the record with its file facts, index attributes and
// container items, the attributes themselves, and a reason for everything that could not be read.
struct MovieReading {
    IKImageItem item;
    QVariantMap attributes;
    QStringList problems;
    bool containerRead = false;  // the metadata of the container could be read
};

MovieReading readMovieFile(const QString& path);

// Fills the record from the index attributes ("kMDItemDurationSeconds", "kMDItemKind", ...).
void applyIndexAttributes(IKImageItem& item, const QVariantMap& attributes);

}  // namespace pelorin
