#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli copy-date exif-to-created|name-to-comment|created-to-camera|created-to-modified|
// modified-to-created FILE...
class CopyDateCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("copy-date"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
