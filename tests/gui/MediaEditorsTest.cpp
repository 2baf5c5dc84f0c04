#include "app/AudioEditorView.h"
#include "app/MediaPlayerBar.h"
#include "app/VideoEditorView.h"
#include "audio/AudioRecord.h"
#include "model/ItemPictureImage.h"
#include "ui/ArtworkWell.h"
#include "ui/WindowLook.h"
#include "video/MovieEditorModel.h"
#include "video/MovieReader.h"

#include "TestPaths.h"

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMediaPlayer>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProcess>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace pelorin;

namespace {

template <typename T>
T* child(QWidget* parent, const char* name)
{
    T* found = parent->findChild<T*>(QString::fromLatin1(name));
    if (!found)
        qFatal("no child named %s", name);
    return found;
}

QLineEdit* edit(QWidget* parent, const char* name) { return child<QLineEdit>(parent, name); }
QString labelText(QWidget* parent, const char* name) { return child<QLabel>(parent, name)->text(); }

// Types after the field's text, as a user who clicked at its end would.
void typeAtEnd(QLineEdit* field, const QString& text)
{
    field->end(false);
    QTest::keyClicks(field, text);
}

QImage swatch(QColor colour, int width = 64, int height = 48)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

// Every text differs, so a field wired to the wrong record field shows up.
IKImageItem distinctAudioRecord()
{
    IKImageItem r;
    r.filePath = QStringLiteral("/music/in/01 Harbour.mp3");
    r.fileName = QStringLiteral("01 Harbour.mp3");
    r.fileModifyDate = QDateTime(QDate(2021, 3, 4), QTime(5, 6, 7));
    r.fileSize = QStringLiteral("4.2 MB");
    r.fileType = QStringLiteral("MP3 audio");
    r.fileChannels = QStringLiteral("2");
    r.fileduratStr = QStringLiteral("00:03:25");
    r.fileBitRate = QStringLiteral("320 kbps");
    r.fileSampleRate = QStringLiteral("44100 Hz");
    r.fileTitle = QStringLiteral("Harbour Lights");
    r.fileSubTitle = QStringLiteral("Live take");
    r.fileAblumName = QStringLiteral("Night Ferries");
    r.fileArist = QStringLiteral("Mara Veld");
    r.fileAlbumArist = QStringLiteral("7");
    r.fileComposer = QStringLiteral("J. Ostrander");
    r.shootDateStr = QStringLiteral("2019-08-30");
    r.fileReleasedYear = QStringLiteral("2020");
    r.fileCopyright = QStringLiteral("(c) Veld Music");
    r.filePublisher = QStringLiteral("Quay Records");
    r.fileBand = QStringLiteral("The Moorings");
    r.fileComments = QStringLiteral("first pressing");
    r.fileLyricist = QStringLiteral("Lights on the water\nand nobody home");
    r.fileCreateDateStr = QStringLiteral("2021-01-02 03:04:05");
    // Fields the audio editor does not show, holding texts of their own.
    r.fileDirector = QStringLiteral("not shown: director");
    r.fileDescription = QStringLiteral("not shown: description");
    r.fileKeyWords = QStringLiteral("not shown: keywords");
    return r;
}

IKImageItem distinctMovieRecord()
{
    IKImageItem r;
    r.filePath = QStringLiteral("/video/in/pier.mov");
    r.fileName = QStringLiteral("pier.mov");
    r.fileType = QStringLiteral("QuickTime movie");
    r.fileSize = QStringLiteral("12 MB");
    r.filePixWidth = 1920;
    r.filepixHeigh = 1080;
    r.fileTitle = QStringLiteral("Pier at dusk");
    r.fileAblumName = QStringLiteral("Coast reels");
    r.fileArist = QStringLiteral("Ines Hald");
    r.fileDirector = QStringLiteral("Tomas Brek");
    r.fileActor = QStringLiteral("Lia Sorn");
    r.fileproducer = QStringLiteral("Harbour Films");
    r.fileCreateDateStr = QStringLiteral("2022-06-01 10:00:00");
    r.shootDateStr = QStringLiteral("2022-05-31 21:15:00");
    r.filePublisher = QStringLiteral("Quay Pictures");
    r.fileReleasedYear = QStringLiteral("1999");  // shown nowhere in this editor
    r.fileCopyright = QStringLiteral("(c) Hald");
    r.fileKeyWords = QStringLiteral("pier, dusk");
    r.fileDescription = QStringLiteral("A slow pan along the pier");
    r.fileMake = QStringLiteral("not shown: make");
    r.fileModel = QStringLiteral("not shown: model");
    r.latitudeFormat = QStringLiteral("+");
    r.filelatitude = 54.5;
    r.longtitudeFormat = QStringLiteral("-");
    r.filelongtitude = 3.25;
    r.AtitudeFormat = QStringLiteral("+");
    r.fileAtitude = 12.0;
    return r;
}

// Sends a drag over the widget and drops it; returns whether the drag was taken.
bool dragAndDrop(QWidget* target, const QString& path)
{
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(path)});
    const QPoint at(target->width() / 2, target->height() / 2);
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(target, &enter);
    QDropEvent drop(QPointF(at), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QApplication::sendEvent(target, &drop);
    return enter.isAccepted();
}

