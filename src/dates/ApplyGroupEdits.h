#pragma once

#include "photo/PhotoRewrite.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

namespace pelorin {

// Values to set in a photo's groups, independent of any one photo: per group, each key's new
// value, or a null QVariant to remove that key; and groups to remove whole. Turning the edits
// into changes for a particular photo keeps every value of that photo the edits do not name.
struct GroupEdits {
    QMap<QString, QVariantMap> keys;
    QStringList removedGroups;

    void set(const QString& group, const QString& key, const QVariant& value) { keys[group].insert(key, value); }
    void remove(const QString& group, const QString& key) { keys[group].insert(key, QVariant()); }
    bool isEmpty() const { return keys.isEmpty() && removedGroups.isEmpty(); }

    // The complete new groups for a photo with these properties; groups the edits leave as
    // they are do not appear.
    PhotoChanges changesFor(const QVariantMap& properties) const;
};

// A keyword text as the editor shows it ("a, b") split into the IPTC keyword list.
QVariantList keywordList(const QString& text);

}  // namespace pelorin
