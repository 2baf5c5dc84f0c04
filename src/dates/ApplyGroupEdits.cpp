#include "dates/ApplyGroupEdits.h"

namespace pelorin {

PhotoChanges GroupEdits::changesFor(const QVariantMap& properties) const
{
    PhotoChanges changes;
    for (auto group = keys.cbegin(); group != keys.cend(); ++group) {
        if (removedGroups.contains(group.key()))
            continue;
        const bool present = properties.contains(group.key());
        const QVariantMap before = properties.value(group.key()).toMap();
        QVariantMap after = before;
        for (auto it = group.value().cbegin(); it != group.value().cend(); ++it) {
            if (it.value().isNull())
                after.remove(it.key());
            else
                after.insert(it.key(), it.value());
        }
        // A group the photo lacks is only created for a value to put in it.
        if (after == before || (!present && after.isEmpty()))
            continue;
        changes.groups.insert(group.key(), after);
    }
    for (const QString& group : removedGroups) {
        if (properties.contains(group))
            changes.groups.insert(group, QVariant());
    }
    return changes;
}

QVariantList keywordList(const QString& text)
{
    QVariantList list;
    for (const QString& part : text.split(QLatin1Char(','))) {
        const QString keyword = part.trimmed();
        if (!keyword.isEmpty())
            list.append(keyword);
    }
    return list;
}

}  // namespace pelorin
