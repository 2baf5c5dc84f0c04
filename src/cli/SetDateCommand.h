#pragma once

#include "cli/CliCommand.h"
#include "model/PhotoSelection.h"

#include <QMap>
#include <QSet>

namespace pelorin::cli {

// The command line of the date and GPS commands: options with a value ("--name VALUE" or
// "--name=VALUE"), flags, and the FILE arguments.
struct DateCommandArgs {
    QMap<QString, QString> values;
    QSet<QString> flags;
    QStringList files;
    QString error;  // set when the line is wrong

    QString value(const QString& name) const { return values.value(name); }
    bool has(const QString& name) const { return values.contains(name) || flags.contains(name); }
};

DateCommandArgs parseDateCommandArgs(const QStringList& args, const QStringList& valueOptions,
                                     const QStringList& flags);

// The FILE arguments as the photos a command works on; with --camera they name camera photos
// downloaded into the output folder.
PhotoSelection dateCommandSelection(const DateCommandArgs& args);

// pelorin-cli set-date --original T [--digitized T] [--file-dates-only] FILE...
class SetDateCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("set-date"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
