#pragma once

#include "dates/PhotoDateReading.h"
#include "dates/PhotoDateShift.h"

#include <QDialog>
#include <QImage>

class QLabel;
class QLineEdit;
class QPushButton;

namespace pelorin {

// Changes the dates of several photos at once: by a reference photo's change, to one fixed date,
// or by a time span. The mode follows from what is filled in, and a line under the sections
// says which one a save will use.
class BatchDateDialog : public QDialog {
    Q_OBJECT
public:
    explicit BatchDateDialog(QWidget* parent = nullptr);

    void setReferencePhoto(const QString& path, const QImage& thumbnail, const PhotoDateTexts& dates);
    void clearReferencePhoto();
    BatchDateRequest request() const;
    void clearFields();

public slots:
    void reject() override;

signals:
    void choosePhotoRequested();
    void saveRequested();
    void saveFileDatesRequested();

private:
    void updateModeSummary();

    QString referencePath_;
    QLabel* referencePreview_ = nullptr;
    QLabel* referenceName_ = nullptr;
    QPushButton* clearReference_ = nullptr;
    QLineEdit* beforeOriginal_ = nullptr;
    QLineEdit* afterOriginal_ = nullptr;
    QLineEdit* beforeDigitized_ = nullptr;
    QLineEdit* afterDigitized_ = nullptr;
    QLineEdit* fixedDate_ = nullptr;
    QLineEdit* years_ = nullptr;
    QLineEdit* months_ = nullptr;
    QLineEdit* days_ = nullptr;
    QLineEdit* hours_ = nullptr;
    QLineEdit* minutes_ = nullptr;
    QLineEdit* seconds_ = nullptr;
    QPushButton* addTime_ = nullptr;
    QPushButton* subtractTime_ = nullptr;
    QLabel* modeSummary_ = nullptr;
};

}  // namespace pelorin
