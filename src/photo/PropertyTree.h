#pragma once

#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

namespace pelorin {

// One row of the inspector's property tree: a group (with children and an empty value) or a
// property with its value as the model holds it (text, number, array, ...).
struct PropertyTreeNode {
    QString key;  // display name
    QVariant val;
    QString text;  // the value as a person reads it (see propertyDisplayText)
    QList<PropertyTreeNode> children;
    bool isGroup = false;
};

// The tree of a property dictionary, each level sorted by raw key.
QList<PropertyTreeNode> propTree(const QVariantMap& properties);

// "DateTimeOriginal" -> "Date Time Original", "{Exif}" -> "Exif"; the raw key for keys the
// model does not name (maker tags, XMP properties).
QString propertyDisplayName(const QString& key);

// A value as one line of text for trees, tables and the command line.
QString propertyValueText(const QVariant& value);

// The value of one key as a person reads it: coordinates to 6 places, versions as "2.32" and
// "2.3.0.0", the colour space by name, and every date and time in the one form
// "yyyy:MM:dd HH:mm:ss" (with its zone when it has one) whichever group it comes from.
QString propertyDisplayText(const QString& key, const QVariant& value);

}  // namespace pelorin
