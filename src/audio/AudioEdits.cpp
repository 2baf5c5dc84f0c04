#include "audio/AudioEdits.h"

namespace pelorin {

QList<AudioField> allAudioFields()
{
    QList<AudioField> fields;
    for (int i = 0; i <= static_cast<int>(AudioField::Lyrics); ++i)
        fields.append(static_cast<AudioField>(i));
    return fields;
}

bool isFirstGroupField(AudioField field) { return field <= AudioField::Composer; }

QString audioFieldName(AudioField field)
{
    static const char* const names[] = {
        "title", "subtitle", "album", "artist", "track number", "composer", "recorded date",
        "year", "copyright", "publisher", "band", "comments", "lyricist",
    };
    return QString::fromLatin1(names[static_cast<int>(field)]);
}

QList<AudioFieldChange> changedAudioFields(const AudioEdit& edit)
{
    QList<AudioFieldChange> changes;
    for (const AudioField field : allAudioFields()) {
        const bool flag = isFirstGroupField(field) ? edit.basicInfoChange : edit.cameraInfoChange;
        if (!flag || !edit.current.contains(field))
            continue;
        const QString before = edit.opening.value(field);
        const QString after = edit.current.value(field);
        if (before != after)
            changes.append({field, before, after});
    }
    return changes;
}

QString trackTextKeepingTotal(const QString& stored, const QString& typed)
{
    const QString number = typed.trimmed();
    if (number.isEmpty() || number.contains(QLatin1Char('/')))
        return number;
    const QString total = stored.section(QLatin1Char('/'), 1, 1).trimmed();
    return total.isEmpty() ? number : number + QLatin1Char('/') + total;
}

}  // namespace pelorin
