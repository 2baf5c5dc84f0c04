#include "video/MovieEditorModel.h"

namespace pelorin {

namespace {

QString line(const char* caption, const QString& value)
{
    const QString text = QString::fromLatin1(caption);
    return value.isEmpty() ? text : text + QLatin1Char(' ') + value;
}

QString signedText(const QString& sign, double magnitude)
{
    return QString::asprintf("%lf", sign == QLatin1String("-") ? -magnitude : magnitude);
}

}  // namespace

QStringList movieInformationLines(const IKImageItem& item)
{
    const QString dimensions = item.filePixWidth > 0 && item.filepixHeigh > 0
                                   ? QString::asprintf("%d x %d", item.filePixWidth, item.filepixHeigh)
                                   : QString();
    return {
        line("File Name:", item.fileName),
        line("Record Date:", item.shootDateStr),
        line("File Dimensions:", dimensions),
        line("File Size:", item.fileSize),
        line("Location:", item.filePath),
        line("Kind:", item.fileType),
        line("Channels:", item.fileChannels),
        line("Duration:", item.fileduratStr),
        line("Bitrate:", item.fileBitRate),
        line("Sample Rate:", item.fileSampleRate),
        line("Created Date:", item.fileCreateDateStr),
    };
}

QStringList movieEditorTexts(const IKImageItem& item, MovieField field)
{
    if (field == MovieField::Location) {
        if (item.latitudeFormat.isEmpty())
            return {QString(), QString(), QString()};
        return {signedText(item.latitudeFormat, item.filelatitude),
                signedText(item.longtitudeFormat, item.filelongtitude),
                signedText(item.AtitudeFormat, item.fileAtitude)};
    }
    const MovieFieldRow& row = movieFieldRow(field);
    QStringList texts;
    for (qsizetype i = 0; i < row.inputs.size(); ++i)
        texts.append(row.member ? item.*row.member : QString());
    return texts;
}

void addEditedField(MovieChanges& changes, MovieField field, const QStringList& shown, const QStringList& typed)
{
    if (typed == shown)
        return;
    if (field == MovieField::Location
        && (typed.value(0).trimmed().isEmpty() || typed.value(1).trimmed().isEmpty()))
        return;
    for (qsizetype i = 0; i < typed.size(); ++i)
        changes.take(field, int(i), typed[i]);
}

}  // namespace pelorin
