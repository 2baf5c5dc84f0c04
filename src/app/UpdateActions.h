#pragma once
#include <QObject>

namespace pelorin {

class AppDelegate;
class NoUpdateWindow;
class UpdateChecker;
class UpdateWindow;

// The update check the user asks for from the Help menu, and its two windows.
class UpdateActions : public QObject {
    Q_OBJECT
public:
    explicit UpdateActions(AppDelegate& app);

    UpdateWindow* updateWindow() const { return updateWindow_; }
    NoUpdateWindow* noUpdateWindow() const { return noUpdateWindow_; }
    UpdateChecker* checker() const { return checker_; }

public slots:
    void CheckforUpdateAction();

private:
    AppDelegate& app_;
    UpdateChecker* checker_;
    UpdateWindow* updateWindow_;
    NoUpdateWindow* noUpdateWindow_;
};

}  // namespace pelorin
