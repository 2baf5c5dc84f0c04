#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli import-plist tiff|exif|exif-tiff|exif-gps|all|template PLIST FILE...: metadata
// from a property list applied to photos.
class ImportPlistCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("import-plist"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