// Waits for the player to know the length of its file; skips where no backend can run here.
// (The player's error() keeps the last failure even after a good file loads, so the bar's own
// report is what tells.)
void waitForDuration(MediaPlayerBar& bar)
{
    QMediaPlayer* player = bar.player();
    if (!player->isAvailable())
        QSKIP("no Qt Multimedia backend is available on this machine");
    const auto failed = [&bar] { return labelText(&bar, "playerTimeLabel") == QLatin1String("Cannot play this file"); };
    QTRY_VERIFY_WITH_TIMEOUT(player->duration() > 0 || failed(), 20000);
    if (failed())
        QSKIP(qPrintable(QStringLiteral("the media backend cannot play here: ") + player->errorString()));
}

}  // namespace

class MediaEditorsTest : public QObject {
    Q_OBJECT

private slots:
    void audioFieldsShowTheirRecordFields();
    void audioCaptionsAreBareWithoutValues();
    void audioChangesHoldOnlyUserEdits();
    void audioCreatedDateIsNoTagEdit();

    void videoFieldsShowTheirRecordFields();
    void videoChangesHoldWhatTheUserChanged();
    void locationTypedNeedsTwoCoordinates_data();
    void locationTypedNeedsTwoCoordinates();
    void mapAreaFollowsTheLocation();

    void artworkWellTakesPicturesNotAudio();
    void droppedArtworkLastsUntilTheNextItem();
    void longPathsDoNotWidenTheEditors();

    void playerTimeTexts();
    void playerLoadsAMovie();
    void playerSurvivesUnplayableFiles();
    void playWithoutSoundDevicePlaysOrSaysSo();

};

void MediaEditorsTest::audioFieldsShowTheirRecordFields()
{
    AudioEditorView view;
    const IKImageItem r = distinctAudioRecord();
    view.showItem(r);

    const struct {
        const char* name;
        AudioField field;
        QString expected;
    } fields[] = {
        {"titlelab", AudioField::Title, r.fileTitle},
        {"subtitlelab", AudioField::Subtitle, r.fileSubTitle},
        {"abulmlab", AudioField::Album, r.fileAblumName},
        {"artistlab", AudioField::Artist, r.fileArist},
        {"ablumAristlab", AudioField::TrackNumber, r.fileAlbumArist},
        {"composerlab", AudioField::Composer, r.fileComposer},
        {"recordDatelab", AudioField::RecordDate, r.shootDateStr},
        {"releaseYearlab", AudioField::Year, r.fileReleasedYear},
        {"copyrightlab", AudioField::Copyright, r.fileCopyright},
        {"publishlab", AudioField::Publisher, r.filePublisher},
        {"bandlab", AudioField::Band, r.fileBand},
        {"commentslab", AudioField::Comments, r.fileComments},
    };
    for (const auto& f : fields)
        QCOMPARE(edit(&view, f.name)->text(), f.expected);
    QCOMPARE(child<QPlainTextEdit>(&view, "lyricslab")->toPlainText(), r.fileLyricist);
    QCOMPARE(edit(&view, "createdDatelab")->text(), r.fileCreateDateStr);
    QVERIFY(view.changes().isEmpty());  // showing a song is no change
    QCOMPARE(labelText(&view, "audioCreateDatelab"), QStringLiteral("Created Date: 2021-01-02 03:04:05"));
    QCOMPARE(view.itemPath(), r.filePath);

    QCOMPARE(labelText(&view, "audioFileNameLabel"), QStringLiteral("File Name: 01 Harbour.mp3"));
    QCOMPARE(labelText(&view, "audioModifiedDateLabel"), QStringLiteral("Modified Date: 2021-03-04 05:06:07"));
    QCOMPARE(labelText(&view, "audioFileSizeLabel"), QStringLiteral("File Size: 4.2 MB"));
    QCOMPARE(labelText(&view, "audioKindLabel"), QStringLiteral("Kind: MP3 audio"));
    QCOMPARE(labelText(&view, "audioChannelsLabel"), QStringLiteral("Channels: 2"));
    QCOMPARE(labelText(&view, "audioDurationLabel"), QStringLiteral("Duration: 00:03:25"));
    QCOMPARE(labelText(&view, "audioBitrateLabel"), QStringLiteral("Bitrate: 320 kbps"));
    QCOMPARE(labelText(&view, "audioSampleRateLabel"), QStringLiteral("Sample Rate: 44100 Hz"));
    auto* location = child<QLabel>(&view, "audioLocationLabel");
    QVERIFY(location->text().startsWith(QStringLiteral("Location: ")));
    QCOMPARE(location->toolTip(), r.filePath);
}

