#pragma once

#include "model/OutputNames.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>

namespace pelorin {

// How an engine command shows its outputs; each front end supplies its own (the editor reveals
// the file in the file manager, the command-line tool prints the path).
struct RevealHook {
    std::function<void(const QString& file)> revealFile;
    std::function<void(const QString& folder)> openFolder;

    void reveal(const QString& file) const
    {
        if (revealFile)
            revealFile(file);
    }
    void open(const QString& folder) const
    {
        if (openFolder)
            openFolder(folder);
    }
};

// What every engine command receives besides its own request: where outputs go, how to show
// them, how to report progress and whether the user cancelled.
struct CommandContext {
    QString storageFolder;
    RevealHook reveal;
    // Called as items finish, possibly from several worker threads at once.
    std::function<void(int done, int total)> progress;
    const std::atomic_bool* cancelled = nullptr;
    // Plan only: report in the result what each file would get, and write nothing.
    bool dryRun = false;
    // The output paths this command has given; copies of the context share them, a new context
    // (a new command) starts afresh.
    std::shared_ptr<OutputNames> outputNames = std::make_shared<OutputNames>();

    // The path an output should take: wanted, or a free numbered name when an earlier output
    // of this command already took wanted.
    QString claimOutput(const QString& wanted, const QString& madeFrom = {}) const
    {
        return outputNames->claim(wanted, madeFrom);
    }

    bool isCancelled() const { return cancelled && cancelled->load(); }
    void report(int done, int total) const
    {
        if (progress)
            progress(done, total);
    }
};

}  // namespace pelorin
