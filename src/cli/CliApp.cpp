#include "cli/CliApp.h"

#include "cli/CliOutput.h"
#include "model/Preferences.h"

#include <QDir>

#include <algorithm>
#include <vector>

namespace pelorin::cli {

CliApp::CliApp() = default;
CliApp::~CliApp() = default;

void CliApp::add(std::unique_ptr<CliCommand> command) { commands_.push_back(std::move(command)); }

QStringList CliApp::commandNames() const
{
    QStringList names;
    for (const auto& command : commands_)
        names << command->name();
    return names;
}

CliCommand* CliApp::find(const QString& name) const
{
    for (const auto& command : commands_) {
        if (command->name() == name)
            return command.get();
    }
    return nullptr;
}

QString CliApp::help() const
{
    QString text = QStringLiteral(
        "Usage: pelorin-cli [--output DIR] [--json] COMMAND ARGS...\n"
        "\n"
        "Edits the metadata of photos, audio and video files. The originals are never changed:\n"
        "every command writes new files into the output folder. Two outputs of one command\n"
        "never share a name: the later one gets a numbered name (photo-2.jpg), which the\n"
        "command reports.\n"
        "\n"
        "Options (also accepted after the command's name):\n"
        "  -o, --output DIR  folder for the outputs (default: the storage folder preference)\n"
        "      --json        print results as JSON\n"
        "      --dry-run     writing commands print each value before and after, and write\n"
        "                    nothing\n"
        "  -h, --help        show this help, or a command's help after its name\n"
        "      --version     show the version\n"
        "\n"
        "Commands:\n");
    // In name order, whichever table registered them.
    std::vector<const CliCommand*> listed;
    for (const auto& command : commands_)
        listed.push_back(command.get());
    std::sort(listed.begin(), listed.end(), [](const CliCommand* a, const CliCommand* b) { return a->name() < b->name(); });
    for (const CliCommand* command : listed)
        text += QStringLiteral("  %1%2\n").arg(command->name(), -15).arg(command->summary());
    text += QStringLiteral(
        "\n"
        "Exit status: 0 on success, 1 when some item could not be processed, 2 for a usage error.");
    return text;
}

int CliApp::run(const QStringList& args, std::FILE* out, std::FILE* err)
{
    CliInvocation invocation;
    invocation.out = out;
    invocation.err = err;
    QString commandName;
    bool wantHelp = false;
    bool wantVersion = false;
    bool optionsEnded = false;

    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (!optionsEnded && arg == QLatin1String("--")) {
            optionsEnded = true;
        } else if (!optionsEnded && (arg == QLatin1String("--output") || arg == QLatin1String("-o"))) {
            if (i + 1 >= args.size()) {
                printLine(err, QStringLiteral("pelorin-cli: %1 needs a folder").arg(arg));
                return ExitUsage;
            }
            invocation.outputFolder = args[++i];
            invocation.outputGiven = true;
        } else if (!optionsEnded && arg.startsWith(QLatin1String("--output="))) {
            invocation.outputFolder = arg.mid(9);
            invocation.outputGiven = true;
        } else if (!optionsEnded && arg == QLatin1String("--json")) {
            invocation.json = true;
        } else if (!optionsEnded && arg == QLatin1String("--dry-run")) {
            invocation.dryRun = true;
        } else if (!optionsEnded && (arg == QLatin1String("--help") || arg == QLatin1String("-h"))) {
            wantHelp = true;
        } else if (!optionsEnded && arg == QLatin1String("--version")) {
            wantVersion = true;
        } else if (commandName.isEmpty()) {
            commandName = arg;
        } else {
            invocation.args << arg;
        }
    }

    if (wantVersion && commandName.isEmpty()) {
        printLine(out, QStringLiteral("pelorin-cli " PELORIN_VERSION));
        return ExitSuccess;
    }
    if (commandName == QLatin1String("help")) {
        commandName = invocation.args.value(0);
        wantHelp = true;
    }
    if (commandName.isEmpty()) {
        printLine(wantHelp ? out : err, help());
        return wantHelp ? ExitSuccess : ExitUsage;
    }
    CliCommand* command = find(commandName);
    if (!command) {
        printLine(err, QStringLiteral("pelorin-cli: unknown command '%1'").arg(commandName));
        printLine(err, QStringLiteral("Try 'pelorin-cli --help'."));
        return ExitUsage;
    }
    if (wantHelp) {
        printLine(out, command->help());
        return ExitSuccess;
    }
    if (invocation.outputGiven) {
        if (invocation.outputFolder.isEmpty()) {
            printLine(err, QStringLiteral("pelorin-cli: the output folder cannot be empty"));
            return ExitUsage;
        }
        invocation.outputFolder = QDir::cleanPath(QDir(invocation.outputFolder).absolutePath());
    } else {
        invocation.outputFolder = Preferences().storagePath();
    }
    return command->run(invocation);
}

}  // namespace pelorin::cli
