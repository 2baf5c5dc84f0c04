#include "dates/PlistExportFile.h"

#include "model/PropertyList.h"
#include "model/SafeOutput.h"

#include <QFileInfo>

namespace pelorin {

void writeExportPlist(const QVariantMap& root, const QString& fileName, const CommandContext& context,
                      CommandResult& result)
{
    const QString path = context.claimOutput(storageOutputPath(context.storageFolder, fileName));
    const PropertyListXml xml = writePropertyListXml(root);
    if (!xml.xml) {
        result.skip(path, QStringLiteral("cannot be written as a property list: %1").arg(xml.error));
        return;
    }
    if (context.dryRun) {
        result.plan(path, QStringLiteral("property list"),
                    QFileInfo::exists(path) ? QStringLiteral("existing file") : QString(),
                    QStringLiteral("%1 entries").arg(root.size()));
        return;
    }
    QString error;
    if (!ensureFolder(context.storageFolder, &error)
        || !writeFileAtomically(path, *xml.xml, {}, &error, Durability::FlushEach,
                                   [&](const QString& pending) { return propertyListReadBackProblem(pending, *xml.xml); })) {
        result.skip(path, error);
        return;
    }
    result.addWritten(path);
    context.reveal.reveal(path);
}

}  // namespace pelorin
