// pelorin-cli-all: every command, started by pelorin-cli for all but the photo metadata commands.
#include "cli/CliMain.h"

#include <QGuiApplication>

int main(int argc, char** argv)
{
    return pelorin::cli::runCliMain(argc, argv, pelorin::cli::makeCliApp,
                                    [](int& count, char** arguments) -> std::unique_ptr<QCoreApplication> {
                                        return std::make_unique<QGuiApplication>(count, arguments);
                                    });
}
