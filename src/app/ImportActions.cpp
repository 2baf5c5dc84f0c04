#include "app/ImportActions.h"

#include "app/AppDelegate.h"
#include "app/ImportedItemsModel.h"
#include "app/InspectorPanel.h"
#include "app/MainWindow.h"
#include "app/MediaImporter.h"
#include "app/PhotoBrowserModel.h"
#include "app/PhotoEditorPanel.h"
#include "app/TaskStatusBar.h"
#include "media/MediaRemoval.h"
#include "audio/AudioExports.h"
#include "model/FileKinds.h"
#include "model/SafeOutput.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"
#include "video/MovieRemoval.h"

#include <QItemSelectionModel>
#include <QPointer>

namespace pelorin {

namespace {
const QString kImportMessage = QStringLiteral("Please select videos or auidos to import.");
}

ImportActions::ImportActions(AppDelegate& app) : QObject(&app), app_(app)
{
    MainWindow* w = app_.window();
    connect(w->localImageBrowserView, &PhotoBrowserView::filesDropped, this,
            &ImportActions::PRDragOperationImageNoteHandle);
    connect(w->dragtableView, &MediaTableView::filesDropped, this, &ImportActions::PRDragOperationMediaNoteHandle);
    connect(w->addMediaBtn, &QToolButton::clicked, this, &ImportActions::AddMediaFileAction);
    connect(w->removeMediaBtn, &QToolButton::clicked, this, &ImportActions::RemoveMediaFileAction);
    MediaImporter* importer = app_.importer();
    connect(importer, &MediaImporter::expecting, app_.localPhotoItemArray(), &ImportedItemsModel::reserveMore);
    connect(importer, &MediaImporter::recordsReady, app_.localPhotoItemArray(), &ImportedItemsModel::append);
    connect(importer, &MediaImporter::progress, w->taskStatus, [w](int done, int total) {
        w->taskStatus->showTask(QStringLiteral("Importing %1 of %2").arg(done).arg(total));
        w->taskStatus->showProgress(done, total);
    });
    connect(importer, &MediaImporter::finished, w->taskStatus, [w](int imported) {
        w->taskStatus->showMessage(imported == 1 ? QStringLiteral("Imported 1 file.")
                                                 : QStringLiteral("Imported %1 files.").arg(imported));
    });
}

void ImportActions::OpenComputerFoldertoImportAction()
{
    const QStringList paths = app_.panels.chooseFiles(app_.window(), kImportMessage, photoAndMovieFilter());
    if (paths.isEmpty())
        return;
    app_.ChangeToImportComputerPhoto();
    app_.importer()->import(paths, ImportScope::PhotosAndMovies);
    ensureFolder(app_.storagelocation);
}

void ImportActions::importFolderAction()
{
    const QString folder = app_.panels.chooseFolder(app_.window(), QStringLiteral("Please select a folder to import."));
    if (folder.isEmpty())
        return;
    app_.ChangeToImportComputerPhoto();
    app_.importer()->import({folder}, ImportScope::AllMedia);
}

void ImportActions::ClickClearandImportPhotosAction()
{
    ClearLeftPhotos();
    AddMediaFileAction();
}

void ImportActions::AddMediaFileAction()
{
    const QStringList paths = app_.panels.chooseFiles(app_.window(), kImportMessage, mediaFilter());
    if (paths.isEmpty())
        return;
    app_.ChangeToImportComputerPhoto();
    app_.importer()->import(paths, ImportScope::AllMedia);
}

void ImportActions::PRDragOperationImageNoteHandle(const QStringList& paths)
{
    app_.ChangeToImportComputerPhoto();
    const int firstNewRow = app_.localPhotoItemArray()->rowCount();
    app_.importer()->import(paths, ImportScope::PhotosAndMovies);
    // When the dropped files are in, the first of them is selected alone.
    QPointer<ImportActions> self(this);
    auto* connection = new QMetaObject::Connection;
    *connection = connect(app_.importer(), &MediaImporter::finished, this, [this, self, firstNewRow, connection] {
        disconnect(*connection);
        delete connection;
        if (!self || firstNewRow >= app_.localPhotoItemArray()->rowCount())
            return;
        const QModelIndex first =
            app_.photoBrowserModel()->mapFromSource(app_.localPhotoItemArray()->index(firstNewRow, 0));
        if (first.isValid())
            app_.window()->localImageBrowserView->selectionModel()->select(first, QItemSelectionModel::ClearAndSelect);
    });
}

void ImportActions::PRDragOperationMediaNoteHandle(const QStringList& paths)
{
    app_.importer()->import(paths, ImportScope::AllMedia);
}

void ImportActions::ClearSelectedLeftPhotos()
{
    if (!app_.blocalMode)
        return;
    app_.localPhotoItemArray()->removeItemRows(app_.selectedPhotoRows());
}

void ImportActions::ClearLeftPhotos()
{
    app_.importer()->cancel();
    app_.localPhotoItemArray()->clear();
    app_.photoBrowserModel()->forgetThumbnails();
    app_.window()->photoEditorView->clear();
    app_.window()->inspector->clear();
    app_.currentExifDictionary.clear();
    app_.currentFileName.clear();
}

void ImportActions::RemoveMediaFileAction()
{
    app_.localPhotoItemArray()->removeItemRows(app_.selectedMediaRows());
}

QStringList ImportActions::selectedMediaPaths() const
{
    QStringList paths;
    for (int row : app_.selectedMediaRows())
        paths.append(app_.localPhotoItemArray()->item(row).filePath);
    return paths;
}

void ImportActions::RemoveSelectedMediaFileAction()
{
    const QStringList paths = selectedMediaPaths();
    if (paths.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    removeMediaMetadata(paths);
}

void ImportActions::RemoveAllMediaFileAction()
{
    QStringList paths;
    for (const IKImageItem& item : app_.localPhotoItemArray()->items())
        paths.append(item.filePath);
    if (!paths.isEmpty())
        removeMediaMetadata(paths);
}

void ImportActions::removeMediaMetadata(const QStringList& paths)
{
    app_.runCommand(QStringLiteral("Strip media metadata"),
                    [paths](const CommandContext& context) { return pelorin::removeMediaMetadata(paths, context); });
}

void ImportActions::exportArtworkAction()
{
    const QStringList paths = selectedMediaPaths();
    if (paths.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    app_.runCommand(QStringLiteral("Export artwork"),
                    [paths](const CommandContext& context) { return exportAudioArtwork(paths, context); });
}

void ImportActions::exportMediaMetadataAction()
{
    const QStringList paths = selectedMediaPaths();
    if (paths.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    app_.runCommand(QStringLiteral("Export media metadata"),
                    [paths](const CommandContext& context) { return exportAudioMetadata(paths, context); });
}

void ImportActions::selectAll()
{
    MainWindow* w = app_.window();
    if (w->dragtableView->hasFocus())
        w->dragtableView->selectAll();
    else
        w->localImageBrowserView->selectAll();
}

}  // namespace pelorin
