#pragma once
#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli media-metadata export FILE...: the tags of audio files as metadata.plist.
class MediaMetadataCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("media-metadata"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
