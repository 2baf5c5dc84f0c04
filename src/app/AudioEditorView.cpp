#include "app/AudioEditorView.h"

#include "app/EditorFieldGroups.h"
#include "app/MediaPlayerBar.h"
#include "ui/ArtworkWell.h"
#include "model/ItemPictureImage.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace pelorin {
namespace {

const QString kBasic = QStringLiteral("basic");
const QString kCamera = QStringLiteral("camera");
constexpr int kWellSide = 140;

struct InfoSlot {
    const char* objectName;
    const char* caption;
    QString (*value)(const IKImageItem&);
};

const InfoSlot kInfo[] = {
    {"audioFileNameLabel", "File Name:", [](const IKImageItem& i) { return i.fileName; }},
    {"audioModifiedDateLabel", "Modified Date:",
     [](const IKImageItem& i) {
         return i.fileModifyDate.isValid()
                    ? i.fileModifyDate.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                    : QString();
     }},
    {"audioFileSizeLabel", "File Size:", [](const IKImageItem& i) { return i.fileSize; }},
    {"audioLocationLabel", "Location:", [](const IKImageItem& i) { return i.filePath; }},
    {"audioKindLabel", "Kind:", [](const IKImageItem& i) { return i.fileType; }},
    {"audioChannelsLabel", "Channels:", [](const IKImageItem& i) { return i.fileChannels; }},
    {"audioDurationLabel", "Duration:", [](const IKImageItem& i) { return i.fileduratStr; }},
    {"audioBitrateLabel", "Bitrate:", [](const IKImageItem& i) { return i.fileBitRate; }},
    {"audioSampleRateLabel", "Sample Rate:", [](const IKImageItem& i) { return i.fileSampleRate; }},
};

// The one-line tag fields and the record field each shows. Lyrics, the only multi-line field,
// is added on its own.
struct FieldSlot {
    const char* objectName;
    const char* caption;
    AudioField field;
    QString IKImageItem::*member;
};

const FieldSlot kTrackFields[] = {
    {"titlelab", "Title", AudioField::Title, &IKImageItem::fileTitle},
    {"subtitlelab", "Subtitle", AudioField::Subtitle, &IKImageItem::fileSubTitle},
    {"abulmlab", "Album", AudioField::Album, &IKImageItem::fileAblumName},
    {"artistlab", "Artist", AudioField::Artist, &IKImageItem::fileArist},
    // The record keeps the track number in its album-artist field.
    {"ablumAristlab", "Track Number", AudioField::TrackNumber, &IKImageItem::fileAlbumArist},
    {"composerlab", "Composer", AudioField::Composer, &IKImageItem::fileComposer},
};

const FieldSlot kReleaseFields[] = {
    {"recordDatelab", "Recording Date", AudioField::RecordDate, &IKImageItem::shootDateStr},
    {"releaseYearlab", "Year", AudioField::Year, &IKImageItem::fileReleasedYear},
    {"copyrightlab", "Copyright", AudioField::Copyright, &IKImageItem::fileCopyright},
    {"publishlab", "Publisher", AudioField::Publisher, &IKImageItem::filePublisher},
    {"bandlab", "Band", AudioField::Band, &IKImageItem::fileBand},
    {"commentslab", "Comments", AudioField::Comments, &IKImageItem::fileComments},
};

const QString kCreatedCaption = QStringLiteral("Created Date:");

}  // namespace

