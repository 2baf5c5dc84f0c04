#pragma once
#include <QHash>
#include <QString>

class QAction;
class QMenu;

namespace pelorin {

class AppDelegate;

// The pop-up menus of the picture buttons and the application's menu bar, which holds the same
// commands with keyboard shortcuts. Every action has an object name, so it can be found by it.
class CommandMenus {
public:
    explicit CommandMenus(AppDelegate& app);
    ~CommandMenus();

    QMenu* editExifMenu;
    QMenu* removeExifMenu;
    QMenu* importPhotoMenu;
    QMenu* extractMetaMenu;
    QMenu* importandExportMenu;
    QMenu* changePhotoDateMenu;
    QMenu* changeMutiPhotoDateMenu;
    QMenu* removeMediaMetaMenu;

    // The action with that object name; null when there is none.
    QAction* action(const QString& objectName) const { return actions_.value(objectName); }

private:
    void buildPopUpMenus();
    void buildMenuBar();
    void connectButtons();
    template <typename Slot>
    QAction* add(QMenu* menu, const QString& objectName, const QString& text, Slot slot);

    AppDelegate& app_;
    QHash<QString, QAction*> actions_;
};

}  // namespace pelorin
