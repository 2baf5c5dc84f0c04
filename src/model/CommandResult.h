#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace pelorin {

// One value a command changes (or, in a dry run, would change) in one file.
struct PlannedChange {
    QString file;
    QString property;  // "{Exif}/DateTimeOriginal", "file modification date", ...
    QString before;    // empty when the value did not exist
    QString after;     // empty when the value is removed
    friend bool operator==(const PlannedChange&, const PlannedChange&) = default;
};

// A mistake of the user's, shown with a single " Ok " button.
struct Alert {
    QString message;
    QString informativeText;
    friend bool operator==(const Alert&, const Alert&) = default;
};

// A photo edit's output that holds the whole edit of one record (no sidecar beside a byte copy):
// the window takes it as the record's working copy.
struct EditedCopy {
    QString record;  // the record's own file
    QString copy;
    friend bool operator==(const EditedCopy&, const EditedCopy&) = default;
};

struct SkippedItem {
    QString path;
    QString reason;
    friend bool operator==(const SkippedItem&, const SkippedItem&) = default;
};

// What an engine command did: the files it wrote, the items it passed over and why, notes the
// user should read once (say, that creation dates could not be set), and at most one alert.
// Nothing a command leaves undone goes unreported.
struct CommandResult {
    QStringList written;
    QList<SkippedItem> skipped;
    QStringList notes;
    std::optional<Alert> alert;
    QList<PlannedChange> planned;  // filled in dry runs: what each file would get
    QList<EditedCopy> editedCopies;

    void addWritten(const QString& path) { written.append(path); }
    void plan(const QString& file, const QString& property, const QString& before, const QString& after)
    {
        planned.append({file, property, before, after});
    }
    void skip(const QString& path, const QString& reason) { skipped.append({path, reason}); }
    void noteOnce(const QString& note)
    {
        if (!notes.contains(note))
            notes.append(note);
    }
    void setAlert(const QString& message, const QString& informativeText)
    {
        alert = Alert{message, informativeText};
    }
    // Records output as the edited copy of record when it is all this command wrote for it.
    void addEditedCopy(const QString& record, const QString& output, const QStringList& writtenForRecord);
    void merge(const CommandResult& other);

    // True when nothing was skipped and no alert was raised.
    bool succeeded() const { return skipped.isEmpty() && !alert; }
};

// The alerts of the editor, letter for letter.
namespace Alerts {
Alert noSelection();        // "No Item has been selected"
Alert invalidDateFormat();  // "Invalid date format"
Alert valueError();         // "Vaule Error" / "Each value cannot be empty."
}  // namespace Alerts

}  // namespace pelorin
