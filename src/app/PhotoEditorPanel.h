#pragma once

#include "photo/PhotoEditorFields.h"

#include <QFrame>
#include <QImage>
#include <QMap>

class QLabel;
class QLineEdit;

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
    QLineEdit* addField(const char* objectName, const QString& group);
    void showPreview();

    QLabel* preview_ = nullptr;
    QImage previewImage_;
    QMap<QString, QLineEdit*> fields_;
    QMap<QString, QLabel*> facts_;
    QString modificationDate_;  // not shown, but handed back with the rest
    QMap<QString, bool> groupEdited_;
};

}  // namespace pelorin
