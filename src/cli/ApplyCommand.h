#pragma once

#include "cli/CliCommand.h"
#include "photo/PhotoFields.h"

namespace pelorin::cli {

// Takes the editor field options ("--title T" or "--title=T", see editorFieldOptionsHelp())
// out of args into changes; everything else stays in rest. False with the reason for an option
// without its value or with a value its field cannot take.
bool takeEditorFieldOptions(const QStringList& args, PhotoFieldChanges* changes, QStringList* rest,
                            QString* error);
QString editorFieldOptionsHelp();

// pelorin-cli apply [FIELD OPTIONS] [--camera] FILE...: the photo editor's apply.
class ApplyCommand final : public CliCommand {
public:
    QString name() const override { return QStringLiteral("apply"); }
    QString summary() const override;
    QString help() const override;
    int run(CliInvocation& invocation) override;
};

}  // namespace pelorin::cli
