#include "app/PreferencesDialog.h"

#include "photo/StampFont.h"

#include "ui/DialogLook.h"

#include <QColorDialog>
#include <QComboBox>
#include <QFileDialog>
#include <QFontDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QVBoxLayout>

namespace pelorin {
namespace {

const char* const kLook = R"(
QLabel[role="heading"] { color: #8FD3FF; font-weight: bold; font-size: 11pt; }
QLabel#storageLocationLabel, QLabel#fontLabel {
    background-color: #23292F; color: #ECF0F1; border: 1px solid #4F6275; border-radius: 3px;
    padding: 4px 6px; }
QComboBox { background-color: #23292F; color: #ECF0F1; border: 1px solid #5A6B7C;
    border-radius: 3px; padding: 3px 6px; }
QComboBox:focus { border-color: #5FC3FF; }
QComboBox QAbstractItemView { background-color: #23292F; color: #ECF0F1;
    selection-background-color: #2F80C0; }
)";

// The output folder can be any length; the middle of a long path is the least telling part.
class MiddleElidedLabel : public QLabel {
public:
    using QLabel::QLabel;

    void setFullText(const QString& text)
    {
        full_ = text;
        setToolTip(text);
        elide();
    }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QLabel::resizeEvent(event);
        elide();
    }

private:
    void elide() { setText(fontMetrics().elidedText(full_, Qt::ElideMiddle, contentsRect().width())); }

    QString full_;
};

QString defaultFolderChooser(QWidget* parent)
{
    return QFileDialog::getExistingDirectory(
        parent, QStringLiteral("Choose Output Folder"), QString(),
        QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
}

}  // namespace

PreferencesDialog::PreferencesDialog(QWidget* parent)
    : QDialog(parent), chooseFolder(defaultFolderChooser), color_(Qt::white)
{
    setObjectName(QStringLiteral("preferencesSheet"));
    setWindowTitle(QStringLiteral("Preferences"));
    setWindowModality(Qt::WindowModal);
    applyLook(this, dialogStyleSheet(QString::fromLatin1(kLook)));

    storageLabel_ = new MiddleElidedLabel(this);
    storageLabel_->setObjectName(QStringLiteral("storageLocationLabel"));
    storageLabel_->setMinimumWidth(260);
    storageLabel_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    QPushButton* chooseFolderButton =
        dialogButton(this, QStringLiteral("Choose…"), "chooseStorageButton");

    fontLabel_ = new QLabel(this);
    fontLabel_->setObjectName(QStringLiteral("fontLabel"));
    QPushButton* chooseFontButton = dialogButton(this, QStringLiteral("Font…"), "chooseFontButton");

    colorWell_ = dialogButton(this, QString(), "colorWell");
    colorWell_->setFlat(true);
    colorWell_->setFixedSize(56, 24);
    colorWell_->setCursor(Qt::PointingHandCursor);

    cornerPopup_ = new QComboBox(this);
    cornerPopup_->setObjectName(QStringLiteral("cornerPopup"));
    cornerPopup_->addItems(stampCornerTitles());
    dateFormatPopup_ = new QComboBox(this);
    dateFormatPopup_->setObjectName(QStringLiteral("dateFormatPopup"));
    dateFormatPopup_->addItems(stampDateFormatTitles());

    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(storageLabel_, 1);
    folderRow->addWidget(chooseFolderButton);

    auto* fontRow = new QHBoxLayout;
    fontRow->addWidget(fontLabel_, 1);
    fontRow->addWidget(chooseFontButton);

    QFormLayout* stampForm = alignedFormLayout();
    stampForm->addRow(QStringLiteral("Font:"), fontRow);
    stampForm->addRow(QStringLiteral("Color:"), colorWell_);
    stampForm->addRow(QStringLiteral("Corner:"), cornerPopup_);
    stampForm->addRow(QStringLiteral("Date format:"), dateFormatPopup_);

    QPushButton* cancelButton = dialogButton(this, QStringLiteral("Cancel"), "cancelPreferencesButton");
    QPushButton* saveButton = dialogButton(this, QStringLiteral("Save"), "savePreferencesButton", true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(8);
    layout->addWidget(labelWithRole(QStringLiteral("Output folder"), "heading", this));
    layout->addLayout(folderRow);
    layout->addSpacing(12);
    layout->addWidget(labelWithRole(QStringLiteral("Date stamp"), "heading", this));
    layout->addLayout(stampForm);
    layout->addSpacing(12);
    layout->addStretch(1);
    layout->addLayout(trailingButtonRow({cancelButton, saveButton}));

    connect(chooseFolderButton, &QPushButton::clicked, this, &PreferencesDialog::pickFolder);
    connect(chooseFontButton, &QPushButton::clicked, this, &PreferencesDialog::pickFont);
    connect(colorWell_, &QPushButton::clicked, this, &PreferencesDialog::pickColor);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(saveButton, &QPushButton::clicked, this, &PreferencesDialog::saveRequested);

    setStampFont(QString::fromLatin1(Preferences::kDefaultFontName), Preferences::kDefaultFontSize);
    setStampColor(color_);
    resize(480, sizeHint().height());
}

void PreferencesDialog::showValues(const PreferenceValues& values, const QColor& stampColor)
{
    setStoragePath(values.storagePath);
    setStampFont(values.fontName, values.fontSize);
    setStampColor(stampColor);
    // The index is what the stored title selected; a caller that filled only the title still
    // gets the matching item.
    const auto pick = [](int index, const QStringList& items, const QString& title) {
        return index > 0 && index < items.size() ? index : popupIndexForTitle(items, title);
    };
    cornerPopup_->setCurrentIndex(pick(values.cornerIndex, stampCornerTitles(), values.cornerTitle));
    dateFormatPopup_->setCurrentIndex(
        pick(values.dateFormatIndex, stampDateFormatTitles(), values.dateFormatTitle));
}

PreferenceValues PreferencesDialog::values() const
{
    PreferenceValues v;
    v.storagePath = storagePath_;
    v.fontName = fontName_;
    v.fontSize = fontSize_;
    v.cornerIndex = cornerPopup_->currentIndex();
    v.cornerTitle = cornerPopup_->currentText();
    v.dateFormatIndex = dateFormatPopup_->currentIndex();
    v.dateFormatTitle = dateFormatPopup_->currentText();
    return v;
}

QColor PreferencesDialog::stampColor() const
{
    return color_;
}

void PreferencesDialog::setStoragePath(const QString& path)
{
    storagePath_ = path;
    static_cast<MiddleElidedLabel*>(storageLabel_)->setFullText(path);
}

void PreferencesDialog::setStampFont(const QString& family, int pointSize)
{
    fontName_ = family;
    fontSize_ = pointSize;
    // The label names the font the stamp is really drawn with; a chosen family that this machine
    // lacks stays chosen (it is used wherever it is installed) and is named as missing.
    const QString used = stampFontFamily(family);
    QString text = QStringLiteral("%1 %2").arg(used).arg(pointSize);
    if (!isFontFamilyInstalled(family))
        text += QStringLiteral(" (%1 is not installed)").arg(family);
    fontLabel_->setText(text);
    fontLabel_->setToolTip(text);
}

void PreferencesDialog::setStampColor(const QColor& color)
{
    color_ = color;
    const QColor shown = color.isValid() ? color : QColor(Qt::white);
    colorWell_->setStyleSheet(
        QStringLiteral("QPushButton#colorWell { background-color: %1; border: 2px solid #ECF0F1;"
                       " border-radius: 3px; padding: 0; }")
            .arg(shown.name()));
    colorWell_->setToolTip(shown.name().toUpper());
}

void PreferencesDialog::pickFolder()
{
    if (!chooseFolder)
        return;
    const QString folder = chooseFolder(this);
    if (!folder.isEmpty())
        setStoragePath(folder);
}

void PreferencesDialog::pickFont()
{
    bool ok = false;
    QFont current(fontName_);
    if (fontSize_ > 0)
        current.setPointSize(fontSize_);
    const QFont chosen = QFontDialog::getFont(&ok, current, this, QStringLiteral("Date Stamp Font"),
                                              QFontDialog::DontUseNativeDialog);
    if (!ok)
        return;
    // A font given in pixels has no point size; keep the old size rather than store -1.
    setStampFont(chosen.family(), chosen.pointSize() > 0 ? chosen.pointSize() : fontSize_);
}

void PreferencesDialog::pickColor()
{
    const QColor chosen = QColorDialog::getColor(color_, this, QStringLiteral("Date Stamp Color"),
                                                 QColorDialog::DontUseNativeDialog);
    if (chosen.isValid())
        setStampColor(chosen);
}

}  // namespace pelorin
