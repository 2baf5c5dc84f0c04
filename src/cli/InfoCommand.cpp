#include "cli/InfoCommand.h"

#include "cli/CliOutput.h"
#include "model/PropertyList.h"
#include "photo/PhotoEditorFields.h"
#include "photo/PhotoInspection.h"
#include "photo/PropertyTree.h"

#include <QJsonArray>
#include <QJsonObject>

#include <optional>

namespace pelorin::cli {
namespace {

struct FieldRow {
    const char* label;
    QString PhotoEditorTexts::*field;
};

constexpr FieldRow kFieldRows[] = {
    {"Title", &PhotoEditorTexts::title},
    {"Artist", &PhotoEditorTexts::artist},
    {"Description", &PhotoEditorTexts::imageDescription},
    {"Copyright", &PhotoEditorTexts::copyright},
    {"Comments", &PhotoEditorTexts::comments},
    {"Keywords", &PhotoEditorTexts::keywords},
    {"Camera make", &PhotoEditorTexts::cameraMake},
    {"Camera model", &PhotoEditorTexts::cameraModel},
    {"Camera date", &PhotoEditorTexts::cameraDate},
    {"GPS date", &PhotoEditorTexts::gpsDate},
    {"GPS time", &PhotoEditorTexts::gpsTime},
    {"GPS altitude", &PhotoEditorTexts::gpsAltitude},
    {"GPS latitude", &PhotoEditorTexts::gpsLatitude},
    {"GPS longitude", &PhotoEditorTexts::gpsLongitude},
    {"DPI", &PhotoEditorTexts::dpi},
    {"Image size", &PhotoEditorTexts::imageSize},
    {"File size", &PhotoEditorTexts::fileSize},
    {"Created", &PhotoEditorTexts::creationDate},
};

void printTree(std::FILE* out, const QList<PropertyTreeNode>& nodes, int depth)
{
    const QString indent(2 * depth, QLatin1Char(' '));
    for (const PropertyTreeNode& node : nodes) {
        if (node.isGroup) {
            printLine(out, indent + node.key);
            printTree(out, node.children, depth + 1);
        } else {
            printLine(out, QStringLiteral("%1%2: %3").arg(indent, node.key, node.text));
        }
    }
}

// JSON has no bytes or dates: data becomes base64 text, dates ISO text.
QJsonValue jsonOf(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        QJsonObject object;
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            object.insert(it.key(), jsonOf(it.value()));
        return object;
    }
    case QMetaType::QVariantList: {
        QJsonArray array;
        for (const QVariant& item : value.toList())
            array.append(jsonOf(item));
        return array;
    }
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toBase64());
    case QMetaType::QDateTime:
        return value.toDateTime().toUTC().toString(Qt::ISODate);
    default:
        return QJsonValue::fromVariant(value);
    }
}

QJsonObject fieldsJson(const PhotoEditorTexts& texts)
{
    QJsonObject object;
    for (const FieldRow& row : kFieldRows)
        object.insert(QString::fromLatin1(row.label), texts.*row.field);
    return object;
}

}  // namespace

QString InfoCommand::summary() const
{
    return QStringLiteral("show every metadata property of photos");
}

QString InfoCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli info FILE... [--json | --plist]\n"
        "\n"
        "Reads each photo and prints its type, image count, the tree of its property groups\n"
        "(TIFF, Exif, GPS, IPTC, XMP, JFIF, PNG, maker notes, ...) and the texts the photo\n"
        "editor's fields would show. With --json, one JSON array with an object per file; with\n"
        "--plist, an XML property list of the same. A file that cannot be read is reported\n"
        "with the reason, and the exit status is then 1.");
}

int InfoCommand::run(CliInvocation& invocation)
{
    bool plist = false;
    QStringList files;
    for (const QString& arg : invocation.args) {
        if (arg == QLatin1String("--plist"))
            plist = true;
        else if (arg.startsWith(QLatin1String("--")))
            return usageError(invocation, name(), QStringLiteral("unknown option '%1'").arg(arg));
        else
            files << arg;
    }
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));

    int status = ExitSuccess;
    std::optional<JsonArrayPrinter> jsonRows;
    if (invocation.json)
        jsonRows.emplace(invocation.out);
    QVariantList plistRows;
    for (const QString& file : files) {
        const PhotoInspection inspection = inspectPhoto(file);
        const PhotoProperties& photo = inspection.photo;
        if (!photo.ok()) {
            status = ExitItemFailed;
            printLine(invocation.err, QStringLiteral("%1: %2").arg(file, photo.error));
            if (invocation.json)
                jsonRows->append(QJsonObject{{QStringLiteral("file"), file}, {QStringLiteral("error"), photo.error}});
            continue;
        }
        const PhotoEditorFill& fill = inspection.fill;
        if (invocation.json) {
            jsonRows->append(QJsonObject{{QStringLiteral("file"), file},
                                         {QStringLiteral("type"), photo.format.typeName},
                                         {QStringLiteral("kind"), photo.format.kind},
                                         {QStringLiteral("imageCount"), photo.imageCount},
                                         {QStringLiteral("properties"), jsonOf(photo.properties)},
                                         {QStringLiteral("editorFields"), fieldsJson(fill.fields)}});
        } else if (plist) {
            plistRows.append(QVariantMap{{QStringLiteral("file"), file},
                                         {QStringLiteral("type"), photo.format.typeName},
                                         {QStringLiteral("imageCount"), photo.imageCount},
                                         {QStringLiteral("properties"), photo.properties}});
        } else {
            printLine(invocation.out, QStringLiteral("== %1").arg(file));
            printLine(invocation.out, QStringLiteral("Type: %1 (%2), %3 image(s)")
                                          .arg(photo.format.kind, photo.format.typeName)
                                          .arg(photo.imageCount));
            printTree(invocation.out, propTree(photo.properties), 0);
            printLine(invocation.out, QStringLiteral("Editor fields"));
            for (const FieldRow& row : kFieldRows) {
                const QString value = fill.fields.*row.field;
                if (!value.isEmpty())
                    printLine(invocation.out, QStringLiteral("  %1: %2").arg(QString::fromLatin1(row.label), value));
            }
        }
    }
    if (plist && !invocation.json) {
        const PropertyListXml xml = writePropertyListXml(plistRows);
        if (!xml.xml) {
            printLine(invocation.err, QStringLiteral("pelorin-cli info: %1").arg(xml.error));
            return ExitItemFailed;
        }
        std::fwrite(xml.xml->constData(), 1, size_t(xml.xml->size()), invocation.out);
    }
    return status;
}

}  // namespace pelorin::cli
