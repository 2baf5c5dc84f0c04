#pragma once
#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli artwork export FILE...: the pictures of audio files as JPEG files.
class ArtworkCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("artwork"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
