#include "app/VideoEditorView.h"

#include "app/EditorFieldGroups.h"
#include "app/MediaPlayerBar.h"
#include "model/ItemPictureImage.h"
#include "ui/ArtworkWell.h"
#include "video/MovieEditorModel.h"

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

constexpr int kWellSide = 120;
constexpr int kMapHeight = 260;

QString sectionHeading(MovieEditorSection section)
{
    switch (section) {
    case MovieEditorSection::Credits: return QStringLiteral("Credits");
    case MovieEditorSection::DatesAndRights: return QStringLiteral("Dates and Rights");
    default: return QStringLiteral("Location");
    }
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

    QVBoxLayout* content = addScrollingContent(this, &scroll_);
    QWidget* contentWidget = scroll_->widget();

    // The player stays in view while the fields under it scroll.
    player_ = new MediaPlayerBar(true, this);
    auto* playerBox = new QVBoxLayout;
    playerBox->setContentsMargins(12, 12, 12, 2);
    playerBox->addWidget(player_);
    static_cast<QVBoxLayout*>(layout())->insertLayout(0, playerBox);

    addInformation(contentWidget, content);
    addFieldLines(contentWidget, content);
    content->addStretch(1);
    resize(420, 820);
}

// The artwork well beside the movie's facts.
void VideoEditorView::addInformation(QWidget* content, QVBoxLayout* layout)
{
    auto* top = new QFrame(content);
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
    layout->addWidget(top);
}

// A line for every input of the field table that the editor shows, section by section; the
// location's section ends with the map.
void VideoEditorView::addFieldLines(QWidget* content, QVBoxLayout* layout)
{
    QList<QLabel*> captions;
    FieldSection* section = nullptr;
    MovieEditorSection current = MovieEditorSection::None;
    for (const MovieFieldRow& row : movieFieldTable()) {
        for (const MovieFieldInput& input : row.inputs) {
            if (!input.label)
                continue;
            if (row.section != current) {
                current = row.section;
                section = new FieldSection(sectionHeading(current), content);
                layout->addWidget(section);
            }
            lines_.append({row.field, section->addLineEdit(input.editorName, QString::fromLatin1(input.label)), {}});
            captions << section->captions().constLast();
        }
    }
    QLineEdit* latitude = lineOf(MovieField::Location, 0);
    QLineEdit* longitude = lineOf(MovieField::Location, 1);
    latitude->setPlaceholderText(QStringLiteral("e.g. 48.858222"));
    longitude->setPlaceholderText(QStringLiteral("e.g. 2.2945"));
    for (QLineEdit* coordinate : {latitude, longitude})
        connect(coordinate, &QLineEdit::textEdited, this, &VideoEditorView::noteLocationEdit);

    mapArea_ = new QFrame(section);
    mapArea_->setObjectName(QStringLiteral("mediaMapArea"));
    mapArea_->setMinimumHeight(kMapHeight);
    mapArea_->setStyleSheet(QStringLiteral(
        "QFrame#mediaMapArea { background-color: #1C252E; border: 1px solid #415A72; border-radius: 4px; }"));
    auto* mapLayout = new QVBoxLayout(mapArea_);
    mapLayout->setContentsMargins(0, 0, 0, 0);
    section->addFullWidth(mapArea_);
    mapArea_->hide();
    alignCaptions(captions);
}

QLineEdit* VideoEditorView::lineOf(MovieField field, int input) const
{
    int seen = 0;
    for (const FieldLine& line : lines_) {
        if (line.field == field && seen++ == input)
            return line.edit;
    }
    return nullptr;
}

void VideoEditorView::showItem(const IKImageItem& item)
{
    itemPath_ = item.filePath;
    showInformation(item);
    for (qsizetype i = 0; i < lines_.size();) {
        const MovieField field = lines_[i].field;
        const QStringList texts = movieEditorTexts(item, field);
        for (qsizetype input = 0; i < lines_.size() && lines_[i].field == field; ++i, ++input) {
            lines_[i].shown = texts.value(input);
            lines_[i].edit->setText(lines_[i].shown);
            lines_[i].edit->setCursorPosition(0);
        }
    }
    droppedArtworkPath_.clear();
    well_->setPicture(pictureImage(item.fileImage));  // a null picture shows the placeholder

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

MovieChanges VideoEditorView::changes() const
{
    MovieChanges changes;
    for (qsizetype i = 0; i < lines_.size();) {
        const MovieField field = lines_[i].field;
        QStringList shown;
        QStringList typed;
        for (; i < lines_.size() && lines_[i].field == field; ++i) {
            shown.append(lines_[i].shown);
            typed.append(lines_[i].edit->text());
        }
        addEditedField(changes, field, shown, typed);
    }
    if (!droppedArtworkPath_.isEmpty())
        changes.artworkPath = droppedArtworkPath_;
    return changes;
}

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
    const std::optional<double> latitude = typedCoordinate(lineOf(MovieField::Location, 0)->text(), 90.0);
    const std::optional<double> longitude = typedCoordinate(lineOf(MovieField::Location, 1)->text(), 180.0);
    if (!latitude || !longitude)
        return;
    mapArea_->show();
    emit locationTyped(*latitude, *longitude);
}

}  // namespace pelorin
