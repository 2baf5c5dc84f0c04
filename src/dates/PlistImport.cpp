#include "dates/PlistImport.h"

#include "dates/ApplyToSelection.h"
#include "dates/TemplateApply.h"
#include "model/FileDates.h"
#include "model/PropertyList.h"
#include "photo/PhotoProperties.h"

namespace pelorin {
namespace {

const QString kExif = QStringLiteral("{Exif}");
const QString kTiff = QStringLiteral("{TIFF}");
const QString kGps = QStringLiteral("{GPS}");

std::optional<QVariantMap> readDictionary(const QString& path, QString* error)
{
    const PropertyListResult read = readPropertyListFile(path);
    if (!read.value) {
        *error = QStringLiteral("cannot read the property list: %1").arg(read.error);
        return std::nullopt;
    }
    if (read.value->typeId() != QMetaType::QVariantMap) {
        *error = QStringLiteral("the property list does not hold a dictionary");
        return std::nullopt;
    }
    const QVariantMap root = read.value->toMap();
    if (root.isEmpty()) {
        *error = QStringLiteral("the property list holds no entries");
        return std::nullopt;
    }
    return root;
}

bool holdsGroups(const QVariantMap& entry)
{
    for (auto it = entry.cbegin(); it != entry.cend(); ++it) {
        if (it.key().startsWith(QLatin1Char('{')) && it.key().endsWith(QLatin1Char('}')))
            return true;
    }
    return false;
}

// The groups a group import replaces, taken from the entry; an error when it has none of them.
std::optional<PhotoChanges> groupChanges(PlistImport what, const QVariantMap& entry, QString* error)
{
    PhotoChanges changes;
    if (what == PlistImport::Tiff || what == PlistImport::Exif) {
        if (holdsGroups(entry)) {
            *error = QStringLiteral("the entry holds groups, not the values of one group");
            return std::nullopt;
        }
        changes.groups.insert(what == PlistImport::Tiff ? kTiff : kExif, entry);
        return changes;
    }
    QStringList wanted;
    if (what == PlistImport::ExifAndTiff)
        wanted = {kExif, kTiff};
    else if (what == PlistImport::ExifAndGps)
        wanted = {kExif, kGps};
    else  // all metadata: read-only groups and image facts are not ours to set
        wanted = {kTiff, kExif, kGps, QStringLiteral("{IPTC}"), QStringLiteral("{XMP}"), QStringLiteral("Orientation")};
    for (const QString& group : wanted) {
        if (!entry.contains(group))
            continue;
        const QVariant value = entry.value(group);
        if (group != QLatin1String("Orientation") && value.typeId() != QMetaType::QVariantMap) {
            *error = QStringLiteral("%1 in the entry is not a dictionary").arg(group);
            return std::nullopt;
        }
        changes.groups.insert(group, value);
    }
    if (changes.groups.isEmpty()) {
        *error = QStringLiteral("the entry holds none of %1").arg(wanted.join(QStringLiteral(", ")));
        return std::nullopt;
    }
    return changes;
}

CommandResult importTemplate(const QString& plistPath, const PhotoSelection& selection, const CommandContext& context)
{
    CommandResult result;
    QString error;
    const auto templ = readDictionary(plistPath, &error);
    if (!templ) {
        result.skip(plistPath, error);
        return result;
    }
    const TemplateEdits edits = templateEdits(*templ);
    if (!edits.hasTemplateKeys) {
        result.skip(plistPath, QStringLiteral("the property list holds no template values"));
        return result;
    }
    if (edits.alert) {
        result.alert = edits.alert;
        return result;
    }
    const auto changesFor = [&edits](const QString& input, QString* reason) -> std::optional<PhotoChanges> {
        const PhotoProperties photo = readPhotoProperties(input);
        if (!photo.ok()) {
            *reason = photo.error;
            return std::nullopt;
        }
        return edits.edits.changesFor(photo.properties);
    };
    return applyToSelection(selection, changesFor, context, readFileDates(plistPath).modified);
}

}  // namespace

ImportEntry readImportEntry(const QString& plistPath)
{
    ImportEntry entry;
    const auto root = readDictionary(plistPath, &entry.error);
    if (!root)
        return entry;
    // A file of several photos: the first by name, so the choice never depends on chance.
    const QVariant first = root->first();
    if (first.typeId() != QMetaType::QVariantMap) {
        entry.error = QStringLiteral("the entry \"%1\" is not a dictionary").arg(root->firstKey());
        return entry;
    }
    entry.value = first.toMap();
    return entry;
}

CommandResult importPhotoPlist(PlistImport what, const QString& plistPath, const PhotoSelection& selection,
                               const CommandContext& context)
{
    CommandResult result;
    if (selection.items.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    if (what == PlistImport::Template)
        return importTemplate(plistPath, selection, context);
    const ImportEntry entry = readImportEntry(plistPath);
    QString error = entry.error;
    const auto changes = entry.value ? groupChanges(what, *entry.value, &error) : std::nullopt;
    if (!changes) {
        result.skip(plistPath, error);
        return result;
    }
    return applyToSelection(
        selection, [&changes](const QString&, QString*) { return changes; }, context);
}

}  // namespace pelorin
