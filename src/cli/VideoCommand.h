#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli video show FILE...: the metadata items and record fields of movies.
class VideoCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("video"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
