#include "model/LibraryByName.h"

#include <dlfcn.h>

namespace pelorin {

void* openLibraryByName(const char* versionedName, const QString& what, QString* error)
{
    void* library = dlopen(versionedName, RTLD_NOW | RTLD_LOCAL);
    if (!library && error->isEmpty())
        *error = QStringLiteral("%1 cannot be loaded: %2").arg(what, QString::fromLocal8Bit(dlerror()));
    return library;
}

void* librarySymbol(void* library, const char* name, const QString& what, QString* error)
{
    void* symbol = dlsym(library, name);
    if (!symbol && error->isEmpty())
        *error = QStringLiteral("%1 lacks %2").arg(what, QLatin1String(name));
    return symbol;
}

}  // namespace pelorin
