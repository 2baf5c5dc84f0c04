#pragma once
#include <QObject>
#include <QStringList>

namespace pelorin {

class AppDelegate;

// Bringing files into the imported list and taking them out again: open panels, drops, folder
// imports, clearing, and the media table's metadata removal.
class ImportActions : public QObject {
    Q_OBJECT
public:
    explicit ImportActions(AppDelegate& app);

public slots:
    void OpenComputerFoldertoImportAction();
    void importFolderAction();
    void ClickClearandImportPhotosAction();
    void AddMediaFileAction();
    void PRDragOperationImageNoteHandle(const QStringList& paths);
    void PRDragOperationMediaNoteHandle(const QStringList& paths);
    void ClearSelectedLeftPhotos();
    void ClearLeftPhotos();
    void RemoveMediaFileAction();
    void RemoveSelectedMediaFileAction();
    void RemoveAllMediaFileAction();
    void exportArtworkAction();
    void exportMediaMetadataAction();
    void selectAll();

private:
    void removeMediaMetadata(const QStringList& paths);
    QStringList selectedMediaPaths() const;

    AppDelegate& app_;
};

}  // namespace pelorin
