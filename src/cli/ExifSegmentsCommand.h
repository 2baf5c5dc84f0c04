#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli exif-segments FILE: the tag lines the diagnostic EXIF segment reader finds.
class ExifSegmentsCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("exif-segments"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
