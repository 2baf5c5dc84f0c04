#pragma once
#include <QObject>

namespace pelorin {

class AppDelegate;
class AudioEditorView;
class VideoEditorView;
class TileMapView;

// The media editors: showing an audio or video item in its editor, artwork drops, and the save
// of the open editor's changes into every selected item of its kind.
class MediaEditActions : public QObject {
    Q_OBJECT
public:
    explicit MediaEditActions(AppDelegate& app);

    AudioEditorView* audioView() const { return audioView_; }
    VideoEditorView* videoView() const { return videoView_; }
    TileMapView* videoMap() const { return videoMap_; }

public slots:
    // Opens the first selected row of the media table in the editor of its kind.
    void editSelectedMediaItem();
    void ShowAudioViewWithItem(int row);
    void ShowVideoViewWithItem(int row);
    void SaveMeidaFileChangesAction();
    void NSDragOperationImageViewNoteHandle(const QString& path);

private:
    void showMediaRow(int row);
    void showEditor(QWidget* view);

    AppDelegate& app_;
    AudioEditorView* audioView_;
    VideoEditorView* videoView_;
    TileMapView* videoMap_;
};

}  // namespace pelorin
