#pragma once
#include <QStringList>

namespace pelorin {

// Shows written files in the desktop's file manager: one org.freedesktop.FileManager1 ShowItems
// call for all of them, or, where no file manager answers on the session bus, the folder opened
// by the desktop's default handler.
class DesktopReveal {
public:
    // False when nothing on this desktop could show them (no file manager on the bus and no
    // handler for folders), so the caller can say where the files are instead.
    static bool showFiles(const QStringList& files);
    static bool openFolder(const QString& folder);

    // Tests and batch runs switch revealing off; the requests are then only recorded.
    static void setEnabled(bool enabled);
    static QStringList recordedRequests();
    static void clearRecorded();
};

}  // namespace pelorin
