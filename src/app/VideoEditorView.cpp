#include "app/VideoEditorView.h"

#include "app/EditorFieldGroups.h"
#include "app/MediaPlayerBar.h"
#include "ui/ArtworkWell.h"
#include "model/ItemPictureImage.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QLocale>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <cmath>
#include <optional>

namespace pelorin {
namespace {

const QString kBasic = QStringLiteral("basic");
const QString kCamera = QStringLiteral("camera");
const QString kGps = QStringLiteral("gps");
constexpr int kWellSide = 120;
constexpr int kMapHeight = 260;

// Each field, the text of the editor model it holds (whose comments name the record field) and
// the group an edit of it belongs to.
struct FieldSlot {
    const char* objectName;
    const char* caption;
    QString MovieEditorFields::*member;
    const QString* group;
};

const FieldSlot kFields[] = {
    {"mediaTitle", "Title", &MovieEditorFields::title, &kBasic},
    {"mediaAlumArtis", "Album", &MovieEditorFields::albumArtist, &kBasic},
    {"mediaArtist", "Artist", &MovieEditorFields::artist, &kBasic},
    {"mediaMake", "Director", &MovieEditorFields::make, &kBasic},
    {"mediaModel", "Performer", &MovieEditorFields::model, &kBasic},
    {"mediaProducer", "Producer", &MovieEditorFields::producer, &kBasic},
    {"mediaCreatedDate", "Created Date (file)", &MovieEditorFields::createdDate, &kCamera},
    {"mediaShootDate", "Recording Date", &MovieEditorFields::shootDate, &kCamera},
    {"mediaReleaseYear", "Publisher", &MovieEditorFields::releaseYear, &kCamera},
    {"mediaCopyright", "Copyright", &MovieEditorFields::copyright, &kCamera},
    {"mediakeywords", "Keywords", &MovieEditorFields::keywords, &kCamera},
    {"mediaSoftware", "Description", &MovieEditorFields::software, &kCamera},
    {"mediaLatitude", "Latitude", &MovieEditorFields::latitude, &kGps},
    {"mediaLongtitude", "Longitude", &MovieEditorFields::longitude, &kGps},
    {"mediaAatitude", "Altitude (m)", &MovieEditorFields::altitude, &kGps},
};
constexpr int kLatitudeSlot = 12;
constexpr int kLongitudeSlot = 13;

QString sectionHeading(const QString* group)
{
    if (group == &kBasic)
        return QStringLiteral("Credits");
    if (group == &kCamera)
        return QStringLiteral("Dates and Rights");
    return QStringLiteral("Location");
}

// A coordinate as typed: plain C notation, or the user's own decimal comma.
std::optional<double> typedCoordinate(const QString& text, double limit)
{
    const QString trimmed = text.trimmed();
    bool ok = false;
    QLocale plain = QLocale::c();
    plain.setNumberOptions(QLocale::RejectGroupSeparator);  // "12,5" is no twelve thousand
    double value = plain.toDouble(trimmed, &ok);
    if (!ok) {
        QLocale own;
        own.setNumberOptions(QLocale::RejectGroupSeparator);
        value = own.toDouble(trimmed, &ok);
    }
    if (!ok || !std::isfinite(value) || std::fabs(value) > limit)
        return std::nullopt;
    return value;
}

QString captionOf(const QString& line)
{
    const int colon = line.indexOf(QLatin1Char(':'));
    return colon < 0 ? line : line.left(colon + 1);
}

QString infoObjectName(const QString& caption)
{
    QString name = QStringLiteral("videoInfo");
    for (QChar c : caption) {
        if (c.isLetterOrNumber())
            name += c;
    }
    return name;
}

}  // namespace

VideoEditorView::VideoEditorView(QWidget* parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("mediaMetadataView"));
    applyMediaEditorLook(this);
    setMinimumWidth(380);
    tracker_ = new GroupEditTracker(this);
    connect(tracker_, &GroupEditTracker::editingStarted, this, &VideoEditorView::editingStarted);

    QVBoxLayout* content = addScrollingContent(this, &scroll_);
    QWidget* contentWidget = scroll_->widget();

    // The player stays in view while the fields under it scroll.
    player_ = new MediaPlayerBar(true, this);
    auto* playerBox = new QVBoxLayout;
    playerBox->setContentsMargins(12, 12, 12, 2);
    playerBox->addWidget(player_);
    static_cast<QVBoxLayout*>(layout())->insertLayout(0, playerBox);

