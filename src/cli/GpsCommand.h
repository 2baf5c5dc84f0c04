#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli gps set --lat X --lon Y --alt Z [--date D --time T] FILE...
// pelorin-cli gps show FILE
class GpsCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("gps"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;

private:
    int set(CliInvocation& invocation);
    int show(CliInvocation& invocation);
};

}  // namespace pelorin::cli
