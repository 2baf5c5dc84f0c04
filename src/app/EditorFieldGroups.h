#pragma once

#include <QFrame>
#include <QLabel>
#include <QMap>
#include <QObject>
#include <QString>

class QFormLayout;
class QLineEdit;
class QPlainTextEdit;
class QScrollArea;
class QVBoxLayout;

namespace pelorin {

// The dark look of the media editors; view is the editor's own frame, named by its objectName.
void applyMediaEditorLook(QFrame* view);

// The editor's content inside a vertical scroll area that fills the view; returns the
// content's layout.
QVBoxLayout* addScrollingContent(QFrame* view, QScrollArea** scrollOut = nullptr);

// "Caption: value", or the caption alone when there is no value.
QString captionLine(const QString& caption, const QString& value);

// One information line, shortened to the width it gets so a long value never widens the
// editor; a shortened line shows itself whole as its tooltip. A path line is shortened in the
// middle and always has the whole path as its tooltip.
class InfoLine : public QLabel {
    Q_OBJECT
public:
    enum Kind { Text, Path };
    explicit InfoLine(const QString& objectName, QWidget* parent = nullptr, Kind kind = Text);

    void setLine(const QString& caption, const QString& value);
    QString fullText() const { return captionLine(caption_, value_); }

    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showFitted();

    Kind kind_;
    QString caption_;
    QString value_;
};

// A framed group of labelled fields under a heading.
class FieldSection : public QFrame {
    Q_OBJECT
public:
    FieldSection(const QString& heading, QWidget* parent = nullptr);

    QLineEdit* addLineEdit(const char* objectName, const QString& caption);
    QPlainTextEdit* addTextEdit(const char* objectName, const QString& caption);
    void addFullWidth(QWidget* widget);
    QList<QLabel*> captions() const { return captions_; }

private:
    QLabel* addCaption(const QString& caption);

    QVBoxLayout* layout_ = nullptr;
    QFormLayout* form_ = nullptr;
    QList<QLabel*> captions_;
};

// Gives every caption the width of the widest, so fields line up across sections.
void alignCaptions(const QList<QLabel*>& captions);

// Which groups of fields the user has edited since the last reset. Only the user's typing
// counts: texts set while a Filling guard lives are not edits.
class GroupEditTracker : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    void watch(QLineEdit* field, const QString& group);
    void watch(QPlainTextEdit* field, const QString& group);
    bool edited(const QString& group) const { return edited_.value(group, false); }
    void reset() { edited_.clear(); }

    class Filling {
    public:
        explicit Filling(GroupEditTracker& tracker) : tracker_(tracker) { ++tracker_.filling_; }
        ~Filling() { --tracker_.filling_; }
        Filling(const Filling&) = delete;
        Filling& operator=(const Filling&) = delete;

    private:
        GroupEditTracker& tracker_;
    };

signals:
    void editingStarted(const QString& group);  // the first edit of the group since reset

private:
    void noteEdit(const QString& group);

    QMap<QString, bool> edited_;
    int filling_ = 0;
};

}  // namespace pelorin
