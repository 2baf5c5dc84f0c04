#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli kinds EXT...: what kind of file each extension names, and where it stands in the
// kind lists.
class KindsCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("kinds"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