void MediaEditorsTest::audioCaptionsAreBareWithoutValues()
{
    AudioEditorView view;
    view.showItem(distinctAudioRecord());
    IKImageItem empty;
    empty.fileType.clear();
    view.showItem(empty);  // a second item must not keep the first one's texts

    // Every information line is back to its bare caption: none still shows a value of the first.
    for (const char* name : {"audioFileNameLabel", "audioModifiedDateLabel", "audioFileSizeLabel",
                             "audioLocationLabel", "audioKindLabel", "audioChannelsLabel",
                             "audioDurationLabel", "audioBitrateLabel", "audioSampleRateLabel",
                             "audioCreateDatelab"})
        QVERIFY2(labelText(&view, name).endsWith(QLatin1Char(':')), qPrintable(labelText(&view, name)));
    for (const AudioFieldRow& row : audioFieldRows()) {
        if (row.field == AudioField::Lyrics)
            QVERIFY(child<QPlainTextEdit>(&view, row.editorName)->toPlainText().isEmpty());
        else
            QVERIFY(edit(&view, row.editorName)->text().isEmpty());
    }
    QVERIFY(edit(&view, "createdDatelab")->text().isEmpty());
    QVERIFY(view.changes().isEmpty());
    QVERIFY(!view.artworkWell()->hasPicture());
}

void MediaEditorsTest::audioChangesHoldOnlyUserEdits()
{
    AudioEditorView view;
    QSignalSpy started(&view, &AudioEditorView::editingStarted);
    view.showItem(distinctAudioRecord());
    QCOMPARE(started.count(), 0);

    typeAtEnd(edit(&view, "ablumAristlab"), QStringLiteral("2"));
    typeAtEnd(edit(&view, "titlelab"), QStringLiteral("!"));
    QCOMPARE(started.count(), 1);  // once per group
    QCOMPARE(started.at(0).at(0).toString(), QStringLiteral("basic"));
    const QMap<AudioField, QString> typed = {{AudioField::Title, QStringLiteral("Harbour Lights!")},
                                             {AudioField::TrackNumber, QStringLiteral("72")}};
    QCOMPARE(view.changes().fields, typed);

    // The multi-line field belongs to the second group.
    QTest::keyClicks(child<QPlainTextEdit>(&view, "lyricslab"), QStringLiteral("x"));
    QCOMPARE(started.count(), 2);
    QCOMPARE(started.at(1).at(0).toString(), QStringLiteral("camera"));
    QVERIFY(view.changes().fields.contains(AudioField::Lyrics));

    // A new item starts clean, and filling it is no edit; a text typed back is no change.
    view.showItem(distinctAudioRecord());
    QVERIFY(view.changes().isEmpty());
    QTest::keyClicks(edit(&view, "bandlab"), QStringLiteral("s"));
    QCOMPARE(view.changes().fields.keys(), QList<AudioField>{AudioField::Band});
    QTest::keyClick(edit(&view, "bandlab"), Qt::Key_Backspace);
    QVERIFY(view.changes().isEmpty());
    QCOMPARE(started.count(), 3);
}

