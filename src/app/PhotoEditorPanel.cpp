#include "app/PhotoEditorPanel.h"

#include "app/DateFieldParsing.h"
#include "ui/DialogLook.h"
#include "ui/HoverToolButton.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace pelorin {
namespace {

constexpr QSize kPreviewSize(200, 150);
constexpr int kPanelWidth = 420;

const QString kContentName = QStringLiteral("photoEditorContent");

const QString kBasic = QStringLiteral("basic");
const QString kCamera = QStringLiteral("camera");
const QString kGps = QStringLiteral("gps");

const char* const kLook = R"(
QLabel[role="fact"] { color: #ECF0F1; }
QLabel#localPhotoImageView { background-color: #23292F; border: 1px solid #4F6275; color: #7F8C97; }
QToolButton { color: #ECF0F1; background: transparent; border: none; padding: 2px 4px; }
QToolButton:hover, QToolButton:pressed { color: #5FC3FF; }
)";

// Each section of the editor's fields: its heading, and the group an edit of it starts.
struct SectionLook {
    PhotoSection section;
    const char* heading;
    const QString* group;
};

const SectionLook kSections[] = {
    {PhotoSection::Description, "Description", &kBasic},
    {PhotoSection::Camera, "Camera", &kCamera},
    {PhotoSection::Location, "Location", &kGps},
};

const SectionLook& sectionLook(PhotoSection section)
{
    return *std::find_if(std::begin(kSections), std::end(kSections),
                         [section](const SectionLook& look) { return look.section == section; });
}

struct FactSlot {
    const char* objectName;
    const char* caption;
    QString PhotoEditorTexts::*member;
};

const FactSlot kFacts[] = {
    {"fileNameLabel", "Name:", &PhotoEditorTexts::fileName},
    {"fileSizeLabel", "File size:", &PhotoEditorTexts::fileSize},
    {"imageSizeLabel", "Image size:", &PhotoEditorTexts::imageSize},
    {"creationDateLabel", "Created:", &PhotoEditorTexts::creationDate},
    {"dpiLabel", "Resolution (dpi):", &PhotoEditorTexts::dpi},
};

QFormLayout* sectionForm(const QString& title, QWidget* parent, QVBoxLayout* into)
{
    auto* frame = new QFrame(parent);
    frame->setProperty("role", QStringLiteral("section"));
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(12, 8, 12, 10);
    layout->setSpacing(8);
    layout->addWidget(labelWithRole(title, "heading", frame));
    QFormLayout* form = alignedFormLayout(10, 6);
    layout->addLayout(form);
    into->addWidget(frame);
    return form;
}

}  // namespace

PhotoEditorPanel::PhotoEditorPanel(QWidget* parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("photoEditorView"));
    setAttribute(Qt::WA_StyledBackground);
    applyLook(this, editorPanelStyleSheet(objectName(), kContentName, QString::fromLatin1(kLook)));
    setMinimumWidth(kPanelWidth);
    QHBoxLayout* buttons = addButtonRow();

    // Everything under the buttons scrolls when the window is short.
    auto* content = new QWidget;
    content->setObjectName(kContentName);
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins(12, 4, 12, 12);
    contentLayout->setSpacing(10);

    preview_ = new QLabel(QStringLiteral("No preview"), content);
    preview_->setObjectName(QStringLiteral("localPhotoImageView"));
    preview_->setFixedSize(kPreviewSize);
    preview_->setAlignment(Qt::AlignCenter);
    contentLayout->addWidget(preview_, 0, Qt::AlignHCenter);

    QList<QLabel*> captions = addFieldSections(content, contentLayout);
    captions += addFactSection(content, contentLayout);
    contentLayout->addStretch(1);

    // One caption width for every group, so the fields line up down the whole panel.
    int captionWidth = 0;
    for (QLabel* caption : captions)
        captionWidth = std::max(captionWidth, caption->sizeHint().width());
    for (QLabel* caption : captions) {
        caption->setMinimumWidth(captionWidth);
        caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }

    fillPanelWithScrollArea(this, content, QStringLiteral("photoEditorScroll"), buttons);

    resize(kPanelWidth, 720);
}

QHBoxLayout* PhotoEditorPanel::addButtonRow()
{
    const struct {
        const char* objectName;
        const char* picture;
        const char* text;
        void (PhotoEditorPanel::*signal)();
    } buttons[] = {
        {"editBackBtn", "back", "Back", &PhotoEditorPanel::backRequested},
        {"editTemplateBtn", "template", "Template", &PhotoEditorPanel::templateRequested},
        {"editApplyBtn", "apply", "Apply", &PhotoEditorPanel::applyRequested},
        {"changePhotoDateBtn", "savechanges", "Date", &PhotoEditorPanel::dateRequested},
        {"changeMutiPhotoDateBtn", "dates", "Batch Dates", &PhotoEditorPanel::batchDateRequested},
        {"editGpsBtn", "gps", "GPS", &PhotoEditorPanel::gpsRequested},
    };
    auto* row = new QHBoxLayout;
    row->setContentsMargins(8, 6, 8, 6);
    row->setSpacing(0);
    for (const auto& b : buttons) {
        auto* button = new HoverToolButton(QString::fromLatin1(b.objectName), QString::fromLatin1(b.picture),
                                           QString::fromLatin1(b.text), this);
        connect(button, &QToolButton::clicked, this, b.signal);
        row->addWidget(button, 1);
    }
    return row;
}

QList<QLabel*> PhotoEditorPanel::addFieldSections(QWidget* content, QVBoxLayout* contentLayout)
{
    QList<QLabel*> captions;
    QFormLayout* form = nullptr;
    std::optional<PhotoSection> currentSection;
    for (const PhotoFieldRow& row : photoFieldRows()) {
        const SectionLook& look = sectionLook(row.section);
        if (row.section != currentSection) {
            currentSection = row.section;
            form = sectionForm(QString::fromLatin1(look.heading), content, contentLayout);
        }
        auto* caption = labelWithRole(QString::fromLatin1(row.label), "caption", content);
        captions << caption;
        form->addRow(caption, addField(row.editorName, *look.group));
    }
    fields_.value(QStringLiteral("keywordField"))->setPlaceholderText(QStringLiteral("comma, separated"));
    QLineEdit* cameraDate = fields_.value(QStringLiteral("cameraDateField"));
    cameraDate->setMinimumWidth(dateFieldMinimumWidth(cameraDate->fontMetrics()));
    return captions;
}

QList<QLabel*> PhotoEditorPanel::addFactSection(QWidget* content, QVBoxLayout* contentLayout)
{
    QList<QLabel*> captions;
    QFormLayout* form = sectionForm(QStringLiteral("File"), content, contentLayout);
    for (const FactSlot& slot : kFacts) {
        auto* caption = labelWithRole(QString::fromLatin1(slot.caption), "caption", content);
        captions << caption;
        auto* fact = labelWithRole(QString(), "fact", content);
        fact->setObjectName(QString::fromLatin1(slot.objectName));
        fact->setTextInteractionFlags(Qt::TextSelectableByMouse);
        fact->setWordWrap(true);
        // A long file name must not widen the panel past its edge; the tooltip holds it whole.
        fact->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

        facts_.insert(fact->objectName(), fact);
        form->addRow(caption, fact);
    }
    return captions;
}

QLineEdit* PhotoEditorPanel::addField(const char* objectName, const QString& group)
{
    auto* field = new QLineEdit;
    field->setObjectName(QString::fromLatin1(objectName));
    fields_.insert(field->objectName(), field);
    // textEdited, not textChanged: filling the fields from a photo is no edit.
    connect(field, &QLineEdit::textEdited, this, [this, group] {
        bool& edited = groupEdited_[group];
        if (edited)
            return;
        edited = true;
        emit editingStarted(group);
    });
    return field;
}

void PhotoEditorPanel::setTexts(const PhotoEditorTexts& texts)
{
    for (const PhotoFieldRow& row : photoFieldRows())
        fields_.value(QString::fromLatin1(row.editorName))->setText(texts.*row.member);
    for (const FactSlot& slot : kFacts) {
        QLabel* fact = facts_.value(QString::fromLatin1(slot.objectName));
        fact->setText(texts.*slot.member);
        fact->setToolTip(texts.*slot.member);
    }
    modificationDate_ = texts.modificationDate;
    // Read back, so a change is judged against exactly what the user saw.
    openingTexts_.clear();
    for (const PhotoFieldRow& row : photoFieldRows())
        openingTexts_.insert(row.field, fieldText(row));
    groupEdited_.clear();
}

QString PhotoEditorPanel::fieldText(const PhotoFieldRow& row) const
{
    return fields_.value(QString::fromLatin1(row.editorName))->text();
}

PhotoEditorTexts PhotoEditorPanel::texts() const
{
    PhotoEditorTexts texts;
    for (const PhotoFieldRow& row : photoFieldRows())
        texts.*row.member = fieldText(row);
    for (const FactSlot& slot : kFacts)
        texts.*slot.member = facts_.value(QString::fromLatin1(slot.objectName))->text();
    texts.modificationDate = modificationDate_;
    return texts;
}

PhotoFieldChanges PhotoEditorPanel::changes() const
{
    PhotoFieldChanges changes;
    bool locationChanged = false;
    for (const PhotoFieldRow& row : photoFieldRows()) {
        const QString text = fieldText(row);
        if (text == openingTexts_.value(row.field))
            continue;
        changes.fields.insert(row.field, text);
        locationChanged = locationChanged || row.section == PhotoSection::Location;
    }
    // The location is written as one: its unchanged fields go along with the changed ones.
    if (locationChanged)
        for (const PhotoFieldRow& row : photoFieldRows())
            if (row.section == PhotoSection::Location)
                changes.fields.insert(row.field, fieldText(row));
    return changes;
}

void PhotoEditorPanel::setPreview(const QImage& image)
{
    previewImage_ = image;
    showPreview();
}

void PhotoEditorPanel::showPreview()
{
    if (previewImage_.isNull()) {
        preview_->setPixmap(QPixmap());
        preview_->setText(QStringLiteral("No preview"));
        return;
    }
    // Inside the frame's border, so the picture never covers it.
    preview_->setPixmap(QPixmap::fromImage(previewImage_.scaled(
        kPreviewSize - QSize(2, 2), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}

void PhotoEditorPanel::clear()
{
    setTexts(PhotoEditorTexts{});
    setPreview(QImage());
}

HoverToolButton* PhotoEditorPanel::button(const QString& objectName) const
{
    return findChild<HoverToolButton*>(objectName, Qt::FindDirectChildrenOnly);
}

}  // namespace pelorin
