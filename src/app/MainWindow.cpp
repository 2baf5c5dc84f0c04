#include "app/MainWindow.h"

#include "app/InspectorPanel.h"
#include "app/PhotoEditorPanel.h"
#include "app/TaskStatusBar.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"
#include "ui/WindowLook.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPropertyAnimation>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QVBoxLayout>

namespace pelorin {

namespace {

constexpr int kEditorWidth = 440;

QWidget* pictureHint(const QString& objectName, const QString& picture, const QString& title,
                     const QString& text, QWidget* parent)
{
    auto* view = new QWidget(parent);
    view->setObjectName(objectName);
    auto* layout = new QVBoxLayout(view);
    layout->addStretch(1);
    auto* image = new QLabel(view);
    image->setAlignment(Qt::AlignCenter);
    image->setPixmap(QIcon(picture).pixmap(QSize(220, 160)));
    auto* heading = new QLabel(title, view);
    heading->setAlignment(Qt::AlignCenter);
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * 1.3);
    font.setBold(true);
    heading->setFont(font);
    auto* body = new QLabel(text, view);
    body->setAlignment(Qt::AlignCenter);
    body->setWordWrap(true);
    body->setProperty("role", "hint");
    layout->addWidget(image);
    layout->addSpacing(8);
    layout->addWidget(heading);
    layout->addWidget(body);
    layout->addStretch(2);
    return view;
}

// Six buttons do not fit the pane's width with their names; they go in two rows of three.
// A row of picture buttons that is never narrower than their whole labels (the buttons would
// otherwise elide "Remove from List" to "Remo…List").
class WholeLabelsRow : public QWidget {
public:
    using QWidget::QWidget;
    QSize minimumSizeHint() const override { return layout() ? layout()->sizeHint() : QWidget::minimumSizeHint(); }
};

QWidget* buttonGrid(const QList<QWidget*>& buttons, QWidget* parent)
{
    auto* grid = new WholeLabelsRow(parent);
    auto* layout = new QGridLayout(grid);
    layout->setContentsMargins(0, 4, 0, 0);
    layout->setSpacing(2);
    for (int i = 0; i < buttons.size(); ++i)
        layout->addWidget(buttons[i], i / 3, i % 3);
    return grid;
}

QWidget* buttonRow(const QList<QWidget*>& buttons, QWidget* parent)
{
    auto* row = new WholeLabelsRow(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 4, 0, 0);
    layout->setSpacing(2);
    for (QWidget* button : buttons)
        layout->addWidget(button, 1);
    return row;
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("Quorvane Pelorin"));
    setWindowIcon(QIcon(QStringLiteral(":/icons/pelorin.svg")));
    setMinimumSize(1080, 640);
    // Most of the screen, so that the three panes have room; never below the minimum.
    const QRect available = screen() ? screen()->availableGeometry() : QRect(0, 0, 1320, 800);
    resize(std::max(minimumWidth(), std::min(int(available.width() * 0.9), 1680)),
           std::max(minimumHeight(), std::min(int(available.height() * 0.9), 1050)));

    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("centralArea"));
    auto* layout = new QHBoxLayout(central);
    layout->setContentsMargins(8, 8, 8, 4);
    auto* splitter = new QSplitter(Qt::Horizontal, central);
    splitter->setObjectName(QStringLiteral("mainSplitter"));
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(8);
    splitter->addWidget(buildLeftPane());
    splitter->addWidget(buildMediaPane());
    splitter->addWidget(buildInspectorPane());
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setStretchFactor(2, 0);
    splitter->setSizes({340, 540, 440});
    layout->addWidget(splitter);
    setCentralWidget(central);

    photoEditorView = new PhotoEditorPanel(central);
    photoEditorView->hide();
    editorSlide_ = new QPropertyAnimation(photoEditorView, "geometry", this);
    editorSlide_->setDuration(200);
    editorSlide_->setEasingCurve(QEasingCurve::OutCubic);

    taskStatus = new TaskStatusBar(this);
    statusBar()->addWidget(taskStatus, 1);
    statusBar()->setSizeGripEnabled(true);
    taskStatus->showMessage(QStringLiteral("Ready"));
}

