#include "cli/CopyDateCommand.h"

#include "cli/CliOutput.h"
#include "cli/SetDateCommand.h"
#include "dates/PhotoDateCopy.h"

namespace pelorin::cli {
namespace {

struct CopyName {
    const char* name;
    DateCopy what;
};

constexpr CopyName kCopies[] = {
    {"exif-to-created", DateCopy::ExifToCreated},
    {"name-to-comment", DateCopy::NameToComment},
    {"created-to-camera", DateCopy::CreatedToCamera},
    {"created-to-modified", DateCopy::CreatedToModified},
    {"modified-to-created", DateCopy::ModifiedToCreated},
};

}  // namespace

QString CopyDateCommand::summary() const
{
    return QStringLiteral("write copies of photos with one date or the name copied elsewhere");
}

QString CopyDateCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli copy-date WHAT [--camera] FILE...\n"
        "\n"
        "Writes a copy of each photo into the output folder with one value copied:\n"
        "  exif-to-created      the EXIF original date becomes both file dates (a camera photo:\n"
        "                       its creation date only)\n"
        "  name-to-comment      the file name without its extension becomes the EXIF UserComment\n"
        "  created-to-camera    the file creation date becomes the EXIF original and digitized\n"
        "                       dates and the TIFF DateTime\n"
        "  created-to-modified  the file creation date becomes the modification date\n"
        "  modified-to-created  the file modification date becomes the creation date\n"
        "File dates are read and written in the local time zone. An existing output is replaced.\n"
        "With --camera, each FILE names a camera photo downloaded into the output folder; that\n"
        "copy is changed in place.");
}

int CopyDateCommand::run(CliInvocation& invocation)
{
    if (invocation.args.isEmpty())
        return usageError(invocation, name(), QStringLiteral("say what to copy"));
    const QString what = invocation.args.first();
    const CopyName* chosen = nullptr;
    for (const CopyName& copy : kCopies) {
        if (what == QLatin1String(copy.name))
            chosen = &copy;
    }
    if (!chosen)
        return usageError(invocation, name(), QStringLiteral("unknown copy '%1'").arg(what));
    const DateCommandArgs args = parseDateCommandArgs(invocation.args.mid(1), {}, {QStringLiteral("--camera")});
    if (!args.error.isEmpty())
        return usageError(invocation, name(), args.error);
    if (args.files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    CliReporter reporter(invocation);
    return reporter.report(copyPhotoDate(chosen->what, dateCommandSelection(args), reporter.context()));
}

}  // namespace pelorin::cli
