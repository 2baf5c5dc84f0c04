#pragma once

#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli prefs [set KEY VALUE]: shows or changes the editor's preferences.
class PrefsCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("prefs"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;

private:
    int show(CliInvocation& invocation);
    int set(CliInvocation& invocation);
};

}  // namespace pelorin::cli
