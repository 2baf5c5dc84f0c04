#pragma once
#include <QStringList>

namespace pelorin {

// Shows written files in the desktop's file manager: one org.freedesktop.FileManager1 ShowItems
// call for all of them, or, where no file manager answers on the session bus, the folder opened
// by the desktop's default handler.
class DesktopReveal {
public:
    static void showFiles(const QStringList& files);
    static void openFolder(const QString& folder);

    // Tests and batch runs switch revealing off; the requests are then only recorded.
    static void setEnabled(bool enabled);
    static QStringList recordedRequests();
    static void clearRecorded();
};

}  // namespace pelorin