QWidget* MainWindow::buildLeftPane()
{
    auto* pane = new QFrame(this);
    pane->setObjectName(QStringLiteral("leftPane"));
    pane->setMinimumWidth(330);
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(6);

    localphotoBtn = new HoverToolButton(QStringLiteral("localphotoBtn"), QStringLiteral("localphoto"),
                                        QStringLiteral("Computer"), pane);
    cameraphotoBtn = new HoverToolButton(QStringLiteral("cameraphotoBtn"), QStringLiteral("cameraphoto"),
                                         QStringLiteral("Camera"), pane);
    for (HoverToolButton* button : {localphotoBtn, cameraphotoBtn}) {
        button->setCheckable(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setIconSize(QSize(24, 24));
    }
    localphotoBtn->setChecked(true);
    auto* sourceRow = new QHBoxLayout;
    auto* title = new QLabel(QStringLiteral("Photos"), pane);
    title->setProperty("role", "heading");
    sourceRow->addWidget(title);
    sourceRow->addStretch(1);
    sourceRow->addWidget(localphotoBtn);
    sourceRow->addWidget(cameraphotoBtn);
    layout->addLayout(sourceRow);

    leftStack = new QStackedWidget(pane);
    leftStack->setObjectName(QStringLiteral("leftStack"));
    hintView = pictureHint(QStringLiteral("hintView"), QStringLiteral(":/icons/photohint.svg"),
                           QStringLiteral("Drop photos here"),
                           QStringLiteral("or choose Import to add photos and movies from your computer."), pane);
    localImageBrowserView = new PhotoBrowserView(QStringLiteral("localImageBrowserView"), pane);
    cameraHintView = pictureHint(QStringLiteral("cameraHintView"), QStringLiteral(":/icons/camerahint.svg"),
                                 QStringLiteral("No camera connected"),
                                 QStringLiteral("Connect a camera or phone with a cable, then choose Open Device."),
                                 pane);
    imageBrowserView = new PhotoBrowserView(QStringLiteral("imageBrowserView"), pane);
    imageBrowserView->setAcceptDrops(false);
    leftStack->addWidget(hintView);
    leftStack->addWidget(localImageBrowserView);
    leftStack->addWidget(cameraHintView);
    leftStack->addWidget(imageBrowserView);
    layout->addWidget(leftStack, 1);

    importPhotobtn = new HoverToolButton(QStringLiteral("importPhotobtn"), QStringLiteral("importphoto"),
                                         QStringLiteral("Import"), pane);
    editMetaDataLocalBtn = new HoverToolButton(QStringLiteral("editMetaDataLocalBtn"), QStringLiteral("editphotometa"),
                                               QStringLiteral("Metadata"), pane);
    remoMetaDataLocalBtn = new HoverToolButton(QStringLiteral("remoMetaDataLocalBtn"), QStringLiteral("quickact"),
                                               QStringLiteral("Remove"), pane);
    importandExportBtn = new HoverToolButton(QStringLiteral("importandExportBtn"), QStringLiteral("importexport"),
                                             QStringLiteral("Plist"), pane);
    localeditexifBtn = new HoverToolButton(QStringLiteral("localeditexifBtn"), QStringLiteral("editexif"),
                                           QStringLiteral("Edit"), pane);
    localButtonRow = buttonRow(
        {importPhotobtn, editMetaDataLocalBtn, remoMetaDataLocalBtn, importandExportBtn, localeditexifBtn}, pane);

    opendeviceBtn = new HoverToolButton(QStringLiteral("opendeviceBtn"), QStringLiteral("opendevice"),
                                        QStringLiteral("Open Device"), pane);
    downloadPhotoBtn = new HoverToolButton(QStringLiteral("downloadPhotoBtn"), QStringLiteral("downloadphoto"),
                                           QStringLiteral("Download"), pane);
    importEditPhotoBtn = new HoverToolButton(QStringLiteral("importEditPhotoBtn"),
                                             QStringLiteral("importphototoedit"), QStringLiteral("Download && Edit"), pane);
    deletePhotoBtn = new HoverToolButton(QStringLiteral("deletePhotoBtn"), QStringLiteral("delete"),
                                         QStringLiteral("Delete"), pane);
    viewExifBtn = new HoverToolButton(QStringLiteral("viewExifBtn"), QStringLiteral("editphotometa"),
                                      QStringLiteral("Metadata"), pane);
    removeExifBtn = new HoverToolButton(QStringLiteral("removeExifBtn"), QStringLiteral("deletemetadata"),
                                        QStringLiteral("Remove"), pane);
    cameraButtonRow = buttonGrid(
        {opendeviceBtn, downloadPhotoBtn, importEditPhotoBtn, deletePhotoBtn, viewExifBtn, removeExifBtn}, pane);
    cameraButtonRow->hide();
    deviceNamelab = new QLabel(pane);
    deviceNamelab->setObjectName(QStringLiteral("deviceNamelab"));
    deviceNamelab->setProperty("role", "hint");
    deviceNamelab->setAlignment(Qt::AlignCenter);
    deviceNamelab->hide();
    layout->addWidget(deviceNamelab);
    layout->addWidget(localButtonRow);
    layout->addWidget(cameraButtonRow);
    return pane;
}

QWidget* MainWindow::buildMediaPane()
{
    auto* pane = new QFrame(this);
    pane->setObjectName(QStringLiteral("mediaPane"));
    pane->setMinimumWidth(360);
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(6);
    auto* header = new QHBoxLayout;
    auto* title = new QLabel(QStringLiteral("Media"), pane);
    title->setProperty("role", "heading");
    mediaCountLabel = new QLabel(pane);
    mediaCountLabel->setObjectName(QStringLiteral("mediaCountLabel"));
    mediaCountLabel->setProperty("role", "hint");
    header->addWidget(title);
    header->addWidget(mediaCountLabel);
    header->addStretch(1);
    layout->addLayout(header);

    dragtableView = new MediaTableView(pane);
    layout->addWidget(dragtableView, 1);

    addMediaBtn = new HoverToolButton(QStringLiteral("addMediaBtn"), QStringLiteral("addmedia"),
                                      QStringLiteral("Add"), pane);
    removeMediaBtn = new HoverToolButton(QStringLiteral("removeMediaBtn"), QStringLiteral("removemedia"),
                                         QStringLiteral("Remove from List"), pane);
    removeMediaMetaBtn = new HoverToolButton(QStringLiteral("removeMediaMetaBtn"), QStringLiteral("deletemetadata"),
                                             QStringLiteral("Strip Metadata"), pane);
    SaveMediaChangesBtn = new HoverToolButton(QStringLiteral("SaveMediaChangesBtn"), QStringLiteral("savechange"),
                                              QStringLiteral("Save Changes"), pane);
    extractMetaBtn = new HoverToolButton(QStringLiteral("extractMetaBtn"), QStringLiteral("extractmeta"),
                                         QStringLiteral("Export"), pane);
    layout->addWidget(
        buttonRow({addMediaBtn, removeMediaBtn, removeMediaMetaBtn, SaveMediaChangesBtn, extractMetaBtn}, pane));
    return pane;
}

QWidget* MainWindow::buildInspectorPane()
{
    rightStack = new QStackedWidget(this);
    rightStack->setObjectName(QStringLiteral("rightStack"));
    inspector = new InspectorPanel(rightStack);
    rightStack->addWidget(inspector);
    starteditBtn = new HoverToolButton(QStringLiteral("starteditBtn"), QStringLiteral("edit"),
                                       QStringLiteral("Edit Photo"), inspector);
    starteditBtn->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    starteditBtn->setIconSize(QSize(24, 24));
    inspector->layout()->addWidget(starteditBtn);
    return rightStack;
}

void MainWindow::showPhotoHint()
{
    deviceNamelab->hide();
    leftStack->setCurrentWidget(hintView);
    localButtonRow->show();
    cameraButtonRow->hide();
    localphotoBtn->setChecked(true);
    cameraphotoBtn->setChecked(false);
}

void MainWindow::showLocalPhotos()
{
    deviceNamelab->hide();
    leftStack->setCurrentWidget(localImageBrowserView);
    localButtonRow->show();
    cameraButtonRow->hide();
    localphotoBtn->setChecked(true);
    cameraphotoBtn->setChecked(false);
}

void MainWindow::showCameraMode(bool hasCamera)
{
    leftStack->setCurrentWidget(hasCamera ? static_cast<QWidget*>(imageBrowserView) : cameraHintView);
    deviceNamelab->setVisible(!deviceNamelab->text().isEmpty());
    localButtonRow->hide();
    cameraButtonRow->show();
    localphotoBtn->setChecked(false);
    cameraphotoBtn->setChecked(true);
}

QRect MainWindow::editorGeometry(bool shown) const
{
    const QWidget* area = centralWidget();
    const int width = std::min(kEditorWidth, area->width());
    const int x = shown ? area->width() - width : area->width();
    return QRect(x, 0, width, area->height());
}

void MainWindow::slideInEditor()
{
    editorSlide_->stop();
    photoEditorView->setGeometry(editorGeometry(false));
    photoEditorView->show();
    photoEditorView->raise();
    editorSlide_->setStartValue(editorGeometry(false));
    editorSlide_->setEndValue(editorGeometry(true));
    editorSlide_->start();
}

void MainWindow::hideEditor()
{
    editorSlide_->stop();
    photoEditorView->hide();
}

bool MainWindow::isEditorShown() const
{
    return photoEditorView->isVisible();
}

void MainWindow::popUpMenu(QMenu* menu, QWidget* button)
{
    menu->setActiveAction(nullptr);
    menu->popup(button->mapToGlobal(QPoint(0, button->height())));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!confirmClose || confirmClose())
        event->accept();
    else
        event->ignore();
}

void MainWindow::showEvent(QShowEvent* event)
{
    // Sized once the look is applied, when the labels' widths are known: each pane holds its
    // buttons' whole labels, and the window holds the panes.
    if (!minimumsFitted_) {
        minimumsFitted_ = true;
        if (auto* splitter = centralWidget()->findChild<QSplitter*>(QStringLiteral("mainSplitter"))) {
            for (int i = 0; i < splitter->count(); ++i) {
                QWidget* pane = splitter->widget(i);
                if (pane->layout())
                    pane->setMinimumWidth(std::max(pane->minimumWidth(), pane->layout()->minimumSize().width()));
            }
        }
        setMinimumWidth(std::max(minimumWidth(), centralWidget()->minimumSizeHint().width()));
    }
    QMainWindow::showEvent(event);
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (photoEditorView && photoEditorView->isVisible() && editorSlide_->state() != QAbstractAnimation::Running)
        photoEditorView->setGeometry(editorGeometry(true));
}

}  // namespace pelorin