void MediaEditorsTest::audioCreatedDateIsNoTagEdit()
{
    AudioEditorView view;
    QSignalSpy started(&view, &AudioEditorView::editingStarted);
    view.showItem(distinctAudioRecord());
    QLineEdit* created = edit(&view, "createdDatelab");
    created->selectAll();
    QTest::keyClicks(created, QStringLiteral("2020-02-02 02:02:02"));
    QCOMPARE(view.changes().createdDate, std::optional<QString>(QStringLiteral("2020-02-02 02:02:02")));
    QVERIFY(view.changes().fields.isEmpty());
    QCOMPARE(started.count(), 0);
}

void MediaEditorsTest::videoFieldsShowTheirRecordFields()
{
    VideoEditorView view;
    const IKImageItem r = distinctMovieRecord();
    view.showItem(r);

    const struct {
        const char* name;
        QString expected;
    } fields[] = {
        {"mediaTitle", r.fileTitle},
        {"mediaAlumArtis", r.fileAblumName},
        {"mediaArtist", r.fileArist},
        {"mediaMake", r.fileDirector},
        {"mediaModel", r.fileActor},
        {"mediaProducer", r.fileproducer},
        {"mediaCreatedDate", r.fileCreateDateStr},
        {"mediaShootDate", r.shootDateStr},
        {"mediaReleaseYear", r.filePublisher},
        {"mediaCopyright", r.fileCopyright},
        {"mediakeywords", r.fileKeyWords},
        {"mediaSoftware", r.fileDescription},
        {"mediaLatitude", QStringLiteral("54.500000")},
        {"mediaLongtitude", QStringLiteral("-3.250000")},
        {"mediaAatitude", QStringLiteral("12.000000")},
    };
    for (const auto& f : fields)
        QCOMPARE(edit(&view, f.name)->text(), f.expected);
    QVERIFY(view.changes().isEmpty());
    QCOMPARE(view.itemPath(), r.filePath);

    // The information lines show the record's facts; the path, shortened to fit, is whole in
    // its tooltip.
    view.show();
    QApplication::processEvents();
    QStringList shown;
    QString locationTip;
    for (QLabel* label : view.findChildren<QLabel*>()) {
        if (!label->objectName().startsWith(QStringLiteral("videoInfo")))
            continue;
        shown << label->text();
        if (label->text().startsWith(QStringLiteral("Location: ")))
            locationTip = label->toolTip();
    }
    for (const char* line : {"File Name: pier.mov", "Record Date: 2022-05-31 21:15:00", "File Dimensions: 1920 x 1080",
                             "File Size: 12 MB", "Kind: QuickTime movie", "Created Date: 2022-06-01 10:00:00"})
        QVERIFY2(shown.contains(QString::fromLatin1(line)), qPrintable(shown.join(QLatin1Char('|'))));
    QCOMPARE(locationTip, r.filePath);
}

void MediaEditorsTest::videoChangesHoldWhatTheUserChanged()
{
    VideoEditorView view;
    view.showItem(distinctMovieRecord());
    QVERIFY(view.changes().isEmpty());

    // Each line changes the field it shows; an emptied text is removed, a text typed back is
    // no change, and any coordinate brings the whole location.
    typeAtEnd(edit(&view, "mediaModel"), QStringLiteral("z"));
    typeAtEnd(edit(&view, "mediaReleaseYear"), QStringLiteral("z"));
    edit(&view, "mediaTitle")->selectAll();
    QTest::keyClick(edit(&view, "mediaTitle"), Qt::Key_Delete);
    typeAtEnd(edit(&view, "mediaCopyright"), QStringLiteral("z"));
    QTest::keyClick(edit(&view, "mediaCopyright"), Qt::Key_Backspace);
    typeAtEnd(edit(&view, "mediaAatitude"), QStringLiteral("5"));
    MovieChanges expected;
    expected.texts = {{MovieField::Performer, QStringLiteral("Lia Sornz")},
                      {MovieField::Publisher, QStringLiteral("Quay Picturesz")},
                      {MovieField::Title, std::nullopt}};
    expected.location = MovieLocationText{QStringLiteral("54.500000"), QStringLiteral("-3.250000"),
                                          QStringLiteral("12.0000005")};
    QVERIFY(view.changes() == expected);

    typeAtEnd(edit(&view, "mediaShootDate"), QStringLiteral("1"));
    QCOMPARE(view.changes().recordingDate.value_or(QString()), QStringLiteral("2022-05-31 21:15:001"));
    QVERIFY(!view.changes().createdDate);

    view.showItem(distinctMovieRecord());
    QVERIFY(view.changes().isEmpty());
}

