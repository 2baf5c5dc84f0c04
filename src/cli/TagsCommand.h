#pragma once
#include "cli/CliCommand.h"

namespace pelorin::cli {

// pelorin-cli tags show|set|remove FILE...: the tags of audio files.
class TagsCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("tags"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;

private:
    int show(CliInvocation& invocation, const QStringList& files);
    int set(CliInvocation& invocation, const QStringList& args);
    int remove(CliInvocation& invocation, const QStringList& files);
};

}  // namespace pelorin::cli
