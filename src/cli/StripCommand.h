#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli strip exif|gps|iptc|exif-gps|all FILE...: copies without that metadata.
class StripCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("strip"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
