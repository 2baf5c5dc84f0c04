#pragma once

#include "model/Preferences.h"

#include <QColor>
#include <QDialog>

#include <functional>

class QComboBox;
class QLabel;
class QPushButton;

namespace pelorin {

// The preferences sheet: the output folder and the date stamp's font, colour, corner and format.
// It only gathers the choices; the controller stores them when saveRequested() arrives.
class PreferencesDialog : public QDialog {
    Q_OBJECT
public:
    explicit PreferencesDialog(QWidget* parent = nullptr);

    void showValues(const PreferenceValues& values, const QColor& stampColor);
    PreferenceValues values() const;
    QColor stampColor() const;

    // Asks for the output folder; an empty result means the user cancelled.
    std::function<QString(QWidget* parent)> chooseFolder;

signals:
    void saveRequested();

private:
    void setStoragePath(const QString& path);
    void setStampFont(const QString& family, int pointSize);
    void setStampColor(const QColor& color);
    void pickFolder();
    void pickFont();
    void pickColor();

    QLabel* storageLabel_ = nullptr;
    QLabel* fontLabel_ = nullptr;
    QPushButton* colorWell_ = nullptr;
    QComboBox* cornerPopup_ = nullptr;
    QComboBox* dateFormatPopup_ = nullptr;
    QString storagePath_;
    QString fontName_;
    int fontSize_ = Preferences::kDefaultFontSize;
    QColor color_;
};

}  // namespace pelorin
