#pragma once

#include "model/IKImageItem.h"
#include "video/MovieEditorModel.h"

#include <QFrame>
#include <QList>
#include <QString>

class QLineEdit;
class QScrollArea;

namespace pelorin {

class ArtworkWell;
class GroupEditTracker;
class InfoLine;
class MediaPlayerBar;

// The video editor: a player with the movie, its artwork and facts, and the metadata fields in
// three groups, with room for a map under the location. It shows a record and gathers what the
// user typed; saving is the controller's job.
class VideoEditorView : public QFrame {
    Q_OBJECT
public:
    explicit VideoEditorView(QWidget* parent = nullptr);

    // Fills everything from the record and keeps the shown texts as the old ones; forgets earlier
    // edits and dropped artwork, and loads the movie into the player without playing it.
    void showItem(const IKImageItem& item);
    QString itemPath() const { return itemPath_; }

    MovieEditorFields shownFields() const;
    MovieEditorFields oldFields() const { return oldFields_; }
    MovieEditFlags editFlags() const;
    bool locationEdited() const;

    // Empty unless a picture was dropped and loaded since showItem.
    QString droppedArtworkPath() const { return droppedArtworkPath_; }
    void setDroppedArtwork(const QString& path, const QImage& picture);

    // Where the map goes; it has an empty layout and shows only while there is a location.
    QWidget* mapArea() const;
    ArtworkWell* artworkWell() const { return well_; }
    MediaPlayerBar* playerBar() const { return player_; }

signals:
    void editingStarted(const QString& group);  // "basic", "camera" or "gps", at the first edit
    // Each edit of latitude or longitude that leaves a valid coordinate in both fields.
    void locationTyped(double latitude, double longitude);
    void artworkDropped(const QString& path);

private:
    void noteLocationEdit();
    void showInformation(const IKImageItem& item);

    MediaPlayerBar* player_ = nullptr;
    ArtworkWell* well_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    QFrame* mapArea_ = nullptr;
    GroupEditTracker* tracker_ = nullptr;
    QList<InfoLine*> infoLines_;
    QList<QLineEdit*> fields_;  // in the order of the field table

    QString itemPath_;
    MovieEditorFields oldFields_;
    QString droppedArtworkPath_;
};

}  // namespace pelorin
