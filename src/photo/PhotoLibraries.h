#pragma once

namespace pelorin {

// Prepares exiv2 and libheif for use from several threads. Safe and cheap to call any number of
// times from any thread; every entry point of the photo engine calls it first.
void initializePhotoLibraries();

}  // namespace pelorin