void MediaEditorsTest::locationTypedNeedsTwoCoordinates_data()
{
    QTest::addColumn<QString>("latitude");
    QTest::addColumn<QString>("longitude");
    QTest::addColumn<bool>("fires");
    QTest::addColumn<double>("expectedLatitude");
    QTest::addColumn<double>("expectedLongitude");
    QTest::newRow("both") << "48.8582" << "-2.2945" << true << 48.8582 << -2.2945;
    QTest::newRow("spaces around") << " -33.5 " << "151" << true << -33.5 << 151.0;
    QTest::newRow("no longitude") << "48.8582" << "" << false << 0.0 << 0.0;
    QTest::newRow("words") << "north" << "2.29" << false << 0.0 << 0.0;
    QTest::newRow("latitude past the pole") << "91" << "2.29" << false << 0.0 << 0.0;
    QTest::newRow("longitude past the date line") << "10" << "-180.5" << false << 0.0 << 0.0;
    QTest::newRow("not a number") << "nan" << "2" << false << 0.0 << 0.0;
}

void MediaEditorsTest::locationTypedNeedsTwoCoordinates()
{
    QFETCH(QString, latitude);
    QFETCH(QString, longitude);
    QFETCH(bool, fires);

    VideoEditorView view;
    IKImageItem record = distinctMovieRecord();
    record.latitudeFormat.clear();  // no location yet: both fields empty
    view.showItem(record);
    QSignalSpy typed(&view, &VideoEditorView::locationTyped);
    // Filled but for the latitude's last character, which the user then types: one edit that
    // leaves exactly these texts.
    QLineEdit* latitudeField = edit(&view, "mediaLatitude");
    latitudeField->setText(latitude.chopped(1));
    edit(&view, "mediaLongtitude")->setText(longitude);
    QCOMPARE(typed.count(), 0);
    typeAtEnd(latitudeField, latitude.right(1));
    QCOMPARE(latitudeField->text(), latitude);
    if (!fires) {
        QCOMPARE(typed.count(), 0);
        return;
    }
    QCOMPARE(typed.count(), 1);
    QFETCH(double, expectedLatitude);
    QFETCH(double, expectedLongitude);
    QCOMPARE(typed.last().at(0).toDouble(), expectedLatitude);
    QCOMPARE(typed.last().at(1).toDouble(), expectedLongitude);

    // Every further edit that still gives two numbers reports again.
    const qsizetype before = typed.count();
    edit(&view, "mediaLatitude")->selectAll();
    QTest::keyClicks(edit(&view, "mediaLatitude"), QStringLiteral("12"));
    QCOMPARE(typed.count(), before + 2);
    QCOMPARE(typed.last().at(0).toDouble(), 12.0);
}

void MediaEditorsTest::mapAreaFollowsTheLocation()
{
    VideoEditorView view;
    view.resize(440, 900);
    view.show();
    QWidget* map = view.mapArea();
    QCOMPARE(map->objectName(), QStringLiteral("mediaMapArea"));
    QVERIFY(map->minimumHeight() >= 260);

    view.showItem(distinctMovieRecord());
    QVERIFY(map->isVisible());

    IKImageItem noLocation = distinctMovieRecord();
    noLocation.latitudeFormat.clear();
    view.showItem(noLocation);
    QVERIFY(!map->isVisible());
    QTest::keyClicks(edit(&view, "mediaLatitude"), QStringLiteral("10"));
    QVERIFY(!map->isVisible());  // one number is no place yet
    QTest::keyClicks(edit(&view, "mediaLongtitude"), QStringLiteral("20"));
    QVERIFY(map->isVisible());
}

