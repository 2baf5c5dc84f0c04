#include "app/AppDelegate.h"

#include "app/AlertSheets.h"
#include "app/CameraActions.h"
#include "app/CameraItemsModel.h"
#include "app/CommandMenus.h"
#include "app/DateActions.h"
#include "app/ImportActions.h"
#include "app/ImportedItemsModel.h"
#include "app/InspectorPanel.h"
#include "app/MainWindow.h"
#include "app/MapSettings.h"
#include "app/MediaEditActions.h"
#include "app/UpdateActions.h"
#include "app/MediaImporter.h"
#include "app/PhotoBrowserModel.h"
#include "app/PhotoCommandActions.h"
#include "app/PhotoEditorPanel.h"
#include "app/PreferencesDialog.h"
#include "app/TaskStatusBar.h"
#include "app/ThumbnailLoader.h"
#include "model/FileKinds.h"
#include "model/PhotoBatch.h"
#include "model/Preferences.h"
#include "model/SafeOutput.h"
#include "photo/PhotoLibraries.h"
#include "photo/PhotoInspection.h"
#include "photo/PhotoProperties.h"
#include "photo/PropertyTree.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"

#include <QApplication>
#include <QDesktopServices>
#include <QIcon>
#include <QFileInfo>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPointer>
#include <QLocale>
#include <QMessageBox>
#include <QStackedWidget>
#include <algorithm>

