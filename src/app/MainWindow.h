#pragma once
#include <QMainWindow>
#include <functional>

class QLabel;
class QStackedWidget;
class QMenu;
class QPropertyAnimation;

namespace pelorin {

class HoverToolButton;
class InspectorPanel;
class MediaTableView;
class PhotoBrowserView;
class PhotoEditorPanel;
class TaskStatusBar;

// The main window's widgets and layout, and nothing else: the controller wires them to commands.
// Left: the photo source switch, the photo browser (or its hint) and the photo command buttons.
// Middle: the media table with its buttons. Right: the inspector. The photo editor slides in
// over the right part of the window.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);

    // Left pane.
    HoverToolButton* localphotoBtn;
    HoverToolButton* cameraphotoBtn;
    QStackedWidget* leftStack;
    QWidget* hintView;
    QWidget* cameraHintView;
    PhotoBrowserView* localImageBrowserView;
    PhotoBrowserView* imageBrowserView;  // camera items
    QWidget* localButtonRow;
    QWidget* cameraButtonRow;
    HoverToolButton* importPhotobtn;
    HoverToolButton* editMetaDataLocalBtn;
    HoverToolButton* remoMetaDataLocalBtn;
    HoverToolButton* importandExportBtn;
    HoverToolButton* localeditexifBtn;
    HoverToolButton* opendeviceBtn;
    HoverToolButton* downloadPhotoBtn;
    HoverToolButton* importEditPhotoBtn;
    HoverToolButton* deletePhotoBtn;
    HoverToolButton* viewExifBtn;
    HoverToolButton* removeExifBtn;
    QLabel* deviceNamelab;

    // Media area.
    HoverToolButton* addMediaBtn;
    HoverToolButton* removeMediaBtn;
    HoverToolButton* removeMediaMetaBtn;
    HoverToolButton* SaveMediaChangesBtn;
    HoverToolButton* extractMetaBtn;
    MediaTableView* dragtableView;
    QLabel* mediaCountLabel;

    // Right side: the inspector, or the audio or video editor.
    QStackedWidget* rightStack;
    InspectorPanel* inspector;
    HoverToolButton* starteditBtn;
    PhotoEditorPanel* photoEditorView;

    TaskStatusBar* taskStatus;

    // Left pane states.
    void showPhotoHint();
    void showLocalPhotos();
    void showCameraMode(bool hasCamera);

    // Slides the editor in from the right over 0.2 s; hides it at once.
    void slideInEditor();
    void hideEditor();
    bool isEditorShown() const;

    // Pops the menu up under the button, its top-left corner at the button's lower-left corner.
    static void popUpMenu(QMenu* menu, QWidget* button);

    // Asked when the user closes the window; true lets it close.
    std::function<bool()> confirmClose;

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    bool minimumsFitted_ = false;
    QWidget* buildLeftPane();
    QWidget* buildMediaPane();
    QWidget* buildInspectorPane();
    QRect editorGeometry(bool shown) const;

    QPropertyAnimation* editorSlide_ = nullptr;
};

}  // namespace pelorin