    auto* top = new QFrame(contentWidget);
    top->setProperty("role", QStringLiteral("section"));
    auto* topRow = new QHBoxLayout(top);
    topRow->setContentsMargins(10, 10, 10, 10);
    topRow->setSpacing(12);
    well_ = new ArtworkWell(QStringLiteral("videoArtImageView"), top);
    well_->setFixedSize(kWellSide, kWellSide);
    connect(well_, &ArtworkWell::artworkDropped, this, &VideoEditorView::artworkDropped);
    topRow->addWidget(well_, 0, Qt::AlignTop);
    auto* info = new QVBoxLayout;
    info->setSpacing(3);
    for (const QString& line : movieInformationLines(IKImageItem{})) {
        const QString caption = captionOf(line);
        const bool isPath = caption == QLatin1String("Location:");
        auto* label = new InfoLine(infoObjectName(caption), top, isPath ? InfoLine::Path : InfoLine::Text);
        label->setLine(caption, QString());
        infoLines_ << label;
        info->addWidget(label);
    }
    info->addStretch(1);
    topRow->addLayout(info, 1);
    content->addWidget(top);

    QList<QLabel*> captions;
    FieldSection* section = nullptr;
    const QString* group = nullptr;
    for (const FieldSlot& slot : kFields) {
        if (slot.group != group) {
            group = slot.group;
            section = new FieldSection(sectionHeading(group), contentWidget);
            content->addWidget(section);
        }
        QLineEdit* field = section->addLineEdit(slot.objectName, QString::fromLatin1(slot.caption));
        tracker_->watch(field, *slot.group);
        fields_ << field;
        captions << section->captions().constLast();
    }
    fields_[kLatitudeSlot]->setPlaceholderText(QStringLiteral("e.g. 48.858222"));
    fields_[kLongitudeSlot]->setPlaceholderText(QStringLiteral("e.g. 2.2945"));
    for (int slot : {kLatitudeSlot, kLongitudeSlot})
        connect(fields_[slot], &QLineEdit::textEdited, this, &VideoEditorView::noteLocationEdit);

    // The location section is the last one made.
    mapArea_ = new QFrame(section);
    mapArea_->setObjectName(QStringLiteral("mediaMapArea"));
    mapArea_->setMinimumHeight(kMapHeight);
    mapArea_->setStyleSheet(QStringLiteral(
        "QFrame#mediaMapArea { background-color: #1C252E; border: 1px solid #415A72; border-radius: 4px; }"));
    auto* mapLayout = new QVBoxLayout(mapArea_);
    mapLayout->setContentsMargins(0, 0, 0, 0);
    section->addFullWidth(mapArea_);
    mapArea_->hide();
    content->addStretch(1);

    alignCaptions(captions);
    resize(420, 820);
}

void VideoEditorView::showItem(const IKImageItem& item)
{
    itemPath_ = item.filePath;
    showInformation(item);
    const MovieEditorFields fields = MovieEditorFields::fromItem(item);
    {
        const GroupEditTracker::Filling filling(*tracker_);
        for (int i = 0; i < fields_.size(); ++i) {
            fields_[i]->setText(fields.*kFields[i].member);
            fields_[i]->setCursorPosition(0);
        }
    }
    tracker_->reset();
    droppedArtworkPath_.clear();
    well_->setPicture(pictureImage(item.fileImage));  // a null picture shows the placeholder
    oldFields_ = shownFields();

    mapArea_->setVisible(!item.latitudeFormat.isEmpty());
    player_->load(item.filePath, false);
    scroll_->verticalScrollBar()->setValue(0);
}

void VideoEditorView::showInformation(const IKImageItem& item)
{
    const QStringList lines = movieInformationLines(item);
    for (int i = 0; i < infoLines_.size(); ++i) {
        const QString line = i < lines.size() ? lines[i] : QString();
        const QString caption = captionOf(line);
        if (caption == QLatin1String("Location:"))
            infoLines_[i]->setLine(caption, item.filePath);
        else
            infoLines_[i]->setLine(caption, line.mid(caption.size()).trimmed());
    }
}

MovieEditorFields VideoEditorView::shownFields() const
{
    MovieEditorFields fields;
    for (int i = 0; i < fields_.size(); ++i)
        fields.*kFields[i].member = fields_[i]->text();
    fields.hasArtwork = well_->hasPicture();
    return fields;
}

MovieEditFlags VideoEditorView::editFlags() const
{
    MovieEditFlags flags;
    flags.basicInfo = tracker_->edited(kBasic);
    flags.cameraInfo = tracker_->edited(kCamera);
    return flags;
}

bool VideoEditorView::locationEdited() const { return tracker_->edited(kGps); }

void VideoEditorView::setDroppedArtwork(const QString& path, const QImage& picture)
{
    if (path.isEmpty() || picture.isNull())
        return;  // nothing loaded: the artwork stays as it was
    droppedArtworkPath_ = path;
    well_->setPicture(picture);
}

QWidget* VideoEditorView::mapArea() const { return mapArea_; }

void VideoEditorView::noteLocationEdit()
{
    const std::optional<double> latitude = typedCoordinate(fields_[kLatitudeSlot]->text(), 90.0);
    const std::optional<double> longitude = typedCoordinate(fields_[kLongitudeSlot]->text(), 180.0);
    if (!latitude || !longitude)
        return;
    mapArea_->show();
    emit locationTyped(*latitude, *longitude);
}

}  // namespace pelorin
