#pragma once

#include "dates/GpsGroup.h"

#include <QDialog>

class QFrame;
class QLabel;
class QLineEdit;

namespace pelorin {

// Sets the GPS location of the selected photo(s). It gathers the five texts; the controller
// checks them, previews them on the map and saves.
class GpsDialog : public QDialog {
    Q_OBJECT
public:
    explicit GpsDialog(QWidget* parent = nullptr);

    void setInput(const GpsInput& input);
    void setNewLocationPlaceholders();
    GpsInput input() const;

    // The map's place; the tile map takes it over later.
    QWidget* mapArea() const;
    void showPreviewCoordinate(double latitude, double longitude);

signals:
    void saveRequested();
    void previewRequested();

private:
    QLineEdit* latitude_ = nullptr;
    QLineEdit* longitude_ = nullptr;
    QLineEdit* altitude_ = nullptr;
    QLineEdit* dateStamp_ = nullptr;
    QLineEdit* timeStamp_ = nullptr;
    QFrame* mapArea_ = nullptr;
    QLabel* mapText_ = nullptr;
};

}  // namespace pelorin
