#pragma once

#include "photo/PhotoFields.h"

#include <QFrame>
#include <QImage>
#include <QMap>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QVBoxLayout;

namespace pelorin {

class HoverToolButton;

// The panel that slides in over the window to edit the selected photo(s): a row of picture
// buttons, a preview, the editable fields in three groups and the file's facts.
class PhotoEditorPanel : public QFrame {
    Q_OBJECT
public:
    explicit PhotoEditorPanel(QWidget* parent = nullptr);

    void setTexts(const PhotoEditorTexts& texts);
    PhotoEditorTexts texts() const;
    // The fields the user changed since setTexts; when a location field changed, every location
    // field is named, since the location is written as one.
    PhotoFieldChanges changes() const;
    void setPreview(const QImage& image);
    void clear();
    HoverToolButton* button(const QString& objectName) const;

signals:
    void backRequested();
    void templateRequested();
    void applyRequested();
    void dateRequested();
    void batchDateRequested();
    void gpsRequested();
    // The first edit of a field of the group ("basic", "camera" or "gps") since setTexts.
    void editingStarted(const QString& group);

private:
    QHBoxLayout* addButtonRow();
    QList<QLabel*> addFieldSections(QWidget* content, QVBoxLayout* contentLayout);
    QList<QLabel*> addFactSection(QWidget* content, QVBoxLayout* contentLayout);
    QLineEdit* addField(const char* objectName, const QString& group);
    QString fieldText(const PhotoFieldRow& row) const;
    void showPreview();

    QLabel* preview_ = nullptr;
    QImage previewImage_;
    QMap<QString, QLineEdit*> fields_;
    QMap<QString, QLabel*> facts_;
    QString modificationDate_;  // not shown, but handed back with the rest
    QMap<PhotoField, QString> openingTexts_;  // each field's text right after setTexts
    QMap<QString, bool> groupEdited_;
};

}  // namespace pelorin
