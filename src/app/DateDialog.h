#pragma once

#include "dates/PhotoDateEdit.h"
#include "dates/PhotoDateReading.h"

#include <QDialog>
#include <QImage>

class QLabel;
class QLineEdit;

namespace pelorin {

// Changes the two capture dates of the selected photo(s). It only gathers the texts; the
// controller saves and decides whether the dialog closes.
class DateDialog : public QDialog {
    Q_OBJECT
public:
    explicit DateDialog(QWidget* parent = nullptr);

    void setPhoto(const QImage& thumbnail, const QString& fileName);
    void setDates(const PhotoDateTexts& dates);
    PhotoDateEdit edit() const;

signals:
    void saveRequested();
    void saveFileDatesRequested();

private:
    QLabel* preview_ = nullptr;
    QLabel* fileName_ = nullptr;
    QLabel* fromFileNote_ = nullptr;
    QLineEdit* original_ = nullptr;
    QLineEdit* digitized_ = nullptr;
};

}  // namespace pelorin
