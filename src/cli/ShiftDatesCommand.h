#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli shift-dates (--by SPAN [--subtract] | --to T | --reference FILE
// --original-after T --digitized-after T) [--file-dates-only] FILE...
class ShiftDatesCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("shift-dates"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
