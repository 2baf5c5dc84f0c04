#include "app/CommandMenus.h"

#include "app/AppDelegate.h"
#include "app/DateActions.h"
#include "app/ImportActions.h"
#include "app/CameraActions.h"
#include "app/MainWindow.h"
#include "app/MediaEditActions.h"
#include "app/PhotoCommandActions.h"
#include "app/PhotoEditorPanel.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>

namespace pelorin {

template <typename Slot>
QAction* CommandMenus::add(QMenu* menu, const QString& objectName, const QString& text, Slot slot)
{
    QAction* action = actions_.value(objectName);
    if (!action) {
        action = new QAction(text, app_.window());
        action->setObjectName(objectName);
        QObject::connect(action, &QAction::triggered, &app_, slot);
        actions_.insert(objectName, action);
    }
    menu->addAction(action);
    return action;
}

CommandMenus::CommandMenus(AppDelegate& app) : app_(app)
{
    buildPopUpMenus();
    buildMenuBar();
    connectButtons();
}

CommandMenus::~CommandMenus() = default;

void CommandMenus::buildPopUpMenus()
{
    QWidget* w = app_.window();
    ImportActions* imports = app_.importActions();
    PhotoCommandActions* photos = app_.photoCommands();
    DateActions* dates = app_.dateActions();

    importPhotoMenu = new QMenu(QStringLiteral("Import"), w);
    importPhotoMenu->setObjectName(QStringLiteral("importPhotoMenu"));
    add(importPhotoMenu, QStringLiteral("actionImportPhotos"), QStringLiteral("Import Photos…"),
        [imports] { imports->OpenComputerFoldertoImportAction(); });
    add(importPhotoMenu, QStringLiteral("actionImportFolder"), QStringLiteral("Import Folder…"),
        [imports] { imports->importFolderAction(); });
    add(importPhotoMenu, QStringLiteral("actionClearAndImport"), QStringLiteral("Clear and Import…"),
        [imports] { imports->ClickClearandImportPhotosAction(); });
    importPhotoMenu->addSeparator();
    add(importPhotoMenu, QStringLiteral("actionRemoveSelectedPhotos"), QStringLiteral("Remove Selected from List"),
        [imports] { imports->ClearSelectedLeftPhotos(); });
    add(importPhotoMenu, QStringLiteral("actionClearPhotos"), QStringLiteral("Clear All"),
        [imports] { imports->ClearLeftPhotos(); });

    changePhotoDateMenu = new QMenu(QStringLiteral("Date"), w);
    changePhotoDateMenu->setObjectName(QStringLiteral("changePhotoDateMenu"));
    add(changePhotoDateMenu, QStringLiteral("actionChangeDate"), QStringLiteral("Change Date…"),
        [dates] { dates->ChangeDateExifFromPhoto(); });
    changePhotoDateMenu->addSeparator();
    for (DateCopy what : {DateCopy::ExifToCreated, DateCopy::CreatedToCamera, DateCopy::CreatedToModified,
                          DateCopy::ModifiedToCreated, DateCopy::NameToComment}) {
        add(changePhotoDateMenu, QStringLiteral("actionDateCopy%1").arg(int(what)), dateCopyTitle(what),
            [photos, what] { photos->copyDate(what); });
    }

    changeMutiPhotoDateMenu = new QMenu(QStringLiteral("Batch Dates"), w);
    changeMutiPhotoDateMenu->setObjectName(QStringLiteral("changeMutiPhotoDateMenu"));
    add(changeMutiPhotoDateMenu, QStringLiteral("actionBatchDates"), QStringLiteral("Change Dates of Selected Photos…"),
        [dates] { dates->openBatchDateDialog(); });
    changeMutiPhotoDateMenu->addSeparator();
    for (DateCopy what : {DateCopy::ExifToCreated, DateCopy::CreatedToCamera, DateCopy::CreatedToModified,
                          DateCopy::ModifiedToCreated})
        changeMutiPhotoDateMenu->addAction(action(QStringLiteral("actionDateCopy%1").arg(int(what))));

    editExifMenu = new QMenu(QStringLiteral("Metadata"), w);
    editExifMenu->setObjectName(QStringLiteral("editExifMenu"));
    add(editExifMenu, QStringLiteral("actionEditPhoto"), QStringLiteral("Edit Metadata…"),
        [this] { app_.StartEditViewAction(); });
    editExifMenu->addAction(action(QStringLiteral("actionChangeDate")));
    editExifMenu->addAction(action(QStringLiteral("actionBatchDates")));
    add(editExifMenu, QStringLiteral("actionEditGps"), QStringLiteral("Edit GPS Location…"),
        [dates] { dates->EditeGPSExifDataPhoto(); });
    add(editExifMenu, QStringLiteral("actionAddGps"), QStringLiteral("Add GPS Location…"),
        [dates] { dates->AddGPSExifDataPhoto(); });
    add(editExifMenu, QStringLiteral("actionShowMap"), QStringLiteral("Show Location on Map"),
        [dates] { dates->ShowMapAction(); });
    editExifMenu->addSeparator();
    add(editExifMenu, QStringLiteral("actionStampDates"), QStringLiteral("Stamp Date on Photos"),
        [photos] { photos->stampDates(); });
    add(editExifMenu, QStringLiteral("actionSmallCopies"), QStringLiteral("Make Small Copies"),
        [photos] { photos->recompress(); });
    editExifMenu->addSeparator();
    add(editExifMenu, QStringLiteral("actionExifSegments"), QStringLiteral("Show EXIF Segments…"),
        [photos] { photos->showExifSegments(); });

    removeExifMenu = new QMenu(QStringLiteral("Remove Metadata"), w);
    removeExifMenu->setObjectName(QStringLiteral("removeExifMenu"));
    for (MetadataRemoval what : {MetadataRemoval::Exif, MetadataRemoval::Gps, MetadataRemoval::Iptc,
                                 MetadataRemoval::ExifAndGps, MetadataRemoval::All}) {
        if (what == MetadataRemoval::All)
            removeExifMenu->addSeparator();
        add(removeExifMenu, QStringLiteral("actionRemove%1").arg(int(what)), removalTitle(what),
            [photos, what] { photos->removeMetadata(what); });
    }

    importandExportMenu = new QMenu(QStringLiteral("Property Lists"), w);
    importandExportMenu->setObjectName(QStringLiteral("importandExportMenu"));
    for (PlistExport what : {PlistExport::Tiff, PlistExport::Exif, PlistExport::ExifAndTiff, PlistExport::ExifAndGps,
                             PlistExport::AllMetadata}) {
        add(importandExportMenu, QStringLiteral("actionExport%1").arg(int(what)), exportTitle(what),
            [photos, what] { photos->exportPlist(what); });
    }
    add(importandExportMenu, QStringLiteral("actionExportCurrent"), QStringLiteral("Export This Photo's Metadata"),
        [photos] { photos->exportCurrentPhotoPlist(); });
    add(importandExportMenu, QStringLiteral("actionExportTemplate"), QStringLiteral("Export Editor Fields as Template"),
        [dates] { dates->ExportTemplateDataToPlist(); });
    importandExportMenu->addSeparator();
    for (PlistImport what : {PlistImport::Tiff, PlistImport::Exif, PlistImport::ExifAndTiff, PlistImport::ExifAndGps,
                             PlistImport::AllMetadata, PlistImport::Template}) {
        add(importandExportMenu, QStringLiteral("actionImport%1").arg(int(what)), importTitle(what),
            [photos, what] { photos->importPlist(what); });
    }

    extractMetaMenu = new QMenu(QStringLiteral("Export"), w);
    extractMetaMenu->setObjectName(QStringLiteral("extractMetaMenu"));
    add(extractMetaMenu, QStringLiteral("actionExportArtwork"), QStringLiteral("Export Artwork"),
        [imports] { imports->exportArtworkAction(); });
    add(extractMetaMenu, QStringLiteral("actionExportMediaMetadata"), QStringLiteral("Export Metadata as Plist"),
        [imports] { imports->exportMediaMetadataAction(); });

    removeMediaMetaMenu = new QMenu(QStringLiteral("Strip Metadata"), w);
    removeMediaMetaMenu->setObjectName(QStringLiteral("removeMediaMetaMenu"));
    add(removeMediaMetaMenu, QStringLiteral("actionStripSelectedMedia"), QStringLiteral("Strip Metadata of Selected"),
        [imports] { imports->RemoveSelectedMediaFileAction(); });
    add(removeMediaMetaMenu, QStringLiteral("actionStripAllMedia"), QStringLiteral("Strip Metadata of All"),
        [imports] { imports->RemoveAllMediaFileAction(); });
}

void CommandMenus::buildMenuBar()
{
    MainWindow* w = app_.window();
    ImportActions* imports = app_.importActions();
    QMenuBar* bar = w->menuBar();

    QMenu* file = bar->addMenu(QStringLiteral("&File"));
    QAction* addFiles = add(file, QStringLiteral("actionAddFiles"), QStringLiteral("Add Files…"),
                            [imports] { imports->AddMediaFileAction(); });
    addFiles->setShortcut(QKeySequence::Open);
    file->addAction(action(QStringLiteral("actionImportFolder")));
    CameraActions* camera = app_.camera();
    add(file, QStringLiteral("actionOpenFolderAsCamera"), QStringLiteral("Open Folder as Camera…"),
        [camera] { camera->openFolderAsCameraAction(); });
    action(QStringLiteral("actionImportFolder"))->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+O")));
    file->addSeparator();
    QAction* preferences = add(file, QStringLiteral("actionPreferences"), QStringLiteral("Preferences…"),
                               [this] { app_.ShowPreferenceSetting(); });
    preferences->setShortcuts({QKeySequence::Preferences, QKeySequence(QStringLiteral("Ctrl+,"))});
    preferences->setMenuRole(QAction::PreferencesRole);
    file->addSeparator();
    QAction* quit = add(file, QStringLiteral("actionQuit"), QStringLiteral("Quit"), [w] { w->close(); });
    quit->setShortcut(QKeySequence::Quit);

    QMenu* edit = bar->addMenu(QStringLiteral("&Edit"));
    QAction* selectAll =
        add(edit, QStringLiteral("actionSelectAll"), QStringLiteral("Select All"), [imports] { imports->selectAll(); });
    selectAll->setShortcut(QKeySequence::SelectAll);
    QAction* removeFromList = add(edit, QStringLiteral("actionDeleteFromList"), QStringLiteral("Remove from List"),
                                  [this, imports] {
                                      if (app_.window()->dragtableView->hasFocus())
                                          imports->RemoveMediaFileAction();
                                      else
                                          imports->ClearSelectedLeftPhotos();
                                  });
    removeFromList->setShortcuts({QKeySequence::Delete, QKeySequence(Qt::Key_Backspace)});
    edit->addAction(action(QStringLiteral("actionClearPhotos")));

    QMenu* photo = bar->addMenu(QStringLiteral("&Photo"));
    photo->addAction(action(QStringLiteral("actionImportPhotos")));
    photo->addSeparator();
    photo->addMenu(editExifMenu);
    photo->addMenu(changePhotoDateMenu);
    photo->addMenu(changeMutiPhotoDateMenu);
    photo->addMenu(removeExifMenu);
    photo->addMenu(importandExportMenu);
    photo->addSeparator();
    add(photo, QStringLiteral("actionRevertToOriginal"), QStringLiteral("Revert to Original"),
        [this] { app_.RevertToOriginal(); })
        ->setEnabled(false);
    action(QStringLiteral("actionEditPhoto"))->setShortcut(QKeySequence(QStringLiteral("Ctrl+E")));
    action(QStringLiteral("actionChangeDate"))->setShortcut(QKeySequence(QStringLiteral("Ctrl+D")));

    QMenu* media = bar->addMenu(QStringLiteral("&Media"));
    media->addAction(addFiles);
    MediaEditActions* mediaEdits = app_.mediaEdits();
    add(media, QStringLiteral("actionEditMedia"), QStringLiteral("Edit Selected Item"),
        [mediaEdits] { mediaEdits->editSelectedMediaItem(); })
        ->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+E")));
    add(media, QStringLiteral("actionSaveMedia"), QStringLiteral("Save Changes"),
        [mediaEdits] { mediaEdits->SaveMeidaFileChangesAction(); })
        ->setShortcut(QKeySequence::Save);
    media->addSeparator();
    add(media, QStringLiteral("actionRemoveMediaFromList"), QStringLiteral("Remove Selected from List"),
        [imports] { imports->RemoveMediaFileAction(); });
    media->addMenu(removeMediaMetaMenu);
    media->addMenu(extractMetaMenu);

    QMenu* view = bar->addMenu(QStringLiteral("&View"));
    add(view, QStringLiteral("actionComputerPhotos"), QStringLiteral("Computer Photos"),
        [this] { app_.ChangeToImportComputerPhoto(); });
    add(view, QStringLiteral("actionCameraPhotos"), QStringLiteral("Camera Photos"),
        [this] { app_.ChangeToImportiOSDevicePhoto(); })
        ->setEnabled(false);  // until a camera is seen

    QMenu* help = bar->addMenu(QStringLiteral("&Help"));
    add(help, QStringLiteral("actionGuide"), QStringLiteral("User Guide"), [this] { app_.CLICkProductGuide(); });
    add(help, QStringLiteral("actionSupport"), QStringLiteral("Support"), [this] { app_.CLICkSupport(); });
    add(help, QStringLiteral("actionCheckForUpdates"), QStringLiteral("Check for Updates…"),
        [this] { app_.CheckforUpdateAction(); });
    help->addSeparator();
    add(help, QStringLiteral("actionAbout"), QStringLiteral("About Quorvane Pelorin"), [this] { app_.ClickAbout(); });
}

void CommandMenus::connectButtons()
{
    MainWindow* w = app_.window();
    const auto popUp = [](HoverToolButton* button, QMenu* menu) {
        QObject::connect(button, &QToolButton::clicked, menu, [button, menu] { MainWindow::popUpMenu(menu, button); });
    };
    popUp(w->importPhotobtn, importPhotoMenu);
    popUp(w->editMetaDataLocalBtn, editExifMenu);
    popUp(w->viewExifBtn, editExifMenu);
    popUp(w->remoMetaDataLocalBtn, removeExifMenu);
    popUp(w->removeExifBtn, removeExifMenu);
    popUp(w->importandExportBtn, importandExportMenu);
    popUp(w->extractMetaBtn, extractMetaMenu);
    popUp(w->removeMediaMetaBtn, removeMediaMetaMenu);
    popUp(w->photoEditorView->button(QStringLiteral("changePhotoDateBtn")), changePhotoDateMenu);
    popUp(w->photoEditorView->button(QStringLiteral("changeMutiPhotoDateBtn")), changeMutiPhotoDateMenu);
}

}  // namespace pelorin
