// Draws the dialogs and media editors with real sample files into PNGs, for a person to look at:
//   build/tests/gui/gui_screenshots [FOLDER]    (default: build/screenshots)
// It checks nothing; the window tests do.
#include "app/AudioEditorView.h"
#include "app/BatchDateDialog.h"
#include "app/DateDialog.h"
#include "app/GpsDialog.h"
#include "app/MediaPlayerBar.h"
#include "app/PhotoEditorPanel.h"
#include "app/PreferencesDialog.h"
#include "app/VideoEditorView.h"
#include "audio/AudioRecord.h"
#include "photo/PhotoInspection.h"
#include "ui/WindowLook.h"
#include "video/MovieReader.h"

#include "TestPaths.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QMediaPlayer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

#include <cstdio>

using namespace pelorin;

namespace {

QString folder;
int failures = 0;

void save(QWidget* widget, const char* name)
{
    widget->show();
    QApplication::processEvents();
    const QString path = folder + QLatin1Char('/') + QLatin1String(name);
    if (!widget->grab().save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        ++failures;
    }
}

void wait(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

void dialogs()
{
    const QString photoPath = test::dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    const QImage photo(photoPath);
    const PhotoDateTexts dates = readPhotoDateTexts(photoPath);

    PreferencesDialog preferences;
    PreferenceValues values;
    values.storagePath = QStringLiteral("/home/ana/Videos/com.Quorvane.mediametadata");
    values.fontName = QStringLiteral("DejaVu Sans");
    values.fontSize = 14;
    preferences.showValues(values, QColor(255, 149, 0));
    save(&preferences, "preferences.png");

    DateDialog date;
    date.setPhoto(photo, QFileInfo(photoPath).fileName());
    date.setDates(dates);
    save(&date, "date-dialog.png");

    BatchDateDialog batch;
    batch.setReferencePhoto(photoPath, photo, dates);
    if (auto* hours = batch.findChild<QLineEdit*>(QStringLiteral("hourVaulab")))
        hours->setText(QStringLiteral("2"));
    if (auto* add = batch.findChild<QPushButton*>(QStringLiteral("AddTimeBtn")))
        add->click();
    save(&batch, "batch-date-dialog.png");

    GpsDialog gps;
    gps.setInput({"36.4555", "-116.8662", "-58", "2019:05:06", "14:08:09"});
    gps.showPreviewCoordinate(36.4555, -116.8662);
    save(&gps, "gps-dialog.png");

    PhotoEditorPanel panel;
    panel.setTexts(inspectPhoto(photoPath).fill.fields);
    panel.setPreview(photo);
    panel.resize(420, 1000);
    save(&panel, "photo-editor-panel.png");
}

void editors()
{
    AudioEditorView audio;
    audio.showItem(readAudioRecord(test::dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3"))));
    audio.resize(420, 980);
    save(&audio, "audio-editor.png");

    VideoEditorView video;
    video.showItem(readMovieFile(test::dataPath(QStringLiteral("ft-MacBook_keys.mov"))).item);
    video.resize(440, 1160);
    video.show();
    if (video.playerBar()->player()->isAvailable())
        wait(1500);  // lets the first frame and the duration arrive
    save(&video, "video-editor.png");

    // Scrolled to its end, where the map goes.
    QScrollBar* bar = video.findChild<QScrollArea*>()->verticalScrollBar();
    bar->setValue(bar->maximum());
    save(&video, "video-editor-end.png");
}

}  // namespace

int main(int argc, char** argv)
{
    // The GStreamer default lacks the codecs of the sample movies.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    applyWindowLook(app);
    folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(PELORIN_SCREENSHOT_DIR);
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "cannot make %s\n", qPrintable(folder));
        return 1;
    }
    dialogs();
    editors();
    std::printf("%s\n", qPrintable(folder));
    return failures == 0 ? 0 : 1;
}
