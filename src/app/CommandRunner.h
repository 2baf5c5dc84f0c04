#pragma once
#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QObject>
#include <QThreadPool>
#include <atomic>
#include <functional>

namespace pelorin {

using EngineCommand = std::function<CommandResult(const CommandContext&)>;
using CommandDone = std::function<void(const CommandResult&)>;

// Runs one engine command at a time off the GUI thread, with progress, cancellation and, when it
// ends, one reveal of everything it wrote.
class CommandRunner : public QObject {
    Q_OBJECT
public:
    explicit CommandRunner(QObject* parent = nullptr);
    ~CommandRunner() override;

    // False (and nothing started) while another command runs. done runs on the GUI thread.
    bool run(const QString& title, const QString& storageFolder, EngineCommand command, CommandDone done = {});
    bool isBusy() const { return busy_; }
    void cancel() { cancelled_ = true; }
    // Runs the event loop until the current command has ended (tests).
    void waitForDone();

signals:
    void started(const QString& title);
    void progressed(int done, int total);
    void ended(const QString& title, const pelorin::CommandResult& result, bool cancelled);

private:
    QThreadPool pool_;
    std::atomic_bool cancelled_{false};
    bool busy_ = false;
};

}  // namespace pelorin