void MediaEditorsTest::artworkWellTakesPicturesNotAudio()
{
    ArtworkWell well(QStringLiteral("well"));
    well.resize(140, 140);
    QSignalSpy dropped(&well, &ArtworkWell::artworkDropped);

    const QString picture = test::dataPath(QStringLiteral("et-Apple.jpg"));
    QVERIFY(dragAndDrop(&well, picture));
    QCOMPARE(dropped.count(), 1);
    QCOMPARE(dropped.at(0).at(0).toString(), picture);

    QVERIFY(!dragAndDrop(&well, test::dataPath(QStringLiteral("et-MP3.mp3"))));
    QCOMPARE(dropped.count(), 1);

    // The well only reports; the picture shows once it is handed back.
    QVERIFY(!well.hasPicture());
    QCOMPARE(well.text(), QStringLiteral("Drop artwork here"));
    well.setPicture(swatch(Qt::red));
    QVERIFY(well.hasPicture());
    QVERIFY(well.text().isEmpty());
    well.setPicture(QImage());
    QVERIFY(!well.hasPicture());
    well.setPicture(swatch(Qt::red));
    well.showPlaceholder();
    QVERIFY(!well.hasPicture());
    QCOMPARE(well.text(), QStringLiteral("Drop artwork here"));

    // Drawn: a wide picture keeps its shape inside the well, the placeholder shows its picture.
    well.setPicture(swatch(Qt::red, 200, 50));
    const QImage drawn = well.grab().toImage();
    QCOMPARE(drawn.pixelColor(70, 70), QColor(Qt::red));
    QVERIFY(drawn.pixelColor(70, 30) != QColor(Qt::red));
    well.showPlaceholder();
    const QImage empty = well.grab().toImage();
    int light = 0;
    for (int y = 0; y < empty.height(); ++y)
        for (int x = 0; x < empty.width(); ++x)
            light += empty.pixelColor(x, y).lightness() > 180;
    QVERIFY2(light > 100, "the placeholder picture was not drawn");

    // The editors pass the well's drops on.
    AudioEditorView audio;
    QSignalSpy audioDropped(&audio, &AudioEditorView::artworkDropped);
    QVERIFY(dragAndDrop(child<QWidget>(&audio, "audioArtImageView"), picture));
    QCOMPARE(audioDropped.count(), 1);
    VideoEditorView video;
    QSignalSpy videoDropped(&video, &VideoEditorView::artworkDropped);
    const QString movie = test::dataPath(QStringLiteral("ft-imovie.mp4"));
    QVERIFY(dragAndDrop(child<QWidget>(&video, "videoArtImageView"), movie));
    QCOMPARE(videoDropped.count(), 1);
    QCOMPARE(videoDropped.at(0).at(0).toString(), movie);

    // A song whose container cannot hold artwork takes no drop, and its well says why, in the
    // words `tags set --artwork` uses for it.
    audio.showItem(readAudioRecord(test::dataPath(QStringLiteral("atl-lpcm.caf"))));
    QVERIFY(!dragAndDrop(child<QWidget>(&audio, "audioArtImageView"), picture));
    QCOMPARE(audioDropped.count(), 1);
    QCOMPARE(audio.artworkWell()->toolTip(), QStringLiteral("CAF files cannot hold artwork here"));
    audio.showItem(readAudioRecord(test::dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3"))));
    QVERIFY(dragAndDrop(child<QWidget>(&audio, "audioArtImageView"), picture));
    QCOMPARE(audioDropped.count(), 2);
}

void MediaEditorsTest::droppedArtworkLastsUntilTheNextItem()
{
    AudioEditorView audio;
    audio.showItem(distinctAudioRecord());
    QVERIFY(audio.droppedArtworkPath().isEmpty());
    audio.setDroppedArtwork(QStringLiteral("/pictures/missing.jpg"), QImage());  // failed to load
    QVERIFY(audio.droppedArtworkPath().isEmpty());
    QVERIFY(!audio.artworkWell()->hasPicture());
    audio.setDroppedArtwork(QStringLiteral("/pictures/cover.jpg"), swatch(Qt::blue));
    QCOMPARE(audio.droppedArtworkPath(), QStringLiteral("/pictures/cover.jpg"));
    QVERIFY(audio.artworkWell()->hasPicture());
    audio.showItem(distinctAudioRecord());
    QVERIFY(audio.droppedArtworkPath().isEmpty());
    QVERIFY(!audio.artworkWell()->hasPicture());

    // A record with artwork shows it.
    IKImageItem withArt = distinctAudioRecord();
    withArt.fileImage = itemPicture(swatch(Qt::green));
    audio.showItem(withArt);
    QVERIFY(audio.artworkWell()->hasPicture());

    VideoEditorView video;
    video.showItem(distinctMovieRecord());
    QVERIFY(!video.artworkWell()->hasPicture());
    video.setDroppedArtwork(QStringLiteral("/pictures/poster.png"), swatch(Qt::yellow));
    QCOMPARE(video.droppedArtworkPath(), QStringLiteral("/pictures/poster.png"));
    QVERIFY(video.artworkWell()->hasPicture());
    QCOMPARE(video.changes().artworkPath.value_or(QString()), QStringLiteral("/pictures/poster.png"));
    video.showItem(distinctMovieRecord());
    QVERIFY(video.droppedArtworkPath().isEmpty());
    QVERIFY(!video.artworkWell()->hasPicture());
}

void MediaEditorsTest::longPathsDoNotWidenTheEditors()
{
    const QString folder = QStringLiteral("/media/archive/") + QString(40, QLatin1Char('d')) + QLatin1Char('/')
                           + QString(60, QLatin1Char('e'));
    IKImageItem audioRecord = distinctAudioRecord();
    audioRecord.filePath = folder + QStringLiteral("/track.mp3");
    audioRecord.fileName = QString(80, QLatin1Char('n')) + QStringLiteral(".mp3");
    IKImageItem movieRecord = distinctMovieRecord();
    movieRecord.filePath = folder + QStringLiteral("/clip.mov");

    AudioEditorView audio;
    VideoEditorView video;
    audio.showItem(audioRecord);
    video.showItem(movieRecord);
    for (QFrame* view : {static_cast<QFrame*>(&audio), static_cast<QFrame*>(&video)}) {
        QVERIFY2(view->minimumSizeHint().width() <= 460, qPrintable(view->objectName()));
        view->resize(400, 420);
        view->show();
        QApplication::processEvents();
        auto* scroll = view->findChild<QScrollArea*>();
        QVERIFY(scroll);
        QVERIFY2(scroll->verticalScrollBar()->maximum() > 0, "a short editor must scroll");
        QVERIFY(scroll->widget()->width() <= scroll->viewport()->width());
    }
    auto* location = child<QLabel>(&audio, "audioLocationLabel");
    QVERIFY(location->text().contains(QChar(0x2026)));
    QVERIFY(location->text().endsWith(QStringLiteral("track.mp3")));
    QCOMPARE(location->toolTip(), audioRecord.filePath);
    auto* name = child<QLabel>(&audio, "audioFileNameLabel");
    QVERIFY(name->text().startsWith(QStringLiteral("File Name: nnn")));
    QVERIFY(name->text().size() < 90);
    QCOMPARE(name->toolTip(), QStringLiteral("File Name: ") + audioRecord.fileName);
    QVERIFY(child<QLabel>(&audio, "audioKindLabel")->toolTip().isEmpty());  // fits: no tooltip

    // Wider again, the whole line comes back.
    audio.resize(1400, 420);
    QApplication::processEvents();
    QCOMPARE(name->text(), QStringLiteral("File Name: ") + audioRecord.fileName);
    QCOMPARE(location->text(), QStringLiteral("Location: ") + audioRecord.filePath);
}

void MediaEditorsTest::playerTimeTexts()
{
    QCOMPARE(MediaPlayerBar::timeText(0), QStringLiteral("0:00"));
    QCOMPARE(MediaPlayerBar::timeText(999), QStringLiteral("0:00"));
    QCOMPARE(MediaPlayerBar::timeText(61000), QStringLiteral("1:01"));
    QCOMPARE(MediaPlayerBar::timeText(599999), QStringLiteral("9:59"));
    QCOMPARE(MediaPlayerBar::timeText(3725000), QStringLiteral("62:05"));
    QCOMPARE(MediaPlayerBar::timeText(-5000), QStringLiteral("0:00"));
}

void MediaEditorsTest::playerLoadsAMovie()
{
    MediaPlayerBar bar(true);
    QVERIFY(bar.findChild<QWidget*>(QStringLiteral("theplayerView")));
    QVERIFY(!MediaPlayerBar(false).findChild<QWidget*>(QStringLiteral("theplayerView")));
    bar.resize(420, 300);
    bar.show();
    bar.load(test::dataPath(QStringLiteral("ft-imovie.mp4")), false);
    waitForDuration(bar);

    const qint64 duration = bar.player()->duration();
    QCOMPARE(bar.player()->playbackState(), QMediaPlayer::StoppedState);  // no autoplay
    auto* slider = child<QSlider>(&bar, "positionSlider");
    QCOMPARE(qint64(slider->maximum()), duration);
    QCOMPARE(labelText(&bar, "playerTimeLabel"),
             QStringLiteral("0:00 / ") + MediaPlayerBar::timeText(duration));

    // Seeking: a user's move of the slider moves the player.
    slider->setValue(int(duration / 2));
    QTRY_VERIFY_WITH_TIMEOUT(qAbs(bar.player()->position() - duration / 2) < 1000, 5000);
}

void MediaEditorsTest::playerSurvivesUnplayableFiles()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString junk = dir.filePath(QStringLiteral("junk.mp4"));
    QFile file(junk);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();

    MediaPlayerBar bar(false);
    bar.load(dir.filePath(QStringLiteral("gone.mp3")), true);
    QCOMPARE(labelText(&bar, "playerTimeLabel"), QStringLiteral("Cannot play this file"));
    QTest::mouseClick(child<QToolButton>(&bar, "playPauseButton"), Qt::LeftButton);

    if (bar.player()->isAvailable()) {
        bar.load(junk, true);
        QTRY_COMPARE_WITH_TIMEOUT(labelText(&bar, "playerTimeLabel"), QStringLiteral("Cannot play this file"), 20000);
        QTest::mouseClick(child<QToolButton>(&bar, "playPauseButton"), Qt::LeftButton);
    }

    // The next file plays as if nothing had happened.
    bar.load(test::dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3")), false);
    QVERIFY(labelText(&bar, "playerTimeLabel").contains(QStringLiteral(" / ")));
    waitForDuration(bar);
    QTRY_VERIFY(labelText(&bar, "playerTimeLabel").endsWith(MediaPlayerBar::timeText(bar.player()->duration())));
}

// This machine (and CI) has no sound device: pressing Play on a song and on a movie with sound
// (made by ffmpeg, long enough to be still playing) must neither crash nor hang; the movie plays
// its picture and the bar says why there is no sound.
void MediaEditorsTest::playWithoutSoundDevicePlaysOrSaysSo()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString movie = dir.filePath(QStringLiteral("tone.mp4"));
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                  QStringLiteral("-i"), QStringLiteral("testsrc=size=160x120:rate=15:duration=6"),
                  QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                  QStringLiteral("sine=frequency=440:duration=6"), QStringLiteral("-c:v"), QStringLiteral("mpeg4"),
                  QStringLiteral("-c:a"), QStringLiteral("aac"), movie});
    QVERIFY(ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0);

    for (const QString& path : {test::dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3")), movie}) {
        const bool isMovie = path == movie;
        MediaPlayerBar bar(isMovie);
        bar.resize(420, 300);
        bar.show();
        bar.load(path, false);
        waitForDuration(bar);
        QTest::mouseClick(child<QToolButton>(&bar, "playPauseButton"), Qt::LeftButton);
        QTest::qWait(1500);
        if (MediaPlayerBar::hasSoundDevice()) {
            QCOMPARE(bar.player()->playbackState(), QMediaPlayer::PlayingState);
        } else {
            QVERIFY2(labelText(&bar, "playerTimeLabel").contains(QStringLiteral("no sound device")),
                     qPrintable(labelText(&bar, "playerTimeLabel")));
            // A movie still shows its picture; a song cannot play at all.
            QCOMPARE(bar.player()->playbackState() == QMediaPlayer::PlayingState, isMovie);
            if (isMovie)
                QTRY_VERIFY(bar.player()->position() > 500);
        }
        QTest::mouseClick(child<QToolButton>(&bar, "playPauseButton"), Qt::LeftButton);
        QVERIFY(bar.player()->playbackState() != QMediaPlayer::PlayingState);
    }
}

int main(int argc, char** argv)
{
    // The GStreamer default lacks the codecs of the sample movies.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    applyWindowLook(app);
    MediaEditorsTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "MediaEditorsTest.moc"
