#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli info FILE... [--plist]: every property of each photo, as a tree with the editor's
// field texts, as JSON (--json) or as an XML property list (--plist).
class InfoCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("info"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
