#pragma once

#include "cli/CliCommand.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace pelorin::cli {

// The frame of pelorin-cli: global options (accepted before or after the command's name),
// the command list, help and version, and dispatch to one command.
class CliApp {
public:
    CliApp();
    ~CliApp();

    void add(std::unique_ptr<CliCommand> command);
    // args without the program name; answers the exit status.
    int run(const QStringList& args, std::FILE* out = stdout, std::FILE* err = stderr);

    QString help() const;
    QStringList commandNames() const;

private:
    CliCommand* find(const QString& name) const;
    std::vector<std::unique_ptr<CliCommand>> commands_;
};

// The application with every command registered.
std::unique_ptr<CliApp> makeCliApp();
// The application with the photo metadata commands only (those of kPhotoFamilyCommands).
std::unique_ptr<CliApp> makePhotoCliApp();
void addPhotoCommands(CliApp& app);
// The photo commands that decode, scale, paint or draw text (and prefs, which checks fonts and
// colours), and so need QtGui: they live in the full program.
void addPhotoPaintingCommands(CliApp& app);

}  // namespace pelorin::cli
