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
    auto* release = new FieldSection(QStringLiteral("Release"), contentWidget);
    for (const AudioFieldRow& row : audioFieldRows()) {
        const bool inTrack = row.section == AudioSection::Track;
        FieldSection* section = inTrack ? track : release;
        const QString group = inTrack ? kBasic : kCamera;
        // Lyrics, the only multi-line field, comes last and takes a text box.
        if (row.field == AudioField::Lyrics) {
            lyrics_ = section->addTextEdit(row.editorName, QString::fromLatin1(row.label));
            tracker_->watch(lyrics_, group);
            continue;
        }
        QLineEdit* field = section->addLineEdit(row.editorName, QString::fromLatin1(row.label));
        lineFields_.insert(row.field, field);
        tracker_->watch(field, group);
    }
    captions << track->captions() << release->captions();
    content->addWidget(track);
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

        for (const AudioFieldRow& row : audioFieldRows())
            setFieldText(row.field, item.*row.member);
        createdDateField_->setText(item.fileCreateDateStr);
    }
    // Read back, so an edit is judged against exactly what the user saw.
    openingTexts_ = currentTexts();
    openingCreatedDate_ = createdDateField_->text();
    tracker_->reset();

    droppedArtworkPath_.clear();
    well_->setPicture(pictureImage(item.fileImage));  // a null picture shows the placeholder
    well_->setRefusal(audioArtworkRefusal(detectAudioContainerOfFile(item.filePath)));
    player_->load(item.filePath, false);
    scroll_->verticalScrollBar()->setValue(0);
}

QMap<AudioField, QString> AudioEditorView::currentTexts() const
{
    QMap<AudioField, QString> texts;
    for (const AudioFieldRow& row : audioFieldRows())
        texts.insert(row.field, fieldText(row.field));
    return texts;
}

AudioTagChanges AudioEditorView::changes() const
{
    AudioTagChanges changes;
    const QMap<AudioField, QString> current = currentTexts();
    for (auto it = current.begin(); it != current.end(); ++it)
        if (it.value() != openingTexts_.value(it.key()))
            changes.fields.insert(it.key(), it.value());
    if (createdDateField_->text() != openingCreatedDate_)
        changes.createdDate = createdDateField_->text();
    changes.artworkPath = droppedArtworkPath_;
    return changes;
}

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
