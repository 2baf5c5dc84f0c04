#pragma once
#include "dates/PhotoDateCopy.h"
#include "dates/PlistExport.h"
#include "dates/PlistImport.h"
#include "photo/PhotoRemoval.h"

#include <QObject>

namespace pelorin {

class AppDelegate;

// The one-click photo commands of the menus: metadata removal, date and name copies, property
// list exports and imports, the date stamp and small copies. Each takes the selection of the
// active photo source and runs its engine command.
class PhotoCommandActions : public QObject {
    Q_OBJECT
public:
    explicit PhotoCommandActions(AppDelegate& app);

    void removeMetadata(MetadataRemoval what);
    void copyDate(DateCopy what);
    void exportPlist(PlistExport what);
    void importPlist(PlistImport what);

public slots:
    void exportCurrentPhotoPlist();
    void stampDates();
    void recompress();

private:
    // The selection, or nothing after the "No Item has been selected" alert.
    bool haveSelection();

    AppDelegate& app_;
};

QString removalTitle(MetadataRemoval what);
QString dateCopyTitle(DateCopy what);
QString exportTitle(PlistExport what);
QString importTitle(PlistImport what);

}  // namespace pelorin
