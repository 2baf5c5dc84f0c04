#pragma once
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

#include <QObject>
#include <functional>

class QDialog;

namespace pelorin {

class AppDelegate;
class BatchDateDialog;
class DateDialog;
class GpsDialog;
class MapWindow;
class TileMapView;

// The photo commands that go through a dialog or the editor: the date of one photo, the dates
// of many, the GPS location, and the editor's apply and template.
class DateActions : public QObject {
    Q_OBJECT
public:
    explicit DateActions(AppDelegate& app);

    DateDialog* dateDialog() const { return dateDialog_; }
    BatchDateDialog* batchDialog() const { return batchDialog_; }
    GpsDialog* gpsDialog() const { return gpsDialog_; }
    TileMapView* previewMapView() const { return previewMap_; }
    MapWindow* mapWindow() const { return mapWindow_; }

public slots:
    void ChangeDateExifFromPhoto();
    void openBatchDateDialog();
    void EditeGPSExifDataPhoto();
    void AddGPSExifDataPhoto();
    void ClickApplyChangeAction();
    void ExportTemplateDataToPlist();
    void ShowMapAction();

private:
    void ClickDateChangedSaveAction();
    void ClickCreatedDateChangedSaveAction();
    void ChoosePhotosAction();
    void ClickMutiDateChangedSaveAction();
    void ClickMutiCreatedDateChangedSaveAction();
    void PreviewCurrentGPSInMap();
    void ClickSaveChangeGPSAction();
    bool haveSelection();
    using PhotoSave = std::function<CommandResult(const PhotoSelection&, const CommandContext&)>;
    // Runs a dialog's save on the current selection; the dialog closes unless an alert came.
    void saveFromDialog(const QString& title, QDialog* dialog, const PhotoSave& save,
                        const std::function<void()>& closeDialog);

    AppDelegate& app_;
    DateDialog* dateDialog_;
    BatchDateDialog* batchDialog_;
    GpsDialog* gpsDialog_;
    TileMapView* previewMap_;
    MapWindow* mapWindow_;
};

}  // namespace pelorin
