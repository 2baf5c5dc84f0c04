#pragma once

#include "audio/AudioTagChanges.h"
#include "model/IKImageItem.h"

#include <QFrame>
#include <QMap>
#include <QString>

class QLineEdit;
class QPlainTextEdit;
class QScrollArea;

namespace pelorin {

class ArtworkWell;
class GroupEditTracker;
class InfoLine;
class MediaPlayerBar;

// The audio editor: the file's facts beside its artwork, a player, and the tag fields in two
// groups. It shows a record and gathers what the user typed; saving is the controller's job.
class AudioEditorView : public QFrame {
    Q_OBJECT
public:
    explicit AudioEditorView(QWidget* parent = nullptr);

    // Fills everything from the record, forgets earlier edits and dropped artwork, and loads the
    // file into the player without playing it.
    void showItem(const IKImageItem& item);
    QString itemPath() const { return itemPath_; }

    // What the user changed since showItem: each field whose text differs from the one shown
    // then, the created date when it was edited, and the dropped artwork.
    AudioTagChanges changes() const;

    // Empty unless a picture was dropped and loaded since showItem.
    QString droppedArtworkPath() const { return droppedArtworkPath_; }
    void setDroppedArtwork(const QString& path, const QImage& picture);

    ArtworkWell* artworkWell() const { return well_; }
    MediaPlayerBar* playerBar() const { return player_; }

signals:
    void editingStarted(const QString& group);  // "basic" or "camera", at the group's first edit
    void artworkDropped(const QString& path);

private:
    QMap<AudioField, QString> currentTexts() const;
    QString fieldText(AudioField field) const;
    void setFieldText(AudioField field, const QString& text);

    ArtworkWell* well_ = nullptr;
    MediaPlayerBar* player_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    GroupEditTracker* tracker_ = nullptr;
    QList<InfoLine*> infoLines_;
    InfoLine* createdDateLine_ = nullptr;
    QMap<AudioField, QLineEdit*> lineFields_;
    QPlainTextEdit* lyrics_ = nullptr;
    QLineEdit* createdDateField_ = nullptr;

    QString itemPath_;
    QMap<AudioField, QString> openingTexts_;
    QString openingCreatedDate_;
    QString droppedArtworkPath_;
};

}  // namespace pelorin
