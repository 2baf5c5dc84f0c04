#pragma once
#include "model/SafeOutput.h"

#include <QString>

namespace pelorin {

// TagLib saves in place, so a writer works on a copy: the source is copied into a hidden file in
// the storage folder, TagLib edits that copy, and commit() moves it onto the output name in one
// rename. A copy not committed is deleted; the source is only ever opened for reading.
class AudioScratchCopy {
public:
    // With Durability::Deferred the committed copy is not forced to disk; the batch flushes once.
    AudioScratchCopy(QString sourcePath, QString targetPath, Durability durability = Durability::FlushEach);
    ~AudioScratchCopy();
    AudioScratchCopy(const AudioScratchCopy&) = delete;
    AudioScratchCopy& operator=(const AudioScratchCopy&) = delete;

    bool create();
    const QString& path() const { return scratch_; }
    // Verifies the edited copy with check before it takes the output's name.
    bool commit(const OutputCheck& check);
    const QString& error() const { return error_; }

private:
    QString source_;
    QString target_;
    QString scratch_;
    QString error_;
    Durability durability_;
};

}  // namespace pelorin
