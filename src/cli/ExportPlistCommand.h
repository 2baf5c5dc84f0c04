#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli export-plist tiff|exif|exif-tiff|exif-gps|all|current|template ...: metadata
// saved as property lists.
class ExportPlistCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("export-plist"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
