#include "model/PropertyList.h"

#include <QFile>

namespace pelorin {

PropertyListResult readPropertyList(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return {std::nullopt, QStringLiteral("the file is empty")};
    if (bytes.size() > plist_detail::kMaxFileSize)
        return {std::nullopt, QStringLiteral("the file is too large to be a property list")};
    if (bytes.startsWith("bplist"))
        return plist_detail::readBinary(bytes);
    return plist_detail::readXml(bytes);
}

PropertyListResult readPropertyListFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {std::nullopt, QStringLiteral("cannot open %1: %2").arg(path, file.errorString())};
    if (file.size() > plist_detail::kMaxFileSize)
        return {std::nullopt, QStringLiteral("the file is too large to be a property list")};
    return readPropertyList(file.readAll());
}

QString propertyListReadBackProblem(const QString& path, const QByteArray& xml)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() != xml.size())
        return QStringLiteral("the property list does not read back whole");
    const QByteArray bytes = file.readAll();
    if (bytes != xml)
        return QStringLiteral("the property list's bytes differ from those written");
    const PropertyListResult read = readPropertyList(bytes);
    if (!read.value)
        return QStringLiteral("the property list does not read back: %1").arg(read.error);
    if (writePropertyListXml(*read.value).xml != xml)
        return QStringLiteral("the property list does not read back to the values written");
    return {};
}

}  // namespace pelorin
