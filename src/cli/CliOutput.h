#pragma once

#include "cli/CliCommand.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/IKImageItem.h"
#include "model/PhotoSelection.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QSet>
#include <QString>

namespace pelorin::cli {

void printLine(std::FILE* stream, const QString& text);
// Prints a JSON object or array (scripts read this output).
void printJson(std::FILE* stream, const QJsonValue& value);

// Prints a JSON array one element at a time, so that a long batch never holds the whole
// document in memory: "[" before the first element, "]" when destroyed.
class JsonArrayPrinter {
public:
    explicit JsonArrayPrinter(std::FILE* stream) : stream_(stream) {}
    ~JsonArrayPrinter();
    JsonArrayPrinter(const JsonArrayPrinter&) = delete;
    JsonArrayPrinter& operator=(const JsonArrayPrinter&) = delete;
    void append(const QJsonObject& element);

private:
    std::FILE* stream_;
    bool first_ = true;
};

// The record of a file named on the command line (absolute path, and its name).
IKImageItem itemFromArgument(const QString& path);

// The photos named by the arguments, "--camera" making them camera photos (their downloaded
// copies in the output folder). False with the message for an unknown option or no file at all.
bool photoSelectionFromArguments(const QStringList& args, PhotoSelection& selection, QString* error);

// Reports a usage error with a pointer to the command's help, and answers ExitUsage.
int usageError(const CliInvocation& invocation, const QString& command, const QString& message);

// How a command's outputs reach the shell. As text, each output an engine command reveals is
// printed the moment it is finished (a long batch shows its progress), and the closing report
// adds the outputs not revealed, the skipped items with their reasons and the notes, on
// stderr. As JSON, one object at the end holds everything.
class CliReporter {
public:
    explicit CliReporter(const CliInvocation& invocation) : invocation_(invocation) {}

    RevealHook revealHook();
    // The context every engine command of this invocation runs with. All of them share one
    // set of output names: an invocation is one command, however many engine calls it makes.
    CommandContext context();
    // Prints the result and answers the exit status it stands for.
    int report(const CommandResult& result);

private:
    const CliInvocation& invocation_;
    QSet<QString> shown_;
    std::shared_ptr<OutputNames> outputNames_ = std::make_shared<OutputNames>();
    // The batch's progress as its engine reports it, for the words on an interrupted run.
    std::shared_ptr<std::atomic_int> done_ = std::make_shared<std::atomic_int>(0);
    std::shared_ptr<std::atomic_int> total_ = std::make_shared<std::atomic_int>(0);
};

}  // namespace pelorin::cli
