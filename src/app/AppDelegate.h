#pragma once
#include "app/CommandRunner.h"
#include "app/FilePanels.h"
#include "media/ImportRecords.h"
#include "model/IKImageItem.h"
#include "model/PhotoSelection.h"
#include "photo/PhotoEditorFields.h"

#include <QColor>
#include <QAction>
#include <QObject>
#include <QPointF>
#include <QUrl>
#include <functional>
#include <QVariantMap>
#include <memory>

namespace pelorin {

class CommandMenus;
class DateActions;
class ImportActions;
class ImportedItemsModel;
class MainWindow;
class CameraActions;
class MediaEditActions;
class UpdateActions;
class MediaImporter;
class PhotoBrowserModel;
class PhotoCommandActions;
class PreferencesDialog;
class Preferences;
class ThumbnailLoader;

// The editor's controller: it owns the window, the imported list, the editor state and the
// command objects, and wires the window's buttons and menus to them. It starts in three stages,
// always in this order: construction (state), awakeFromNib (the window is built and hooked up),
// applicationDidFinishLaunching (preferences read, storage folder made, window shown).
class AppDelegate : public QObject {
    Q_OBJECT
public:
    // preferences: the store to use (the user's own when null).
    explicit AppDelegate(std::unique_ptr<Preferences> preferences = nullptr);
    ~AppDelegate() override;

    // The one controller, or null before it is constructed.
    static AppDelegate* GetAppDelegater();

    void awakeFromNib();
    void applicationDidFinishLaunching();

    MainWindow* window() const { return window_; }
    ImportedItemsModel* localPhotoItemArray() const { return items_; }
    PhotoBrowserModel* photoBrowserModel() const { return browserModel_; }
    CommandRunner* runner() const { return runner_; }
    MediaImporter* importer() const { return importer_; }
    ThumbnailLoader* thumbnails() const { return thumbnails_; }
    CommandMenus* menus() const { return menus_.get(); }
    PreferencesDialog* preferencesSheet() const { return preferencesSheet_; }
    DateActions* dateActions() const { return dateActions_; }
    ImportActions* importActions() const { return importActions_; }
    PhotoCommandActions* photoCommands() const { return photoCommands_; }
    MediaEditActions* mediaEdits() const { return mediaEdits_; }
    CameraActions* camera() const { return camera_; }
    UpdateActions* updates() const { return updates_; }
    Preferences& preferences() { return *preferences_; }

    FilePanels panels = FilePanels::desktop();
    // Opens a web page in the user's browser (tests replace it).
    std::function<void(const QUrl&)> openUrl;

    // Editor state shared by the commands.
    bool blocalMode = true;
    QVariantMap currentExifDictionary;
    QString currentFileName;
    QString storagelocation;
    QString currentFontname;
    int currentFontSize = 14;
    QColor currentFontColor = Qt::white;
    bool bMapPreview = false;   // the photo in the inspector has a location
    QPointF currentCoords;      // its latitude and longitude, signed

    // The selected photos of the active source, in list order.
    PhotoSelection currentPhotoSelection() const;
    // Rows of the imported list selected in the media table, ascending.
    QList<int> selectedMediaRows() const;
    // Rows of the imported list selected in the photo browser, ascending.
    QList<int> selectedPhotoRows() const;

    // Runs an engine command off the GUI thread with the storage folder; shows progress, the
    // alert it raises (over the given window, or the main window) and its summary.
    bool runCommand(const QString& title, EngineCommand command, CommandDone done = {}, QWidget* alertOver = nullptr);
    // The same for a command on photos: in camera mode it first downloads the copies it works on.
    bool runPhotoCommand(const QString& title, const PhotoSelection& selection, EngineCommand command,
                         CommandDone done = {}, QWidget* alertOver = nullptr);
    // True when every camera photo of the selection has its downloaded copy (always for computer
    // photos); otherwise downloads the missing ones and calls then() when they are in.
    bool haveCameraCopies(const PhotoSelection& selection, std::function<void()> then);
    // The menu command that switches to camera photos: enabled once a camera was seen.
    QAction* changtoiOSmodemenu() const;
    void showAlert(const Alert& alert, QWidget* over = nullptr);
    // Waits until the browser's thumbnails in the making are done and shown (tests).
    void waitForThumbnails();

public slots:
    void ShowPreferenceSetting();
    void CancelPreferenceSetting();
    void ResetPreferenceSetting();
    void ChangeToImportComputerPhoto();
    void ChangeToImportiOSDevicePhoto();
    void StartEditViewAction();
    void HideEditViewAction();
    void ClickAbout();
    void CLICkProductGuide();
    void CLICkSupport();
    void CheckforUpdateAction();
    // Shows the selected photo in the inspector and fills the editor.
    void imageBrowserSelectionDidChange();
    // One photo file's metadata in the inspector and the editor's fields (a computer photo, or
    // the downloaded copy of a camera photo).
    // editedCopy names the working copy when path is one.
    void showPhotoDetails(const QString& path, const QString& fileName, const QImage& preview,
                          const QString& editedCopy = {});
    // Drops the working copies of the selected photos: their next edit starts from the original.
    void RevertToOriginal();
    // The inspector says something in place of a photo's metadata; the editor closes.
    void showNoPhotoDetails(const QString& title, const QString& message);
    // Lays the left pane out for the list: its hint when empty, the browser otherwise.
    void refreshLeftPane();

private:
    void wireWindow();
    // Takes a photo command's edited copies as the records' working copies and shows them.
    void adoptEditedCopies(const CommandResult& result);
    // "Revert to Original" is enabled while a selected photo has a working copy.
    void updateRevertAction();
    void makeStorageFolder() const;

    static AppDelegate* shared_;

    std::unique_ptr<Preferences> preferences_;
    MainWindow* window_ = nullptr;
    ImportedItemsModel* items_ = nullptr;
    ThumbnailLoader* thumbnails_ = nullptr;
    PhotoBrowserModel* browserModel_ = nullptr;
    CommandRunner* runner_ = nullptr;
    MediaImporter* importer_ = nullptr;
    std::unique_ptr<CommandMenus> menus_;
    PreferencesDialog* preferencesSheet_ = nullptr;
    DateActions* dateActions_ = nullptr;
    ImportActions* importActions_ = nullptr;
    PhotoCommandActions* photoCommands_ = nullptr;
    MediaEditActions* mediaEdits_ = nullptr;
    UpdateActions* updates_ = nullptr;
    CameraActions* camera_ = nullptr;
};

}  // namespace pelorin
