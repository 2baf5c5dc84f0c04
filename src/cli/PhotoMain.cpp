// pelorin-cli-photo: the photo metadata commands, started by pelorin-cli. QtCore only.
#include "cli/CliMain.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    return pelorin::cli::runCliMain(argc, argv, pelorin::cli::makePhotoCliApp, [](int& count, char** arguments) {
        return std::make_unique<QCoreApplication>(count, arguments);
    });
}
