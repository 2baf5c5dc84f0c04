#pragma once

#include "model/IKImageItem.h"
#include "video/MovieChanges.h"

#include <QFrame>
#include <QList>
#include <QString>

class QLineEdit;
class QScrollArea;
class QVBoxLayout;

namespace pelorin {

class ArtworkWell;
class InfoLine;
class MediaPlayerBar;

// The video editor: a player with the movie, its artwork and facts, and the metadata fields of
// the movie field table in their sections, with room for a map under the location. It shows a
// record and tells what the user changed; saving is the controller's job.
class VideoEditorView : public QFrame {
    Q_OBJECT
public:
    explicit VideoEditorView(QWidget* parent = nullptr);

    // Fills everything from the record and keeps the shown texts to compare against; forgets
    // dropped artwork, and loads the movie into the player without playing it.
    void showItem(const IKImageItem& item);
    QString itemPath() const { return itemPath_; }

    // What the user changed since showItem: the fields whose lines differ from what they
    // showed, and the artwork dropped.
    MovieChanges changes() const;

    // Empty unless a picture was dropped and loaded since showItem.
    QString droppedArtworkPath() const { return droppedArtworkPath_; }
    void setDroppedArtwork(const QString& path, const QImage& picture);

    // Where the map goes; it has an empty layout and shows only while there is a location.
    QWidget* mapArea() const;
    ArtworkWell* artworkWell() const { return well_; }
    MediaPlayerBar* playerBar() const { return player_; }

signals:
    // Each edit of latitude or longitude that leaves a valid coordinate in both fields.
    void locationTyped(double latitude, double longitude);
    void artworkDropped(const QString& path);

private:
    // One line of the editor: an input of a field, and the text it showed.
    struct FieldLine {
        MovieField field;
        QLineEdit* edit;
        QString shown;
    };

    void addFieldLines(QWidget* content, QVBoxLayout* layout);
    void addInformation(QWidget* content, QVBoxLayout* layout);
    void noteLocationEdit();
    void showInformation(const IKImageItem& item);
    QLineEdit* lineOf(MovieField field, int input) const;

    MediaPlayerBar* player_ = nullptr;
    ArtworkWell* well_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    QFrame* mapArea_ = nullptr;
    QList<InfoLine*> infoLines_;
    QList<FieldLine> lines_;  // in the order of the field table

    QString itemPath_;
    QString droppedArtworkPath_;
};

}  // namespace pelorin
