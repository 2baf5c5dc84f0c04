#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace pelorin {

// Property lists (XML and binary) to and from QVariant, keeping every type: dictionary
// (QVariantMap), array (QVariantList), string (QString), integer (qlonglong, or qulonglong above
// the signed range), real (double), bool, date (QDateTime in UTC) and data (QByteArray).
//
// Reading is bounded: by the input's size, a nesting depth of 256 and a number of values in
// proportion to the file's size, so that a tiny file whose objects refer to each other over
// and over cannot hang the program or exhaust its memory.
struct PropertyListResult {
    std::optional<QVariant> value;
    QString error;  // why there is no value
};

PropertyListResult readPropertyList(const QByteArray& bytes);
PropertyListResult readPropertyListFile(const QString& path);

// Serialises a value as an XML property list. Fails, with the reason, for a type that a
// property list cannot hold or a text with characters XML cannot carry.
struct PropertyListXml {
    std::optional<QByteArray> xml;
    QString error;
};
PropertyListXml writePropertyListXml(const QVariant& value);

// The read-back of a written list: the file at path must hold xml and read as a list that
// writes out as the same XML, so no value was lost on the way. Why not, or empty.
QString propertyListReadBackProblem(const QString& path, const QByteArray& xml);

namespace plist_detail {
constexpr int kMaxDepth = 256;
constexpr qint64 kMaxValues = 4'000'000;
constexpr qint64 kMaxFileSize = 256LL * 1024 * 1024;
// Seconds from the Unix epoch to the property-list epoch, 2001-01-01T00:00:00Z.
constexpr qint64 kEpochOffset = 978307200;

PropertyListResult readBinary(const QByteArray& bytes);
PropertyListResult readXml(const QByteArray& bytes);
}  // namespace plist_detail

}  // namespace pelorin
