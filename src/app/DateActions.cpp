#include "app/DateActions.h"

#include "app/AppDelegate.h"
#include "app/BatchDateDialog.h"
#include "app/DateDialog.h"
#include "app/GpsDialog.h"
#include "app/MapSettings.h"
#include "app/MapWindow.h"
#include "ui/TileMapView.h"
#include "app/MainWindow.h"
#include "app/PhotoEditorPanel.h"
#include "dates/EditorApply.h"
#include "dates/GpsSave.h"
#include "dates/PhotoDateEdit.h"
#include "dates/PhotoDateReading.h"
#include "dates/PhotoDateShift.h"
#include "dates/TemplateExport.h"
#include "model/FileDates.h"
#include "model/PhotoBatch.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoThumbnails.h"

#include <QFileInfo>
#include <QLayout>

namespace pelorin {

namespace {

constexpr int kDialogPictureSide = 320;

Alert noGpsData()
{
    return {QStringLiteral("No GPS Data"), QStringLiteral("The selected photo does not contain GPS information.")};
}

}  // namespace

DateActions::DateActions(AppDelegate& app)
    : QObject(&app),
      app_(app),
      dateDialog_(new DateDialog(app.window())),
      batchDialog_(new BatchDateDialog(app.window())),
      gpsDialog_(new GpsDialog(app.window())),
      previewMap_(new TileMapView(gpsDialog_->mapArea())),
      mapWindow_(new MapWindow(app.preferences(), app.window()))
{
    // The dialog's map area shows the tile map; the map writes the coordinate itself.
    previewMap_->setObjectName(QStringLiteral("previewMapView"));
    configureMap(previewMap_, app.preferences());
    if (QWidget* text = gpsDialog_->mapArea()->findChild<QWidget*>(QStringLiteral("previewCoordinateLabel")))
        text->hide();
    gpsDialog_->mapArea()->layout()->addWidget(previewMap_);
    for (QDialog* dialog : {static_cast<QDialog*>(dateDialog_), static_cast<QDialog*>(batchDialog_),
                            static_cast<QDialog*>(gpsDialog_)})
        dialog->setWindowModality(Qt::WindowModal);
    connect(dateDialog_, &DateDialog::saveRequested, this, &DateActions::ClickDateChangedSaveAction);
    connect(dateDialog_, &DateDialog::saveFileDatesRequested, this, &DateActions::ClickCreatedDateChangedSaveAction);
    connect(batchDialog_, &BatchDateDialog::choosePhotoRequested, this, &DateActions::ChoosePhotosAction);
    connect(batchDialog_, &BatchDateDialog::saveRequested, this, &DateActions::ClickMutiDateChangedSaveAction);
    connect(batchDialog_, &BatchDateDialog::saveFileDatesRequested, this,
            &DateActions::ClickMutiCreatedDateChangedSaveAction);
    connect(gpsDialog_, &GpsDialog::previewRequested, this, &DateActions::PreviewCurrentGPSInMap);
    connect(gpsDialog_, &GpsDialog::saveRequested, this, &DateActions::ClickSaveChangeGPSAction);

    PhotoEditorPanel* editor = app.window()->photoEditorView;
    connect(editor, &PhotoEditorPanel::applyRequested, this, &DateActions::ClickApplyChangeAction);
    connect(editor, &PhotoEditorPanel::templateRequested, this, &DateActions::ExportTemplateDataToPlist);
    connect(editor, &PhotoEditorPanel::gpsRequested, this, &DateActions::EditeGPSExifDataPhoto);
}

bool DateActions::haveSelection()
{
    if (!app_.currentPhotoSelection().items.isEmpty())
        return true;
    app_.showAlert(Alerts::noSelection());
    return false;
}

void DateActions::ChangeDateExifFromPhoto()
{
    const PhotoSelection selection = app_.currentPhotoSelection();
    if (selection.items.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    if (selection.items.size() > 1) {
        openBatchDateDialog();
        return;
    }
    // A camera photo is read from its downloaded copy, fetched first when it is not there yet.
    if (!app_.haveCameraCopies(selection, [this] { ChangeDateExifFromPhoto(); }))
        return;
    const QString path = photoInputPath(selection.items.first(), selection.source, app_.storagelocation);
    dateDialog_->setPhoto(makePhotoThumbnail(path, kDialogPictureSide), selection.items.first().fileName);
    dateDialog_->setDates(readPhotoDateTexts(path));
    dateDialog_->open();
}

void DateActions::openBatchDateDialog()
{
    if (!haveSelection())
        return;
    batchDialog_->open();
}

void DateActions::saveFromDialog(const QString& title, QDialog* dialog, const PhotoSave& save,
                                 const std::function<void()>& closeDialog)
{
    const PhotoSelection selection = app_.currentPhotoSelection();
    app_.runPhotoCommand(
        title, selection, [selection, save](const CommandContext& context) { return save(selection, context); },
        // A mistake keeps the dialog open with what was typed; otherwise it closes.
        [closeDialog](const CommandResult& result) {
            if (!result.alert)
                closeDialog();
        },
        dialog);
}

void DateActions::ClickDateChangedSaveAction()
{
    const PhotoDateEdit edit = dateDialog_->edit();
    saveFromDialog(
        QStringLiteral("Change Date"), dateDialog_,
        [edit](const PhotoSelection& selection, const CommandContext& context) {
            return savePhotoDates(selection, edit, context);
        },
        [this] { dateDialog_->hide(); });
}

void DateActions::ClickCreatedDateChangedSaveAction()
{
    const PhotoDateEdit edit = dateDialog_->edit();
    saveFromDialog(
        QStringLiteral("Change File Dates"), dateDialog_,
        [edit](const PhotoSelection& selection, const CommandContext& context) {
            return savePhotoFileDates(selection, edit, context);
        },
        [this] { dateDialog_->hide(); });
}

void DateActions::ChoosePhotosAction()
{
    const QString path = app_.panels.chooseFile(batchDialog_, QStringLiteral("Please select one photo to change the date."),
                                                photoAndMovieFilter());
    if (path.isEmpty())
        return;
    batchDialog_->setReferencePhoto(path, makePhotoThumbnail(path, kDialogPictureSide), readPhotoDateTexts(path));
}

void DateActions::ClickMutiDateChangedSaveAction()
{
    const BatchDateRequest request = batchDialog_->request();
    saveFromDialog(
        QStringLiteral("Change Dates"), batchDialog_,
        [request](const PhotoSelection& selection, const CommandContext& context) {
            return shiftPhotoDates(selection, request, context);
        },
        [this] {
            batchDialog_->clearFields();
            batchDialog_->hide();
        });
}

void DateActions::ClickMutiCreatedDateChangedSaveAction()
{
    const BatchDateRequest request = batchDialog_->request();
    saveFromDialog(
        QStringLiteral("Change File Dates"), batchDialog_,
        [request](const PhotoSelection& selection, const CommandContext& context) {
            return shiftPhotoFileDates(selection, request, context);
        },
        [this] {
            batchDialog_->clearFields();
            batchDialog_->hide();
        });
}

void DateActions::EditeGPSExifDataPhoto()
{
    const PhotoSelection selection = app_.currentPhotoSelection();
    if (selection.items.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    if (!app_.haveCameraCopies(selection, [this] { EditeGPSExifDataPhoto(); }))
        return;
    const QString path = photoInputPath(selection.items.first(), selection.source, app_.storagelocation);
    const PhotoProperties photo = readPhotoProperties(path);
    const PhotoEditorFill fill =
        fillPhotoEditorFields(photo.properties, PhotoFileFacts{QFileInfo(path).fileName(), {}, {}, -1});
    if (!photo.ok() || !fill.hasGps) {
        app_.showAlert(noGpsData());
        return;
    }
    gpsDialog_->setInput({fill.fields.gpsLatitude, fill.fields.gpsLongitude, fill.fields.gpsAltitude,
                          fill.fields.gpsDate, fill.fields.gpsTime});
    gpsDialog_->showPreviewCoordinate(fill.latitude, fill.longitude);
    previewMap_->showCoordinate(fill.latitude, fill.longitude);
    gpsDialog_->open();
}

void DateActions::AddGPSExifDataPhoto()
{
    if (!haveSelection())
        return;
    gpsDialog_->setNewLocationPlaceholders();
    previewMap_->clearPin();
    gpsDialog_->open();
}

void DateActions::PreviewCurrentGPSInMap()
{
    const GpsInput input = gpsDialog_->input();
    bool latitudeOk = false;
    bool longitudeOk = false;
    const double latitude = input.latitude.trimmed().toDouble(&latitudeOk);
    const double longitude = input.longitude.trimmed().toDouble(&longitudeOk);
    if (!latitudeOk || !longitudeOk) {
        app_.showAlert(Alerts::valueError(), gpsDialog_);
        return;
    }
    gpsDialog_->showPreviewCoordinate(latitude, longitude);
    previewMap_->showCoordinate(latitude, longitude);
}

void DateActions::ShowMapAction()
{
    if (mapWindow_->isVisible()) {
        mapWindow_->hide();
        return;
    }
    if (!app_.bMapPreview) {
        app_.showAlert({QStringLiteral("No GPS Data"), QStringLiteral("This photo does not contain GPS information.")});
        return;
    }
    mapWindow_->show();
    mapWindow_->showCoordinate(app_.currentCoords.x(), app_.currentCoords.y());
}

void DateActions::ClickSaveChangeGPSAction()
{
    const GpsInput input = gpsDialog_->input();
    saveFromDialog(
        QStringLiteral("Save GPS"), gpsDialog_,
        [input](const PhotoSelection& selection, const CommandContext& context) {
            return savePhotoGps(selection, input, context);
        },
        [this] { gpsDialog_->hide(); });
}

void DateActions::ClickApplyChangeAction()
{
    if (!haveSelection())
        return;
    const PhotoSelection selection = app_.currentPhotoSelection();
    const PhotoFieldChanges changes = app_.window()->photoEditorView->changes();
    app_.runPhotoCommand(QStringLiteral("Apply Changes"), selection, [selection, changes](const CommandContext& context) {
        return applyPhotoFieldChanges(selection, changes, context);
    });
}

void DateActions::ExportTemplateDataToPlist()
{
    const PhotoEditorTexts fields = app_.window()->photoEditorView->texts();
    app_.runCommand(QStringLiteral("Export Template"),
                    [fields](const CommandContext& context) { return exportTemplatePlist(fields, context); });
}

}  // namespace pelorin
