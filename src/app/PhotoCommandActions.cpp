#include "app/PhotoCommandActions.h"

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "model/PhotoBatch.h"
#include "model/Preferences.h"
#include "photo/JpegRecompression.h"
#include "photo/PhotoDateStamp.h"
#include "app/MainWindow.h"
#include "app/TextReportWindow.h"

#include <QFileInfo>
#include <QFutureWatcher>
#include <QtConcurrent/QtConcurrentRun>

namespace pelorin {

QString removalTitle(MetadataRemoval what)
{
    switch (what) {
    case MetadataRemoval::Exif: return QStringLiteral("Remove EXIF");
    case MetadataRemoval::Gps: return QStringLiteral("Remove GPS");
    case MetadataRemoval::Iptc: return QStringLiteral("Remove IPTC");
    case MetadataRemoval::ExifAndGps: return QStringLiteral("Remove EXIF and GPS");
    case MetadataRemoval::All: return QStringLiteral("Remove All Metadata");
    }
    return {};
}

QString dateCopyTitle(DateCopy what)
{
    switch (what) {
    case DateCopy::ExifToCreated: return QStringLiteral("Set File Dates from Date Taken");
    case DateCopy::NameToComment: return QStringLiteral("Copy File Name into Comment");
    case DateCopy::CreatedToCamera: return QStringLiteral("Set Date Taken from File Creation Date");
    case DateCopy::CreatedToModified: return QStringLiteral("Set Modification Date from Creation Date");
    case DateCopy::ModifiedToCreated: return QStringLiteral("Set Creation Date from Modification Date");
    }
    return {};
}

QString exportTitle(PlistExport what)
{
    switch (what) {
    case PlistExport::Tiff: return QStringLiteral("Export TIFF Info");
    case PlistExport::Exif: return QStringLiteral("Export EXIF Info");
    case PlistExport::ExifAndTiff: return QStringLiteral("Export EXIF and TIFF Info");
    case PlistExport::ExifAndGps: return QStringLiteral("Export EXIF and GPS Info");
    case PlistExport::AllMetadata: return QStringLiteral("Export All Metadata");
    }
    return {};
}

QString importTitle(PlistImport what)
{
    switch (what) {
    case PlistImport::Tiff: return QStringLiteral("Apply TIFF Info from Plist…");
    case PlistImport::Exif: return QStringLiteral("Apply EXIF Info from Plist…");
    case PlistImport::ExifAndTiff: return QStringLiteral("Apply EXIF and TIFF Info from Plist…");
    case PlistImport::ExifAndGps: return QStringLiteral("Apply EXIF and GPS Info from Plist…");
    case PlistImport::AllMetadata: return QStringLiteral("Apply All Metadata from Plist…");
    case PlistImport::Template: return QStringLiteral("Apply Template…");
    }
    return {};
}

PhotoCommandActions::PhotoCommandActions(AppDelegate& app) : QObject(&app), app_(app) {}

bool PhotoCommandActions::haveSelection()
{
    if (!app_.currentPhotoSelection().items.isEmpty())
        return true;
    app_.showAlert(Alerts::noSelection());
    return false;
}

void PhotoCommandActions::removeMetadata(MetadataRemoval what)
{
    if (!haveSelection())
        return;
    const PhotoSelection selection = app_.currentPhotoSelection();
    app_.runPhotoCommand(removalTitle(what), selection, [what, selection](const CommandContext& context) {
        return removePhotoMetadata(what, selection, context);
    });
}

void PhotoCommandActions::copyDate(DateCopy what)
{
    if (!haveSelection())
        return;
    const PhotoSelection selection = app_.currentPhotoSelection();
    app_.runPhotoCommand(dateCopyTitle(what), selection, [what, selection](const CommandContext& context) {
        return copyPhotoDate(what, selection, context);
    });
}

void PhotoCommandActions::exportPlist(PlistExport what)
{
    if (!haveSelection())
        return;
    const PhotoSelection selection = app_.currentPhotoSelection();
    app_.runPhotoCommand(exportTitle(what), selection, [what, selection](const CommandContext& context) {
        return exportPhotoPlist(what, selection, context);
    });
}

void PhotoCommandActions::importPlist(PlistImport what)
{
    if (!haveSelection())
        return;
    const QString plist = app_.panels.chooseFile(app_.window(), QStringLiteral("Please select a property list to apply."),
                                                 propertyListFilter());
    if (plist.isEmpty())
        return;
    const PhotoSelection selection = app_.currentPhotoSelection();
    QString title = importTitle(what);
    title.remove(QStringLiteral("…"));
    app_.runPhotoCommand(title, selection, [what, plist, selection](const CommandContext& context) {
        return importPhotoPlist(what, plist, selection, context);
    });
}

void PhotoCommandActions::exportCurrentPhotoPlist()
{
    if (app_.currentExifDictionary.isEmpty() || app_.currentFileName.isEmpty()) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    const QVariantMap properties = app_.currentExifDictionary;
    const QString name = app_.currentFileName;
    app_.runCommand(QStringLiteral("Export Photo Metadata"), [properties, name](const CommandContext& context) {
        return pelorin::exportCurrentPhotoPlist(properties, name, context);
    });
}

void PhotoCommandActions::stampDates()
{
    if (!haveSelection())
        return;
    DateStampStyle style = stampStyleFromPreferences(app_.preferences().peek());
    style.color = app_.currentFontColor;  // chosen in the preferences sheet, not stored
    const PhotoSelection selection = app_.currentPhotoSelection();
    app_.runPhotoCommand(QStringLiteral("Stamp Dates"), selection, [style, selection](const CommandContext& context) {
        return stampPhotoDates(selection, style, context);
    });
}

void PhotoCommandActions::recompress()
{
    if (!haveSelection())
        return;
    const PhotoSelection selection = app_.currentPhotoSelection();
    const QString storage = app_.storagelocation;
    QStringList paths;
    for (const IKImageItem& item : selection.items)
        paths.append(photoInputPath(item, selection.source, storage));
    app_.runPhotoCommand(QStringLiteral("Make Small Copies"), selection,
                    [paths](const CommandContext& context) { return recompressPhotos(paths, context); });
}

void PhotoCommandActions::showExifSegments()
{
    if (segmentReadRunning_ || !haveSelection())
        return;
    const PhotoSelection selection = app_.currentPhotoSelection();
    const QString path = photoInputPath(selection.items.first(), selection.source, app_.storagelocation);
    // The state is handed to one read at a time: the next read starts after this one ended.
    segmentReadRunning_ = true;
    auto* watcher = new QFutureWatcher<ExifSegmentReport>(this);
    ExifSegmentReaderState* state = &segmentReaderState_;
    connect(watcher, &QFutureWatcher<ExifSegmentReport>::finished, this, [this, watcher, path] {
        const ExifSegmentReport report = watcher->result();
        watcher->deleteLater();
        segmentReadRunning_ = false;
        QString text = report.error.isEmpty() ? report.lines.join(QLatin1Char('\n')) : report.error;
        if (report.truncated)
            text += QStringLiteral("\n… (the listing was cut at its size limit)");
        auto* window = new TextReportWindow(QStringLiteral("EXIF Segments of %1").arg(QFileInfo(path).fileName()), text,
                                            app_.window());
        window->show();
    });
    watcher->setFuture(QtConcurrent::run([path, state] { return ReadExifDataFromPiture(path, *state); }));
}

}  // namespace pelorin