namespace pelorin {

AppDelegate* AppDelegate::shared_ = nullptr;

AppDelegate::AppDelegate(std::unique_ptr<Preferences> preferences)
    : preferences_(preferences ? std::move(preferences) : std::make_unique<Preferences>())
{
    shared_ = this;
    openUrl = [](const QUrl& url) { QDesktopServices::openUrl(url); };
    currentExifDictionary.clear();
    blocalMode = true;
    initializePhotoLibraries();
}

AppDelegate::~AppDelegate()
{
    if (importer_)
        importer_->cancel();
    delete window_;
    if (shared_ == this)
        shared_ = nullptr;
}

AppDelegate* AppDelegate::GetAppDelegater()
{
    return shared_;
}

void AppDelegate::awakeFromNib()
{
    window_ = new MainWindow;
    items_ = new ImportedItemsModel(this);
    thumbnails_ = new ThumbnailLoader(170, this);
    browserModel_ = new PhotoBrowserModel(thumbnails_, this);
    browserModel_->setSourceModel(items_);
    runner_ = new CommandRunner(this);
    importer_ = new MediaImporter(this);
    preferencesSheet_ = new PreferencesDialog(window_);
    preferencesSheet_->setWindowModality(Qt::WindowModal);
    importActions_ = new ImportActions(*this);
    photoCommands_ = new PhotoCommandActions(*this);
    dateActions_ = new DateActions(*this);
    mediaEdits_ = new MediaEditActions(*this);
    updates_ = new UpdateActions(*this);
    camera_ = new CameraActions(*this);
    configureMap(window_->inspector->map(), *preferences_);
    menus_ = std::make_unique<CommandMenus>(*this);

    window_->localImageBrowserView->setModel(browserModel_);
    window_->dragtableView->setModel(items_);
    QHeaderView* header = window_->dragtableView->horizontalHeader();
    // Numbers take their own width; the text columns are fitted to their texts as rows arrive,
    // and the table scrolls sideways when the pane is narrower than all of them.
    header->setStretchLastSection(true);
    header->setMinimumSectionSize(40);
    header->setSectionResizeMode(ImportedItemsModel::Size, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(ImportedItemsModel::Duration, QHeaderView::ResizeToContents);
    header->setResizeContentsPrecision(200);
    // Commands that need a selection wait for one.
    for (QWidget* button : {static_cast<QWidget*>(window_->deletePhotoBtn), static_cast<QWidget*>(window_->downloadPhotoBtn),
                            static_cast<QWidget*>(window_->importEditPhotoBtn), static_cast<QWidget*>(window_->opendeviceBtn)})
        button->setEnabled(false);
    window_->SaveMediaChangesBtn->setEnabled(false);
    wireWindow();
}

void AppDelegate::applicationDidFinishLaunching()
{
    camera_->startDeviceBrowser();
    window_->showPhotoHint();
    const PreferenceValues values = preferences_->loadAtStartup();
    storagelocation = values.storagePath;
    currentFontname = values.fontName;
    currentFontSize = values.fontSize;
    currentFontColor = Qt::white;
    makeStorageFolder();
    preferencesSheet_->showValues(values, currentFontColor);
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void AppDelegate::makeStorageFolder() const
{
    // A folder that cannot be made shows up as the reason in the first command that writes.
    ensureFolder(storagelocation);
}

void AppDelegate::wireWindow()
{
    MainWindow* w = window_;
    w->confirmClose = [w] { return confirmExit(w); };
    connect(w->localphotoBtn, &QToolButton::clicked, this, &AppDelegate::ChangeToImportComputerPhoto);
    connect(w->cameraphotoBtn, &QToolButton::clicked, this, &AppDelegate::ChangeToImportiOSDevicePhoto);
    connect(w->localeditexifBtn, &QToolButton::clicked, this, &AppDelegate::StartEditViewAction);
    connect(w->starteditBtn, &QToolButton::clicked, this, &AppDelegate::StartEditViewAction);
    connect(w->photoEditorView, &PhotoEditorPanel::backRequested, this, &AppDelegate::HideEditViewAction);
    connect(w->localImageBrowserView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &AppDelegate::imageBrowserSelectionDidChange);
    // A double click opens the photo in the editor (the selection has already filled it).
    connect(w->localImageBrowserView, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        const QModelIndex source = browserModel_->mapToSource(index);
        if (source.isValid() && isImageExtension(pathExtension(items_->item(source.row()).filePath)))
            StartEditViewAction();
    });
    connect(preferencesSheet_, &PreferencesDialog::saveRequested, this, &AppDelegate::ResetPreferenceSetting);
    connect(preferencesSheet_, &QDialog::rejected, this, &AppDelegate::CancelPreferenceSetting);

    connect(items_, &QAbstractItemModel::rowsInserted, this, &AppDelegate::refreshLeftPane);
    connect(items_, &QAbstractItemModel::rowsRemoved, this, &AppDelegate::refreshLeftPane);
    connect(items_, &QAbstractItemModel::modelReset, this, &AppDelegate::refreshLeftPane);

    connect(runner_, &CommandRunner::started, w->taskStatus, &TaskStatusBar::showTask);
    connect(runner_, &CommandRunner::progressed, w->taskStatus, &TaskStatusBar::showProgress);
    connect(runner_, &CommandRunner::ended, w->taskStatus, &TaskStatusBar::showResult);
    connect(w->taskStatus, &TaskStatusBar::cancelRequested, this, [this] {
        runner_->cancel();
        importer_->cancel();
    });
}

void AppDelegate::refreshLeftPane()
{
    const int count = items_->rowCount();
    window_->mediaCountLabel->setText(count == 1 ? QStringLiteral("1 item") : QStringLiteral("%1 items").arg(count));
    if (!blocalMode)
        return;
    if (browserModel_->rowCount() == 0)
        window_->showPhotoHint();
    else
        window_->showLocalPhotos();
}

QList<int> AppDelegate::selectedPhotoRows() const
{
    QList<int> rows;
    const QModelIndexList selected = window_->localImageBrowserView->selectionModel()->selectedIndexes();
    rows.reserve(selected.size());
    for (const QModelIndex& index : selected) {
        const QModelIndex source = browserModel_->mapToSource(index);
        if (source.isValid())
            rows.append(source.row());
    }
    // Sorting first keeps a selection of thousands linear instead of a search per row.
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

QList<int> AppDelegate::selectedMediaRows() const
{
    QList<int> rows;
    for (const QModelIndex& index : window_->dragtableView->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

PhotoSelection AppDelegate::currentPhotoSelection() const
{
    PhotoSelection selection;
    if (blocalMode) {
        selection.source = PhotoSource::Computer;
        for (int row : selectedPhotoRows())
            selection.items.append(items_->item(row));
    } else {
        selection.source = PhotoSource::Camera;
        const QModelIndexList selected = window_->imageBrowserView->selectionModel()
                                             ? window_->imageBrowserView->selectionModel()->selectedIndexes()
                                             : QModelIndexList();
        QList<int> rows;
        for (const QModelIndex& index : selected)
            rows.append(index.row());
        std::sort(rows.begin(), rows.end());
        const QList<IKImageItem>& cameraItems = camera_->items()->items();
        for (int row : rows) {
            if (row >= 0 && row < cameraItems.size())
                selection.items.append(cameraItems.at(row));
        }
    }
    return selection;
}

bool AppDelegate::runCommand(const QString& title, EngineCommand command, CommandDone done, QWidget* alertOver)
{
    if (runner_->isBusy()) {
        window_->taskStatus->showMessage(QStringLiteral("Please wait: another command is still running."));
        return false;
    }
    QPointer<QWidget> over(alertOver);
    return runner_->run(title, storagelocation, std::move(command), [this, done, over](const CommandResult& result) {
        if (result.alert)
            showAlert(*result.alert, over ? over.data() : nullptr);
        if (done)
            done(result);
    });
}

bool AppDelegate::runPhotoCommand(const QString& title, const PhotoSelection& selection, EngineCommand command,
                                  CommandDone done, QWidget* alertOver)
{
    if (selection.source == PhotoSource::Camera) {
        auto downloadCopies = camera_->copiesDownloader(selection);
        command = [downloadCopies, command](const CommandContext& context) {
            CommandResult result;
            downloadCopies(context, result);
            result.merge(command(context));
            return result;
        };
        return runCommand(title, std::move(command), std::move(done), alertOver);
    }
    // Another record's working copy is not a free name for this command's outputs.
    const QStringList reserved = items_->workingCopies();
    EngineCommand reserving = [reserved, command](const CommandContext& context) {
        for (const QString& copy : reserved)
            context.claimOutput(copy, copy);
        return command(context);
    };
    return runCommand(title, std::move(reserving),
                      [this, done](const CommandResult& result) {
                          adoptEditedCopies(result);
                          if (done)
                              done(result);
                      },
                      alertOver);
}

bool AppDelegate::haveCameraCopies(const PhotoSelection& selection, std::function<void()> then)
{
    if (selection.source != PhotoSource::Camera)
        return true;
    bool complete = true;
    for (const IKImageItem& item : selection.items)
        complete = complete && QFileInfo::exists(photoInputPath(item, selection.source, storagelocation));
    if (complete)
        return true;
    auto downloadCopies = camera_->copiesDownloader(selection);
    runCommand(
        QStringLiteral("Download from Camera"),
        [downloadCopies](const CommandContext& context) {
            CommandResult result;
            downloadCopies(context, result);
            return result;
        },
        [this, selection, then](const CommandResult& result) {
            bool arrived = result.skipped.isEmpty();
            for (const IKImageItem& item : selection.items)
                arrived = arrived && QFileInfo::exists(photoInputPath(item, selection.source, storagelocation));
            if (arrived && then)
                then();
        });
    return false;
}

QAction* AppDelegate::changtoiOSmodemenu() const
{
    return menus_ ? menus_->action(QStringLiteral("actionCameraPhotos")) : nullptr;
}

void AppDelegate::showAlert(const Alert& alert, QWidget* over)
{
    showAlertSheet(over && over->isVisible() ? over : window_, alert);
}

void AppDelegate::waitForThumbnails()
{
    QApplication::processEvents();
    thumbnails_->waitForIdle();
    QApplication::processEvents();
}

void AppDelegate::ShowPreferenceSetting()
{
    preferencesSheet_->open();
}

void AppDelegate::CancelPreferenceSetting()
{
    preferencesSheet_->hide();
}

void AppDelegate::ResetPreferenceSetting()
{
    const PreferenceValues values = preferencesSheet_->values();
    currentFontColor = preferencesSheet_->stampColor();
    currentFontname = values.fontName;
    currentFontSize = values.fontSize;
    storagelocation = values.storagePath;
    preferences_->save(values);
    preferences_->sync();
    makeStorageFolder();
    preferencesSheet_->hide();
}

void AppDelegate::ChangeToImportComputerPhoto()
{
    const bool wasCamera = !blocalMode;
    blocalMode = true;
    refreshLeftPane();
    // The right pane shows what the pane on the left has selected, never the other mode's photo.
    if (wasCamera) {
        if (selectedPhotoRows().isEmpty())
            showNoPhotoDetails(QStringLiteral("No photo selected"), QStringLiteral("Select a photo to see its metadata."));
        else
            imageBrowserSelectionDidChange();
    }
    if (browserModel_->rowCount() == 0)
        window_->showPhotoHint();
}

void AppDelegate::ChangeToImportiOSDevicePhoto()
{
    if (blocalMode)
        showNoPhotoDetails(QStringLiteral("No photo selected"),
                           QStringLiteral("Select a photo on the camera to see it here."));
    blocalMode = false;
    window_->showCameraMode(camera_->items()->rowCount() > 0);
}

void AppDelegate::StartEditViewAction()
{
    window_->slideInEditor();
}

void AppDelegate::HideEditViewAction()
{
    window_->hideEditor();
}

void AppDelegate::ClickAbout()
{
    QMessageBox box(window_);
    box.setObjectName(QStringLiteral("aboutWindow"));
    box.setWindowTitle(QStringLiteral("About Quorvane Pelorin"));
    box.setIconPixmap(QIcon(QStringLiteral(":/icons/pelorin.svg")).pixmap(96, 96));
    box.setText(QStringLiteral("<b>Quorvane Pelorin %1</b>").arg(QStringLiteral(PELORIN_VERSION)));
    box.setInformativeText(QStringLiteral(
        "View and fix the metadata of photos, audio and video. Your originals are never changed: every "
        "command writes a new file into the output folder.<p>Licensed under the GNU General Public License, "
        "version 3 or later. Map data \u00a9 OpenStreetMap contributors."));
    box.addButton(QStringLiteral(" Ok "), QMessageBox::AcceptRole);
    box.exec();
}

void AppDelegate::CheckforUpdateAction()
{
    updates_->CheckforUpdateAction();
}

void AppDelegate::CLICkProductGuide()
{
    openUrl(QUrl(preferences_->deployment().guidePage));
}

void AppDelegate::CLICkSupport()
{
    openUrl(QUrl(preferences_->deployment().supportPage));
}

void AppDelegate::imageBrowserSelectionDidChange()
{
    updateRevertAction();
    const QList<int> rows = selectedPhotoRows();
    if (rows.isEmpty())
        return;
    const IKImageItem& item = items_->item(rows.first());
    const QModelIndex first = browserModel_->mapFromSource(items_->index(rows.first(), 0));
    showPhotoDetails(photoInputPath(item, PhotoSource::Computer, storagelocation), item.fileName,
                     first.data(Qt::DecorationRole).value<QIcon>().pixmap(170).toImage(), item.workingCopyPath);
}

void AppDelegate::adoptEditedCopies(const CommandResult& result)
{
    if (result.editedCopies.isEmpty())
        return;
    for (const EditedCopy& edited : result.editedCopies)
        items_->setWorkingCopy(edited.record, edited.copy);
    if (blocalMode)
        imageBrowserSelectionDidChange();
}

void AppDelegate::RevertToOriginal()
{
    // The copy stays in the storage folder: it is an output the user was shown and may already
    // use; the record only stops building on it.
    for (int row : selectedPhotoRows())
        items_->setWorkingCopy(items_->item(row).filePath, QString());
    imageBrowserSelectionDidChange();
}

void AppDelegate::updateRevertAction()
{
    QAction* revert = menus_ ? menus_->action(QStringLiteral("actionRevertToOriginal")) : nullptr;
    if (!revert)
        return;
    bool edited = false;
    for (int row : selectedPhotoRows())
        edited = edited || !items_->item(row).workingCopyPath.isEmpty();
    revert->setEnabled(blocalMode && edited);
}

void AppDelegate::showPhotoDetails(const QString& path, const QString& fileName, const QImage& preview,
                                   const QString& editedCopy)
{
    window_->rightStack->setCurrentWidget(window_->inspector);
    window_->inspector->hideLocation();
    if (!isImageExtension(pathExtension(path))) {
        window_->inspector->showMessage(fileName, QStringLiteral("Movies are shown in the media table."));
        return;
    }
    const PhotoInspection inspection = inspectPhoto(path, fileName);
    const PhotoProperties& photo = inspection.photo;
    if (!photo.ok()) {
        window_->inspector->showMessage(fileName, photo.error);
        window_->photoEditorView->setPreview(QImage());
        return;
    }
    currentExifDictionary = photo.properties;
    currentFileName = fileName;
    const PhotoEditorFill& fill = inspection.fill;
    bMapPreview = fill.hasGps;
    currentCoords = QPointF(fill.latitude, fill.longitude);
    if (fill.hasGps)
        window_->inspector->showLocation(fill.latitude, fill.longitude);
    window_->inspector->showPhoto(propTree(photo.properties),
                                  {fileName, fill.fields.fileSize, fill.fields.imageSize, fill.fields.creationDate,
                                   editedCopy});
    window_->photoEditorView->setTexts(fill.fields);
    window_->photoEditorView->setPreview(preview);
}

void AppDelegate::showNoPhotoDetails(const QString& title, const QString& message)
{
    window_->hideEditor();
    window_->rightStack->setCurrentWidget(window_->inspector);
    window_->inspector->hideLocation();
    window_->inspector->showMessage(title, message);
    currentFileName.clear();
    currentExifDictionary.clear();
    bMapPreview = false;
}

}  // namespace pelorin
