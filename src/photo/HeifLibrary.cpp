#include "photo/HeifLibrary.h"

#include "model/LibraryByName.h"

namespace pelorin {
namespace {

OpenedLibrary<HeifLibrary> openLibrary()
{
    OpenedLibrary<HeifLibrary> opened;
    const QString what = QStringLiteral("libheif");
    void* library = openLibraryByName(PELORIN_HEIF_SONAME, what, &opened.error);
    if (!library)
        return opened;
#define PELORIN_HEIF_RESOLVE(name)                                                                                    \
    opened.functions.name = reinterpret_cast<decltype(&::heif_##name)>(librarySymbol(library, "heif_" #name, what, \
                                                                                     &opened.error));
    PELORIN_HEIF_FUNCTIONS(PELORIN_HEIF_RESOLVE)
#undef PELORIN_HEIF_RESOLVE
    if (opened.error.isEmpty())
        opened.functions.init(nullptr);  // registers the codecs; never undone
    return opened;
}

}  // namespace

const HeifLibrary* heifLibrary(QString* error)
{
    return openedOnce<HeifLibrary, openLibrary>(error);
}

}  // namespace pelorin
