#include "audio/ContainerTagWriters.h"
#include "audio/AudioTagChanges.h"
#include "audio/AudioTagWriter.h"
#include "audio/CafInfo.h"

#include <QFile>

namespace pelorin {
namespace {

// The entries after the changes: a field's entry is edited where it stands, added at the end or
// removed.
void applyChanges(CafInfoEntries& entries, const QList<AudioFieldChange>& changes)
{
    for (const AudioFieldChange& c : changes) {
        const char* key = audioFieldRow(c.field).info;
        if (!key)
            continue;
        const QString name = QString::fromLatin1(key);
        auto it = std::find_if(entries.begin(), entries.end(), [&](const CafInfoEntry& e) { return e.key == name; });
        if (it == entries.end() && !c.after.isEmpty())
            entries.append({name, c.after});
        else if (it != entries.end() && c.after.isEmpty())
            entries.erase(it);
        else if (it != entries.end())
            it->value = c.field == AudioField::TrackNumber ? trackTextKeepingTotal(it->value, c.after) : c.after;
    }
}

// CAF: its 'info' chunk, which this program reads and writes itself; CAF holds no artwork.
class CafTagWriter final : public AudioTagWriter {
public:
    bool write(const QString& source, const QString& target, const AudioTagEdit& edit, const OutputCheck& check,
               Durability durability, QString* problem) const override
    {
        CafInfoEntries entries;
        if (!edit.removeAll) {
            QFile file(source);
            if (!file.open(QIODevice::ReadOnly)) {
                *problem = file.errorString();
                return false;
            }
            entries = readCafInfo(file, problem);
            if (!problem->isEmpty())
                return false;
            applyChanges(entries, edit.changes);
        }
        AtomicFileWriter writer(target, source, durability);
        writer.setCheck(check);
        if (!writer.open() || !writeCafWithInfo(source, entries, writer, problem) || !writer.commit()) {
            if (problem->isEmpty())
                *problem = writer.error();
            return false;
        }
        return true;
    }
};

}  // namespace

std::unique_ptr<AudioTagWriter> cafTagWriter() { return std::make_unique<CafTagWriter>(); }

}  // namespace pelorin
