#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli recompress FILE...: small upright JPEG copies that keep the metadata.
class RecompressPhotosCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("recompress"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
