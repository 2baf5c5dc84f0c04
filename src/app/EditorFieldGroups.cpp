#include "app/EditorFieldGroups.h"

#include "ui/DialogLook.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QResizeEvent>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace pelorin {
namespace {

const char* const kLook = R"(
QLabel[role="info"] { color: #ECF0F1; }
QLabel[role="hint"] { color: #9FB0C0; font-size: 9pt; }
)";

// The scrolling content is named after its view, so the view's sheet can find it.
QString contentName(const QFrame* view)
{
    return view->objectName() + QStringLiteral("Content");
}

}  // namespace

void applyMediaEditorLook(QFrame* view)
{
    view->setAttribute(Qt::WA_StyledBackground);
    applyLook(view, editorPanelStyleSheet(view->objectName(), contentName(view), QString::fromLatin1(kLook)));
}

QVBoxLayout* addScrollingContent(QFrame* view, QScrollArea** scrollOut)
{
    auto* content = new QWidget;
    content->setObjectName(contentName(view));
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins(12, 12, 12, 12);
    contentLayout->setSpacing(10);

    QScrollArea* scroll = fillPanelWithScrollArea(view, content, view->objectName() + QStringLiteral("Scroll"));
    if (scrollOut)
        *scrollOut = scroll;
    return contentLayout;
}

QString captionLine(const QString& caption, const QString& value)
{
    return value.isEmpty() ? caption : caption + QLatin1Char(' ') + value;
}

InfoLine::InfoLine(const QString& objectName, QWidget* parent, Kind kind) : QLabel(parent), kind_(kind)
{
    setObjectName(objectName);
    setProperty("role", QStringLiteral("info"));
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    // The editor's width is set by the window, not by the longest value.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void InfoLine::setLine(const QString& caption, const QString& value)
{
    caption_ = caption;
    value_ = value;
    showFitted();
}

QSize InfoLine::minimumSizeHint() const
{
    return {fontMetrics().horizontalAdvance(caption_) + 24, QLabel::minimumSizeHint().height()};
}

void InfoLine::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    if (event->size().width() != event->oldSize().width())
        showFitted();
}

void InfoLine::showFitted()
{
    const QString whole = fullText();
    QString shown = whole;
    // Before its first layout the label's width means nothing: the whole line until then.
    if (!value_.isEmpty() && testAttribute(Qt::WA_Resized)) {
        const QFontMetrics metrics = fontMetrics();
        const int room = contentsRect().width();
        if (metrics.horizontalAdvance(whole) > room) {
            const QString lead = caption_ + QLatin1Char(' ');
            const int valueRoom = std::max(0, room - metrics.horizontalAdvance(lead));
            shown = lead + metrics.elidedText(value_, kind_ == Path ? Qt::ElideMiddle : Qt::ElideRight, valueRoom);
        }
    }
    setText(shown);
    if (kind_ == Path)
        setToolTip(value_);
    else
        setToolTip(shown == whole ? QString() : whole);
}

FieldSection::FieldSection(const QString& heading, QWidget* parent) : QFrame(parent)
{
    setProperty("role", QStringLiteral("section"));
    layout_ = new QVBoxLayout(this);
    layout_->setContentsMargins(12, 8, 12, 10);
    layout_->setSpacing(8);
    layout_->addWidget(labelWithRole(heading, "heading", this));
    form_ = alignedFormLayout(10, 6);
    form_->setRowWrapPolicy(QFormLayout::DontWrapRows);
    layout_->addLayout(form_);
}

QLabel* FieldSection::addCaption(const QString& caption)
{
    QLabel* label = labelWithRole(caption, "caption", this);
    captions_ << label;
    return label;
}

QLineEdit* FieldSection::addLineEdit(const char* objectName, const QString& caption)
{
    auto* field = new QLineEdit(this);
    field->setObjectName(QString::fromLatin1(objectName));
    field->setMinimumWidth(120);
    form_->addRow(addCaption(caption), field);
    return field;
}

QPlainTextEdit* FieldSection::addTextEdit(const char* objectName, const QString& caption)
{
    auto* field = new QPlainTextEdit(this);
    field->setObjectName(QString::fromLatin1(objectName));
    field->setTabChangesFocus(true);
    field->setFixedHeight(field->fontMetrics().lineSpacing() * 4 + 16);
    QLabel* label = addCaption(caption);
    label->setAlignment(Qt::AlignRight | Qt::AlignTop);
    form_->addRow(label, field);
    return field;
}

void FieldSection::addFullWidth(QWidget* widget)
{
    widget->setParent(this);
    layout_->addWidget(widget);
}

void alignCaptions(const QList<QLabel*>& captions)
{
    int width = 0;
    for (QLabel* caption : captions)
        width = std::max(width, caption->sizeHint().width());
    for (QLabel* caption : captions) {
        caption->setMinimumWidth(width);
        if (!(caption->alignment() & Qt::AlignTop))
            caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
}

void GroupEditTracker::watch(QLineEdit* field, const QString& group)
{
    // textEdited, not textChanged: only the user's typing is an edit.
    connect(field, &QLineEdit::textEdited, this, [this, group] { noteEdit(group); });
}

void GroupEditTracker::watch(QPlainTextEdit* field, const QString& group)
{
    // A plain text edit has no typing-only signal; fills run under a Filling guard instead.
    connect(field, &QPlainTextEdit::textChanged, this, [this, group] { noteEdit(group); });
}

void GroupEditTracker::noteEdit(const QString& group)
{
    if (filling_ > 0)
        return;
    bool& edited = edited_[group];
    if (edited)
        return;
    edited = true;
    emit editingStarted(group);
}

}  // namespace pelorin
