#include "cli/CliApp.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Quorvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Pelorin"));
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    return pelorin::cli::makeCliApp()->run(args);
}
