#pragma once

#include "cli/CliCommand.h"
#include "model/CommandResult.h"

#include <QJsonValue>
#include <QString>

namespace pelorin::cli {

void printLine(std::FILE* stream, const QString& text);
// Prints a JSON object or array (scripts read this output).
void printJson(std::FILE* stream, const QJsonValue& value);

// Reports a usage error with a pointer to the command's help, and answers ExitUsage.
int usageError(const CliInvocation& invocation, const QString& command, const QString& message);

// Prints an engine command's result (text or JSON) and answers the exit status it stands for.
int reportResult(const CliInvocation& invocation, const CommandResult& result);

}  // namespace pelorin::cli
