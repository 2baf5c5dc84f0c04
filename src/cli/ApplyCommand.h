#pragma once

#include "cli/CliCommand.h"
#include "photo/PhotoEditorFields.h"

#include <QList>
#include <utility>

namespace pelorin::cli {

// One editor field given on the command line: which field, and its new text.
using EditorFieldValue = std::pair<QString PhotoEditorTexts::*, QString>;

// Takes the editor field options ("--title T" or "--title=T", see editorFieldOptionsHelp())
// out of args; everything else stays in rest. False with the reason for an option without its
// value.
bool takeEditorFieldOptions(const QStringList& args, QList<EditorFieldValue>* fields, QStringList* rest,
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
