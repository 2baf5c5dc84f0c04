#pragma once
// The libheif objects of one open HEIF file, shared by the metadata reader (HeifFile.cpp) and
// the picture decoder (HeifImage.cpp), which lives in the library that may use QtGui.
#include "photo/HeifFileReader.h"
#include "photo/HeifLibrary.h"

#include <QString>

#include <memory>

namespace pelorin::heif_handles {

// Everything below runs on a file openHeif opened, after it has loaded the library.
inline const HeifLibrary& heif() { return *heifLibrary(); }

struct ContextFree {
    void operator()(heif_context* context) const { heif().context_free(context); }
};
struct HandleRelease {
    void operator()(heif_image_handle* handle) const { heif().image_handle_release(handle); }
};
struct ImageRelease {
    void operator()(heif_image* image) const { heif().image_release(image); }
};
struct OptionsFree {
    void operator()(heif_decoding_options* options) const { heif().decoding_options_free(options); }
};
using ContextPtr = std::unique_ptr<heif_context, ContextFree>;
using HandlePtr = std::unique_ptr<heif_image_handle, HandleRelease>;
using ImagePtr = std::unique_ptr<heif_image, ImageRelease>;

// Stores reason in error (when given); answers false.
bool fail(QString* error, const QString& reason);
QString heifReason(const heif_error& err);

// An open file with its primary image; both null when the file could not be read.
struct OpenedHeif {
    std::unique_ptr<HeifFileReader> reader;  // declared first: the context reads through it until freed
    ContextPtr context;
    HandlePtr primary;
    qint64 fileSize = 0;
};

// Loads libheif and opens the file at path; primary is null, with the reason in error, when the
// file cannot be read.
OpenedHeif openHeif(const QString& path, QString* error);

}  // namespace pelorin::heif_handles
