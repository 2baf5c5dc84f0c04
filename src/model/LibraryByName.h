#pragma once
// Libraries the program opens by their versioned name when first needed instead of linking them,
// so that commands which never need them do not load them (and what they bring) at start.
#include <QString>

namespace pelorin {

// The library, opened for the life of the process; null with "<what> cannot be loaded: <why>"
// in *error (unless *error already holds a reason).
void* openLibraryByName(const char* versionedName, const QString& what, QString* error);

// The address of a function of an opened library; null with "<what> lacks <name>" in *error
// (unless *error already holds a reason).
void* librarySymbol(void* library, const char* name, const QString& what, QString* error);

// The functions of an opened library, or why they could not all be found.
template <typename Functions>
struct OpenedLibrary {
    Functions functions;
    QString error;  // empty when every function was found
};

// The functions Open resolves, resolved on the first call (from any thread); null with the
// reason when Open failed. Later calls give the same answer.
template <typename Functions, OpenedLibrary<Functions> (*Open)()>
const Functions* openedOnce(QString* error)
{
    static const OpenedLibrary<Functions> opened = Open();
    if (!opened.error.isEmpty()) {
        if (error)
            *error = opened.error;
        return nullptr;
    }
    return &opened.functions;
}

}  // namespace pelorin
