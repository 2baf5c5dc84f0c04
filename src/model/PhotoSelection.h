#pragma once

#include "model/IKImageItem.h"

#include <QList>

namespace pelorin {

// Which photo list a command works on: photos imported from the computer, or photos of a
// camera whose downloaded copies lie in the storage folder under their names on the device.
enum class PhotoSource { Computer, Camera };

// The photos a command processes: the selected items of the active list, in list order.
struct PhotoSelection {
    PhotoSource source = PhotoSource::Computer;
    QList<IKImageItem> items;
};

}  // namespace pelorin
