#pragma once
#include "dates/PhotoDateCopy.h"
#include "dates/PlistExport.h"
#include "dates/PlistImport.h"
#include "photo/JpegExifSegmentReader.h"
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
    void showExifSegments();

private:
    // The selection, or nothing after the "No Item has been selected" alert.
    bool haveSelection();

    AppDelegate& app_;
    // The segment reader's state lives as long as the window, as its thumbnail flag is meant to.
    ExifSegmentReaderState segmentReaderState_;
    bool segmentReadRunning_ = false;
};

QString removalTitle(MetadataRemoval what);
QString dateCopyTitle(DateCopy what);
QString exportTitle(PlistExport what);
QString importTitle(PlistImport what);

}  // namespace pelorin