AudioEditorView::AudioEditorView(QWidget* parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("audioView"));
    applyMediaEditorLook(this);
    setMinimumWidth(380);
    tracker_ = new GroupEditTracker(this);
    connect(tracker_, &GroupEditTracker::editingStarted, this, &AudioEditorView::editingStarted);

    QVBoxLayout* content = addScrollingContent(this, &scroll_);
    QWidget* contentWidget = scroll_->widget();

    // The file's facts beside its artwork.
    auto* top = new QFrame(contentWidget);
    top->setProperty("role", QStringLiteral("section"));
    auto* topRow = new QHBoxLayout(top);
    topRow->setContentsMargins(10, 10, 10, 10);
    topRow->setSpacing(12);
    well_ = new ArtworkWell(QStringLiteral("audioArtImageView"), top);
    well_->setFixedSize(kWellSide, kWellSide);
    connect(well_, &ArtworkWell::artworkDropped, this, &AudioEditorView::artworkDropped);
    topRow->addWidget(well_, 0, Qt::AlignTop);
    auto* info = new QVBoxLayout;
    info->setSpacing(3);
    for (const InfoSlot& slot : kInfo) {
        const bool isPath = qstrcmp(slot.caption, "Location:") == 0;
        auto* line = new InfoLine(QString::fromLatin1(slot.objectName), top,
                                  isPath ? InfoLine::Path : InfoLine::Text);
        line->setLine(QString::fromLatin1(slot.caption), QString());
        infoLines_ << line;
        info->addWidget(line);
    }
    createdDateLine_ = new InfoLine(QStringLiteral("audioCreateDatelab"), top);
    createdDateLine_->setLine(kCreatedCaption, QString());
    info->addWidget(createdDateLine_);
    info->addStretch(1);
    topRow->addLayout(info, 1);
    content->addWidget(top);

    player_ = new MediaPlayerBar(false, contentWidget);
    content->addWidget(player_);

    QList<QLabel*> captions;
    auto* track = new FieldSection(QStringLiteral("Track"), contentWidget);
    for (const FieldSlot& slot : kTrackFields) {
        QLineEdit* field = track->addLineEdit(slot.objectName, QString::fromLatin1(slot.caption));
        lineFields_.insert(slot.field, field);
        tracker_->watch(field, kBasic);
    }
    captions << track->captions();
    content->addWidget(track);

    auto* release = new FieldSection(QStringLiteral("Release"), contentWidget);
    for (const FieldSlot& slot : kReleaseFields) {
        QLineEdit* field = release->addLineEdit(slot.objectName, QString::fromLatin1(slot.caption));
        lineFields_.insert(slot.field, field);
        tracker_->watch(field, kCamera);
    }
    lyrics_ = release->addTextEdit("lyricslab", QStringLiteral("Lyrics"));
    tracker_->watch(lyrics_, kCamera);
    captions << release->captions();
    content->addWidget(release);

    // The created date is no tag: it becomes the saved copy's file date, so it has its own group
    // and raises no group flag.
    auto* copy = new FieldSection(QStringLiteral("Saved Copy"), contentWidget);
    createdDateField_ = copy->addLineEdit("createdDatelab", QStringLiteral("Created Date"));
    auto* hint = new QLabel(QStringLiteral("The creation date the saved copy of the file gets."), copy);
    hint->setProperty("role", QStringLiteral("hint"));
    hint->setWordWrap(true);
    copy->addFullWidth(hint);
    captions << copy->captions();
    content->addWidget(copy);
    content->addStretch(1);

    alignCaptions(captions);
    resize(420, 760);
}

void AudioEditorView::showItem(const IKImageItem& item)
{
    itemPath_ = item.filePath;
    {
        const GroupEditTracker::Filling filling(*tracker_);
        for (int i = 0; i < infoLines_.size(); ++i)
            infoLines_[i]->setLine(QString::fromLatin1(kInfo[i].caption), kInfo[i].value(item));
        createdDateLine_->setLine(kCreatedCaption, item.fileCreateDateStr);

        for (const FieldSlot& slot : kTrackFields)
            setFieldText(slot.field, item.*slot.member);
        for (const FieldSlot& slot : kReleaseFields)
            setFieldText(slot.field, item.*slot.member);
        setFieldText(AudioField::Lyrics, item.fileLyricist);
        createdDateField_->setText(item.fileCreateDateStr);
    }
    // Read back, so an edit is judged against exactly what the user saw.
    openingTexts_ = currentTexts();
    openingCreatedDate_ = createdDate();
    tracker_->reset();

    droppedArtworkPath_.clear();
    well_->setPicture(pictureImage(item.fileImage));  // a null picture shows the placeholder
    player_->load(item.filePath, false);
    scroll_->verticalScrollBar()->setValue(0);
}

QMap<AudioField, QString> AudioEditorView::currentTexts() const
{
    QMap<AudioField, QString> texts;
    for (AudioField field : allAudioFields())
        texts.insert(field, fieldText(field));
    return texts;
}

bool AudioEditorView::basicInfoChanged() const { return tracker_->edited(kBasic); }
bool AudioEditorView::cameraInfoChanged() const { return tracker_->edited(kCamera); }
QString AudioEditorView::createdDate() const { return createdDateField_->text(); }

void AudioEditorView::setDroppedArtwork(const QString& path, const QImage& picture)
{
    if (path.isEmpty() || picture.isNull())
        return;  // nothing loaded: the artwork stays as it was
    droppedArtworkPath_ = path;
    well_->setPicture(picture);
}

QString AudioEditorView::fieldText(AudioField field) const
{
    if (field == AudioField::Lyrics)
        return lyrics_->toPlainText();
    QLineEdit* edit = lineFields_.value(field);
    return edit ? edit->text() : QString();
}

void AudioEditorView::setFieldText(AudioField field, const QString& text)
{
    if (field == AudioField::Lyrics) {
        lyrics_->setPlainText(text);
        return;
    }
    if (QLineEdit* edit = lineFields_.value(field)) {
        edit->setText(text);
        edit->setCursorPosition(0);  // a long value shows its beginning
    }
}

}  // namespace pelorin
