#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli stamp [--font F] [--size N] [--color C] [--corner C] [--format F] FILE...
class StampDatesCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("stamp"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
