#include "app/MediaEditActions.h"

#include "app/AppDelegate.h"
#include "app/AudioEditorView.h"
#include "app/ImportedItemsModel.h"
#include "app/MainWindow.h"
#include "app/MapSettings.h"
#include "app/MediaPlayerBar.h"
#include "app/VideoEditorView.h"
#include "audio/AudioTagChanges.h"
#include "model/FileKinds.h"
#include "ui/ArtworkWell.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"
#include "ui/TileMapView.h"
#include "video/MovieEditorModel.h"
#include "video/MoviePoster.h"
#include "video/MovieSave.h"
#include "model/ItemPictureImage.h"

#include <QImageReader>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace pelorin {

namespace {

// A dropped file as artwork: a picture as it is, or the first picture of a movie.
QImage artworkPicture(const QString& path)
{
    if (isVideoExtension(pathExtension(path)) && !isImageExtension(pathExtension(path)))
        return moviePosterFrame(path, 1200);
    QImageReader reader(path);
    reader.setAutoTransform(true);
    return reader.read();
}

}  // namespace

MediaEditActions::MediaEditActions(AppDelegate& app)
    : QObject(&app), app_(app), audioView_(new AudioEditorView), videoView_(new VideoEditorView)
{
    MainWindow* w = app_.window();
    w->rightStack->addWidget(audioView_);
    w->rightStack->addWidget(videoView_);
    videoMap_ = new TileMapView(videoView_->mapArea());
    videoMap_->setObjectName(QStringLiteral("mediaMapView"));
    configureMap(videoMap_, app_.preferences());
    auto* mapLayout = videoView_->mapArea()->layout() ? videoView_->mapArea()->layout()
                                                      : new QVBoxLayout(videoView_->mapArea());
    mapLayout->setContentsMargins(0, 0, 0, 0);
    mapLayout->addWidget(videoMap_);

    connect(w->dragtableView, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        showMediaRow(index.row());
    });
    connect(w->dragtableView, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        showMediaRow(index.row());
    });
    // Only the editor in view plays; leaving it for another pane pauses it.
    connect(w->rightStack, &QStackedWidget::currentChanged, this, [this] {
        if (app_.window()->rightStack->currentWidget() != audioView_)
            audioView_->playerBar()->pause();
        if (app_.window()->rightStack->currentWidget() != videoView_)
            videoView_->playerBar()->pause();
    });
    connect(w->SaveMediaChangesBtn, &QToolButton::clicked, this, &MediaEditActions::SaveMeidaFileChangesAction);
    connect(audioView_, &AudioEditorView::artworkDropped, this, &MediaEditActions::NSDragOperationImageViewNoteHandle);
    connect(videoView_, &VideoEditorView::artworkDropped, this, &MediaEditActions::NSDragOperationImageViewNoteHandle);
    // A typed location moves the map there at once.
    connect(videoView_, &VideoEditorView::locationTyped, this, [this](double latitude, double longitude) {
        videoMap_->showCoordinate(latitude, longitude);
    });
}

void MediaEditActions::editSelectedMediaItem()
{
    const QList<int> rows = app_.selectedMediaRows();
    if (rows.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    showMediaRow(rows.first());
}

void MediaEditActions::showMediaRow(int row)
{
    if (row < 0 || row >= app_.localPhotoItemArray()->rowCount())
        return;
    const QString extension = pathExtension(app_.localPhotoItemArray()->item(row).filePath);
    if (isAudioExtension(extension))
        ShowAudioViewWithItem(row);
    else if (isVideoExtension(extension))
        ShowVideoViewWithItem(row);
}

void MediaEditActions::ShowAudioViewWithItem(int row)
{
    videoView_->playerBar()->pause();
    const IKImageItem& item = app_.localPhotoItemArray()->item(row);
    audioView_->showItem(item);
    showEditor(audioView_);
}

void MediaEditActions::ShowVideoViewWithItem(int row)
{
    audioView_->playerBar()->pause();
    const IKImageItem& item = app_.localPhotoItemArray()->item(row);
    videoView_->showItem(item);
    const QStringList location = movieEditorTexts(item, MovieField::Location);
    bool latitudeOk = false;
    bool longitudeOk = false;
    const double latitude = location.value(0).toDouble(&latitudeOk);
    const double longitude = location.value(1).toDouble(&longitudeOk);
    if (latitudeOk && longitudeOk && (latitude != 0.0 || longitude != 0.0))
        videoMap_->showCoordinate(latitude, longitude);
    else
        videoMap_->clearPin();
    showEditor(videoView_);
}

// The editor asked for comes to the front: the photo editor slides over the right pane and
// would otherwise stay above it.
void MediaEditActions::showEditor(QWidget* view)
{
    app_.window()->hideEditor();
    app_.window()->rightStack->setCurrentWidget(view);
    app_.window()->SaveMediaChangesBtn->setEnabled(true);
}

void MediaEditActions::NSDragOperationImageViewNoteHandle(const QString& path)
{
    const QImage picture = artworkPicture(path);
    if (picture.isNull()) {
        app_.showAlert({QStringLiteral("Not a picture"),
                        QStringLiteral("The dropped file cannot be read as a picture.")});
        return;
    }
    // The artwork goes to every selected item; it is written when the user saves.
    for (int row : app_.selectedMediaRows()) {
        IKImageItem record = app_.localPhotoItemArray()->item(row);
        record.fileImage = itemPicture(picture);
        record.fileImagePath = path;
        app_.localPhotoItemArray()->replace(row, record);
    }
    if (app_.window()->rightStack->currentWidget() == audioView_)
        audioView_->setDroppedArtwork(path, picture);
    else
        videoView_->setDroppedArtwork(path, picture);
}

void MediaEditActions::SaveMeidaFileChangesAction()
{
    const QList<int> rows = app_.selectedMediaRows();
    if (rows.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    const bool audioOpen = app_.window()->rightStack->currentWidget() == audioView_;
    const bool videoOpen = app_.window()->rightStack->currentWidget() == videoView_;
    if (!audioOpen && !videoOpen) {
        app_.showAlert({QStringLiteral("No editor is open"),
                        QStringLiteral("Double-click an audio or movie file in the media table to edit it.")});
        return;
    }
    // The open editor's files among the selection, and its changes taken now: the user may go on
    // typing while the save runs.
    QStringList files;
    CommandResult others;
    for (int row : rows) {
        const QString path = app_.localPhotoItemArray()->item(row).filePath;
        const QString extension = pathExtension(path);
        if (audioOpen ? isAudioExtension(extension) : isVideoExtension(extension))
            files.append(path);
        else
            others.skip(path, QStringLiteral("the open editor edits %1 files; open this one in its own editor")
                                  .arg(audioOpen ? QStringLiteral("audio") : QStringLiteral("movie")));
    }
    const AudioTagChanges audioChanges = audioOpen ? audioView_->changes() : AudioTagChanges();
    const MovieChanges movieChanges = videoOpen ? videoView_->changes() : MovieChanges();
    app_.runCommand(QStringLiteral("Save Media Changes"),
                    [files, others, audioOpen, audioChanges, movieChanges](const CommandContext& context) {
                        CommandResult result = others;
                        if (!files.isEmpty())
                            result.merge(audioOpen ? saveAudioTags(files, audioChanges, context)
                                                   : saveMovieFields(files, movieChanges, context));
                        return result;
                    });
}

}  // namespace pelorin
