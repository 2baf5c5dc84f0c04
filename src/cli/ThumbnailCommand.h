#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli thumbnail FILE --size N --out PNG: the photo browser's thumbnail of one file,
// written as a PNG.
class ThumbnailCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("thumbnail"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
