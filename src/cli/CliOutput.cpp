#include "cli/CliOutput.h"

#include "cli/CliInterrupt.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace pelorin::cli {

void printLine(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fputc('\n', stream);
}

void printJson(std::FILE* stream, const QJsonValue& value)
{
    const QJsonDocument document = value.isArray() ? QJsonDocument(value.toArray())
                                                   : QJsonDocument(value.toObject());
    const QByteArray bytes = document.toJson(QJsonDocument::Indented);
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
}

JsonArrayPrinter::~JsonArrayPrinter()
{
    std::fputs(first_ ? "[]\n" : "\n]\n", stream_);
}

void JsonArrayPrinter::append(const QJsonObject& element)
{
    std::fputs(first_ ? "[\n" : ",\n", stream_);
    first_ = false;
    QByteArray bytes = QJsonDocument(element).toJson(QJsonDocument::Indented);
    bytes.chop(1);  // the document's closing newline; the separator follows instead
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream_);
}

IKImageItem itemFromArgument(const QString& path)
{
    IKImageItem item;
    item.filePath = QFileInfo(path).absoluteFilePath();
    item.fileName = QFileInfo(path).fileName();
    return item;
}

bool photoSelectionFromArguments(const QStringList& args, PhotoSelection& selection, QString* error)
{
    for (const QString& arg : args) {
        if (arg == QLatin1String("--camera")) {
            selection.source = PhotoSource::Camera;
        } else if (arg.startsWith(QLatin1String("--"))) {
            *error = QStringLiteral("unknown option '%1'").arg(arg);
            return false;
        } else {
            selection.items << itemFromArgument(arg);
        }
    }
    if (selection.items.isEmpty()) {
        *error = QStringLiteral("give at least one file");
        return false;
    }
    return true;
}

int usageError(const CliInvocation& invocation, const QString& command, const QString& message)
{
    printLine(invocation.err, QStringLiteral("pelorin-cli %1: %2").arg(command, message));
    printLine(invocation.err, QStringLiteral("Try 'pelorin-cli %1 --help'.").arg(command));
    return ExitUsage;
}

RevealHook CliReporter::revealHook()
{
    RevealHook hook;
    hook.revealFile = [this](const QString& file) {
        if (invocation_.json || shown_.contains(file))
            return;
        shown_.insert(file);
        printLine(invocation_.out, file);
    };
    return hook;
}

CommandContext CliReporter::context()
{
    CommandContext c;
    c.storageFolder = invocation_.outputFolder;
    c.reveal = revealHook();
    c.dryRun = invocation_.dryRun;
    c.outputNames = outputNames_;
    c.cancelled = interruptFlag();
    c.progress = [done = done_, total = total_](int finished, int all) {
        done->store(finished);
        total->store(all);
    };
    return c;
}

int CliReporter::report(const CommandResult& result)
{
    if (invocation_.json) {
        QJsonArray skipped;
        for (const SkippedItem& item : result.skipped)
            skipped.append(QJsonObject{{QStringLiteral("path"), item.path},
                                       {QStringLiteral("reason"), item.reason}});
        QJsonObject object{{QStringLiteral("written"), QJsonArray::fromStringList(result.written)},
                           {QStringLiteral("skipped"), skipped},
                           {QStringLiteral("notes"), QJsonArray::fromStringList(result.notes)}};
        if (invocation_.dryRun) {
            QJsonArray planned;
            for (const PlannedChange& change : result.planned)
                planned.append(QJsonObject{{QStringLiteral("file"), change.file},
                                           {QStringLiteral("property"), change.property},
                                           {QStringLiteral("before"), change.before},
                                           {QStringLiteral("after"), change.after}});
            object.insert(QStringLiteral("planned"), planned);
        }
        if (result.alert)
            object.insert(QStringLiteral("alert"),
                          QJsonObject{{QStringLiteral("message"), result.alert->message},
                                      {QStringLiteral("informativeText"),
                                       result.alert->informativeText}});
        printJson(invocation_.out, object);
    } else {
        QString lastFile;
        for (const PlannedChange& change : result.planned) {
            if (change.file != lastFile)
                printLine(invocation_.out, change.file + QStringLiteral(" (dry run, not written)"));
            lastFile = change.file;
            printLine(invocation_.out, QStringLiteral("  %1: %2 -> %3")
                                           .arg(change.property,
                                                change.before.isEmpty() ? QStringLiteral("(none)") : change.before,
                                                change.after.isEmpty() ? QStringLiteral("(removed)") : change.after));
        }
        for (const QString& path : result.written) {
            if (!shown_.contains(path))
                printLine(invocation_.out, path);
        }
        for (const SkippedItem& item : result.skipped)
            printLine(invocation_.err, QStringLiteral("skipped %1: %2").arg(item.path, item.reason));
        for (const QString& note : result.notes)
            printLine(invocation_.err, QStringLiteral("note: %1").arg(note));
        if (result.alert)
            printLine(invocation_.err, QStringLiteral("%1: %2").arg(result.alert->message,
                                                                     result.alert->informativeText));
    }
    // Ctrl-C after the last file changed nothing: the run counts as finished.
    const int done = done_->load();
    const int total = total_->load();
    if (interruptFlag()->load() && (total == 0 || done < total)) {
        printLine(invocation_.err, total > 0 ? QStringLiteral("interrupted: %1 of %2 files done; the others were not touched")
                                                   .arg(done).arg(total)
                                             : QStringLiteral("interrupted: the files not listed were not touched"));
        return ExitInterrupted;
    }
    if (result.alert)
        return ExitUsage;  // the user's mistake, like a wrong command line
    return result.skipped.isEmpty() ? ExitSuccess : ExitItemFailed;
}

}  // namespace pelorin::cli
