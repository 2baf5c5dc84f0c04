#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>

namespace pelorin::cli {

// Exit statuses of pelorin-cli.
enum ExitStatus : int {
    ExitSuccess = 0,
    ExitItemFailed = 1,  // the command ran, but some item could not be processed
    ExitUsage = 2,       // the command line itself is wrong
    ExitInterrupted = 130,  // Ctrl-C stopped the batch; the files done are reported
};

// What every command receives: its own arguments (global options already taken out) and the
// global settings.
struct CliInvocation {
    QStringList args;
    QString outputFolder;  // --output, else the storage folder of the preferences
    bool outputGiven = false;
    bool json = false;
    bool dryRun = false;   // --dry-run: writing commands only say what they would change
    std::FILE* out = stdout;
    std::FILE* err = stderr;
};

// One pelorin-cli command: a name, a one-line summary for the command list, its own help text,
// and the code that runs it.
class CliCommand {
public:
    virtual ~CliCommand() = default;
    virtual QString name() const = 0;
    virtual QString summary() const = 0;
    virtual QString help() const = 0;
    virtual int run(CliInvocation& invocation) = 0;
};

}  // namespace pelorin::cli
