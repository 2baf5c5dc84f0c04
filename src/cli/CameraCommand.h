#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli camera list|files|download|delete: cameras and phones through libgphoto2.
class CameraCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("camera"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
