#include "app/BatchDateDialog.h"
#include "app/DateDialog.h"
#include "app/GpsDialog.h"
#include "app/PhotoEditorPanel.h"
#include "app/PreferencesDialog.h"
#include "photo/PhotoProperties.h"
#include "ui/HoverToolButton.h"

#include "TestPaths.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QtTest>

#include <cmath>
#include <limits>

using namespace pelorin;

namespace {

const QString kPhoto = QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg");

template <typename T>
T* child(QWidget* parent, const char* name)
{
    T* found = parent->findChild<T*>(QString::fromLatin1(name));
    if (!found)
        qFatal("no child named %s", name);
    return found;
}

QLineEdit* edit(QWidget* parent, const char* name)
{
    return child<QLineEdit>(parent, name);
}

QPushButton* push(QWidget* parent, const char* name)
{
    return child<QPushButton>(parent, name);
}

PreferenceValues sampleValues()
{
    PreferenceValues v;
    v.storagePath = QStringLiteral("/home/ana/Videos/com.Quorvane.mediametadata");
    v.fontName = QStringLiteral("DejaVu Sans");
    v.fontSize = 18;
    v.cornerTitle = stampCornerTitles().at(3);
    v.cornerIndex = 3;
    v.dateFormatTitle = stampDateFormatTitles().at(1);
    v.dateFormatIndex = 1;
    return v;
}

PhotoEditorTexts distinctTexts()
{
    // Every text differs, so a field wired to the wrong member shows up.
    PhotoEditorTexts t;
    t.title = "Furnace Creek";
    t.artist = "Ana Ruiz";
    t.imageDescription = "Evening light";
    t.copyright = "(c) 2019 Ana Ruiz";
    t.comments = "tripod";
    t.keywords = "desert, inn";
    t.cameraMake = "Canon";
    t.cameraModel = "EOS 5D";
    t.cameraDate = "2019:05:06 07:08:09";
    t.gpsLatitude = "36.4555";
    t.gpsLongitude = "-116.8662";
    t.gpsAltitude = "-58";
    t.gpsDate = "2019:05:06";
    t.gpsTime = "14:08:09";
    t.fileName = "furnace.jpg";
    t.fileSize = "38 KB (38821 bytes)";
    t.imageSize = "400 x 300";
    t.creationDate = "2019:05:07 10:00:00";
    t.dpi = "72 x 72";
    t.modificationDate = "2019:05:06 07:08:09";
    return t;
}

}  // namespace

class DialogsTest : public QObject {
    Q_OBJECT

private slots:
    void spanFieldsReadLeadingDigits_data();
    void spanFieldsReadLeadingDigits();
    void spanFieldsMapToTheirUnits();
    void addAndSubtractActAsAPair();
    void modeSummaryFollowsFilling_data();
    void modeSummaryFollowsFilling();
    void referencePhotoFillsAndClears();
    void batchCancelForgetsEverything();

    void preferencesReportSelectedTitles();
    void preferencesFolderChangesOnlyAfterAChoice();
    void preferencesButtons();

    void dateDialogReturnsTypedDates();

    void gpsPlaceholdersAreNoValues();
    void gpsPreviewCoordinateText();

    void editorChangesAreTheTypedFields();
    void editorEditingStartsOncePerGroup();
    void editorButtonsEmit();
    void editorLongTextsStayInsidePanel();

};

void DialogsTest::spanFieldsReadLeadingDigits_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<qint64>("count");
    QTest::newRow("plain") << "12" << qint64(12);
    QTest::newRow("trailing letters") << "12abc" << qint64(12);
    QTest::newRow("letters only") << "abc" << qint64(0);
    QTest::newRow("empty") << "" << qint64(0);
    QTest::newRow("negative") << "-3" << qint64(-3);
    QTest::newRow("lone minus") << "-" << qint64(0);
    QTest::newRow("leading blank") << " 7" << qint64(7);
    QTest::newRow("minus after digits") << "4-2" << qint64(4);
    QTest::newRow("decimal") << "1.5" << qint64(1);
    QTest::newRow("huge saturates") << "99999999999999999999999" << std::numeric_limits<qint64>::max();
    QTest::newRow("huge negative") << "-99999999999999999999999" << -std::numeric_limits<qint64>::max();
}

void DialogsTest::spanFieldsReadLeadingDigits()
{
    QFETCH(QString, typed);
    QFETCH(qint64, count);
    BatchDateDialog dialog;
    edit(&dialog, "dayVaulab")->setText(typed);
    QCOMPARE(qint64(dialog.request().span.days), count);
}

void DialogsTest::spanFieldsMapToTheirUnits()
{
    BatchDateDialog dialog;
    edit(&dialog, "yearVaulab")->setText("1");
    edit(&dialog, "monthVaulab")->setText("2");
    edit(&dialog, "dayVaulab")->setText("3");
    edit(&dialog, "hourVaulab")->setText("4");
    edit(&dialog, "minuVaulab")->setText("5");
    edit(&dialog, "secVaulab")->setText("6");
    const DateSpan span = dialog.request().span;
    QCOMPARE(span.years, std::int64_t{1});
    QCOMPARE(span.months, std::int64_t{2});
    QCOMPARE(span.days, std::int64_t{3});
    QCOMPARE(span.hours, std::int64_t{4});
    QCOMPARE(span.minutes, std::int64_t{5});
    QCOMPARE(span.seconds, std::int64_t{6});
}

void DialogsTest::addAndSubtractActAsAPair()
{
    BatchDateDialog dialog;
    QPushButton* add = push(&dialog, "AddTimeBtn");
    QPushButton* subtract = push(&dialog, "RemoveTimeBtn");
    QCOMPARE(add->text(), QStringLiteral("Add Time"));
    QCOMPARE(subtract->text(), QStringLiteral("Subtract Time"));
    QVERIFY(!add->isChecked() && !subtract->isChecked());
    QVERIFY(!dialog.request().add);

    add->click();
    QVERIFY(add->isChecked() && !subtract->isChecked());
    QVERIFY(dialog.request().add);

    subtract->click();
    QVERIFY(!add->isChecked() && subtract->isChecked());
    QVERIFY(!dialog.request().add);

    // Unchecking one leaves both off rather than checking its partner.
    subtract->click();
    QVERIFY(!add->isChecked() && !subtract->isChecked());
    add->click();
    add->click();
    QVERIFY(!add->isChecked() && !subtract->isChecked());
}

void DialogsTest::modeSummaryFollowsFilling_data()
{
    QTest::addColumn<bool>("reference");
    QTest::addColumn<QString>("fixedDate");
    QTest::addColumn<QString>("summary");
    const QString byReference = QStringLiteral("Each photo moves by the reference photo's change.");
    const QString toDate = QStringLiteral("Each photo gets the date above.");
    const QString bySpan = QStringLiteral("Each photo moves by the span.");
    QTest::newRow("nothing") << false << "" << bySpan;
    QTest::newRow("fixed date") << false << "2020:01:02 03:04:05" << toDate;
    QTest::newRow("blank fixed date") << false << "   " << bySpan;
    QTest::newRow("reference only") << true << "" << byReference;
    QTest::newRow("reference wins over date") << true << "2020:01:02 03:04:05" << byReference;
}

void DialogsTest::modeSummaryFollowsFilling()
{
    QFETCH(bool, reference);
    QFETCH(QString, fixedDate);
    QFETCH(QString, summary);
    BatchDateDialog dialog;
    dialog.show();
    edit(&dialog, "yearVaulab")->setText("2");  // a span never outranks the other modes
    if (reference)
        dialog.setReferencePhoto("/photos/a.jpg", QImage(), {"2019:01:01 00:00:00", "2019:01:01 00:00:00"});
    // Typed, so the summary must follow the edits as they happen.
    QTest::keyClicks(edit(&dialog, "mutSetDatelab"), fixedDate);
    QCOMPARE(child<QLabel>(&dialog, "modeSummary")->text(), summary);
}

void DialogsTest::referencePhotoFillsAndClears()
{
    BatchDateDialog dialog;
    dialog.show();
    QLabel* preview = child<QLabel>(&dialog, "dateImageview");
    QPushButton* clear = push(&dialog, "clearReferenceButton");
    QVERIFY(!preview->isVisible());
    QVERIFY(!clear->isVisible());

    QImage thumbnail(40, 30, QImage::Format_RGB32);
    thumbnail.fill(Qt::darkGreen);
    dialog.setReferencePhoto("/photos/ref.jpg", thumbnail, {"2019:05:06 07:08:09", "2019:05:06 07:08:10"});
    QVERIFY(preview->isVisible());
    QVERIFY(clear->isVisible());
    QVERIFY(edit(&dialog, "beforeorignalDatelab")->isReadOnly());
    QVERIFY(edit(&dialog, "beforediginalDatelab")->isReadOnly());
    QVERIFY(!edit(&dialog, "afterorignalDatelab")->isReadOnly());

    edit(&dialog, "afterorignalDatelab")->setText("2019:05:07 07:08:09");
    push(&dialog, "AddTimeBtn")->click();
    BatchDateRequest r = dialog.request();
    QCOMPARE(r.referencePhoto, QStringLiteral("/photos/ref.jpg"));
    QCOMPARE(r.beforeOriginal, QStringLiteral("2019:05:06 07:08:09"));
    QCOMPARE(r.afterOriginal, QStringLiteral("2019:05:07 07:08:09"));
    QCOMPARE(r.beforeDigitized, QStringLiteral("2019:05:06 07:08:10"));
    QCOMPARE(r.afterDigitized, QStringLiteral("2019:05:06 07:08:10"));

    // clearFields keeps the reference and the direction.
    edit(&dialog, "mutSetDatelab")->setText("2020:01:01 00:00:00");
    edit(&dialog, "hourVaulab")->setText("5");
    dialog.clearFields();
    r = dialog.request();
    QCOMPARE(r.referencePhoto, QStringLiteral("/photos/ref.jpg"));
    QVERIFY(r.add);
    QVERIFY(r.fixedDate.isEmpty() && r.beforeOriginal.isEmpty() && r.afterOriginal.isEmpty() &&
            r.beforeDigitized.isEmpty() && r.afterDigitized.isEmpty());
    QCOMPARE(r.span.hours, std::int64_t{0});

    clear->click();
    QVERIFY(dialog.request().referencePhoto.isEmpty());
    QVERIFY(!preview->isVisible());
    QCOMPARE(child<QLabel>(&dialog, "modeSummary")->text(), QStringLiteral("Each photo moves by the span."));
}

void DialogsTest::batchCancelForgetsEverything()
{
    BatchDateDialog dialog;
    QSignalSpy saves(&dialog, &BatchDateDialog::saveRequested);
    dialog.show();
    dialog.setReferencePhoto("/photos/ref.jpg", QImage(), {"2019:05:06 07:08:09", "2019:05:06 07:08:09"});
    edit(&dialog, "mutSetDatelab")->setText("2020:01:01 00:00:00");
    edit(&dialog, "secVaulab")->setText("30");
    push(&dialog, "mutiDateCancelButton")->click();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    const BatchDateRequest r = dialog.request();
    QVERIFY(r.referencePhoto.isEmpty());
    QVERIFY(r.fixedDate.isEmpty() && r.beforeOriginal.isEmpty() && r.afterOriginal.isEmpty());
    QCOMPARE(r.span.seconds, std::int64_t{0});
    QCOMPARE(saves.count(), 0);

    QSignalSpy chooses(&dialog, &BatchDateDialog::choosePhotoRequested);
    QSignalSpy fileDates(&dialog, &BatchDateDialog::saveFileDatesRequested);
    push(&dialog, "dateChoosePhotoBtn")->click();
    push(&dialog, "mutiCreatedDateSaveButton")->click();
    push(&dialog, "mutiDateSaveButton")->click();
    QCOMPARE(chooses.count(), 1);
    QCOMPARE(fileDates.count(), 1);
    QCOMPARE(saves.count(), 1);
}

void DialogsTest::preferencesReportSelectedTitles()
{
    PreferencesDialog dialog;
    dialog.showValues(sampleValues(), QColor(255, 128, 0));
    PreferenceValues v = dialog.values();
    QCOMPARE(v.cornerTitle, stampCornerTitles().at(3));
    QCOMPARE(v.cornerIndex, 3);
    QCOMPARE(v.dateFormatTitle, stampDateFormatTitles().at(1));
    QCOMPARE(v.dateFormatIndex, 1);
    QCOMPARE(v.fontName, QStringLiteral("DejaVu Sans"));
    QCOMPARE(v.fontSize, 18);
    QCOMPARE(child<QLabel>(&dialog, "fontLabel")->text(), QStringLiteral("DejaVu Sans 18"));
    QCOMPARE(dialog.stampColor(), QColor(255, 128, 0));

    // The user's pick is reported by its own title, not the one shown at first.
    child<QComboBox>(&dialog, "cornerPopup")->setCurrentIndex(0);
    child<QComboBox>(&dialog, "dateFormatPopup")->setCurrentIndex(2);
    v = dialog.values();
    QCOMPARE(v.cornerTitle, stampCornerTitles().at(0));
    QCOMPARE(v.cornerIndex, 0);
    QCOMPARE(v.dateFormatTitle, stampDateFormatTitles().at(2));
    QCOMPARE(v.dateFormatIndex, 2);

    // A stored title in another letter case still selects its item.
    PreferenceValues firstStart = sampleValues();
    firstStart.cornerTitle = QStringLiteral("lower left corner");
    firstStart.cornerIndex = 0;
    dialog.showValues(firstStart, Qt::white);
    QCOMPARE(dialog.values().cornerTitle, QStringLiteral("Lower left corner"));
}

void DialogsTest::preferencesFolderChangesOnlyAfterAChoice()
{
    PreferencesDialog dialog;
    int asked = 0;
    QWidget* askedOver = nullptr;
    QString answer;
    dialog.chooseFolder = [&](QWidget* parent) {
        ++asked;
        askedOver = parent;
        return answer;
    };
    const QString longPath = QStringLiteral("/media/ana/External Drive/Projects/2019/Holidays/"
                                            "Death Valley/Exports/com.Quorvane.mediametadata");
    PreferenceValues v = sampleValues();
    v.storagePath = longPath;
    dialog.showValues(v, Qt::red);
    dialog.show();
    QApplication::processEvents();
    QLabel* label = child<QLabel>(&dialog, "storageLocationLabel");
    QCOMPARE(label->toolTip(), longPath);
    QVERIFY2(label->text() != longPath && label->text().contains(QChar(0x2026)),
             qPrintable(label->text()));
    QCOMPARE(dialog.values().storagePath, longPath);

    QPushButton* choose = push(&dialog, "chooseStorageButton");
    choose->click();  // cancelled
    QCOMPARE(asked, 1);
    QCOMPARE(askedOver, static_cast<QWidget*>(&dialog));
    QCOMPARE(dialog.values().storagePath, longPath);

    answer = QStringLiteral("/tmp/out");
    QCOMPARE(dialog.values().storagePath, longPath);
    choose->click();
    QCOMPARE(dialog.values().storagePath, QStringLiteral("/tmp/out"));
    QCOMPARE(label->text(), QStringLiteral("/tmp/out"));
    QCOMPARE(label->toolTip(), QStringLiteral("/tmp/out"));
}

void DialogsTest::preferencesButtons()
{
    PreferencesDialog dialog;
    QSignalSpy saves(&dialog, &PreferencesDialog::saveRequested);
    dialog.show();
    push(&dialog, "cancelPreferencesButton")->click();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(saves.count(), 0);
    dialog.show();
    push(&dialog, "savePreferencesButton")->click();
    QCOMPARE(saves.count(), 1);
}

void DialogsTest::dateDialogReturnsTypedDates()
{
    DateDialog dialog;
    QSignalSpy saves(&dialog, &DateDialog::saveRequested);
    QSignalSpy fileDates(&dialog, &DateDialog::saveFileDatesRequested);
    dialog.setDates({"2019:05:06 07:08:09", "2019:05:06 07:08:10"});
    QCOMPARE(dialog.edit().original, QStringLiteral("2019:05:06 07:08:09"));
    QCOMPARE(dialog.edit().digitized, QStringLiteral("2019:05:06 07:08:10"));
    edit(&dialog, "diginalDatelab")->setText("2001-02-03 04:05:06");
    QCOMPARE(dialog.edit().digitized, QStringLiteral("2001-02-03 04:05:06"));
    QCOMPARE(dialog.edit().original, QStringLiteral("2019:05:06 07:08:09"));

    dialog.show();
    QLabel* note = child<QLabel>(&dialog, "fileDatesNote");
    QVERIFY(!note->isVisible());
    dialog.setDates({"2019:05:06 07:08:09", "2019:05:06 07:08:09", true});
    QVERIFY(note->isVisible());
    dialog.setDates({"2019:05:06 07:08:09", "2019:05:06 07:08:10"});
    QVERIFY(!note->isVisible());

    push(&dialog, "createdDateSaveButton")->click();
    push(&dialog, "dateSaveButton")->click();
    QCOMPARE(fileDates.count(), 1);
    QCOMPARE(saves.count(), 1);
    QVERIFY(push(&dialog, "dateSaveButton")->isDefault());
    push(&dialog, "dateCancelButton")->click();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(saves.count(), 1);
}

void DialogsTest::gpsPlaceholdersAreNoValues()
{
    GpsDialog dialog;
    dialog.setInput({"-33.45", "-70.66", "520", "2019:05:06", "14:08:09"});
    GpsInput in = dialog.input();
    QCOMPARE(in.latitude, QStringLiteral("-33.45"));
    QCOMPARE(in.longitude, QStringLiteral("-70.66"));
    QCOMPARE(in.altitude, QStringLiteral("520"));
    QCOMPARE(in.dateStamp, QStringLiteral("2019:05:06"));
    QCOMPARE(in.timeStamp, QStringLiteral("14:08:09"));

    dialog.setNewLocationPlaceholders();
    in = dialog.input();
    QVERIFY(in.latitude.isEmpty() && in.longitude.isEmpty() && in.altitude.isEmpty());
    QVERIFY(in.dateStamp.isEmpty() && in.timeStamp.isEmpty());
    QCOMPARE(edit(&dialog, "dateStamplab")->placeholderText(), QStringLiteral("YYYY:MM:DD"));
    QCOMPARE(edit(&dialog, "timeStamplab")->placeholderText(), QStringLiteral("HH:MM:SS"));
    QCOMPARE(edit(&dialog, "latitudelab")->placeholderText(), QStringLiteral("-33.45 (south negative)"));
    QCOMPARE(edit(&dialog, "longtitudelab")->placeholderText(), QStringLiteral("-70.66 (west negative)"));

    QSignalSpy previews(&dialog, &GpsDialog::previewRequested);
    QSignalSpy saves(&dialog, &GpsDialog::saveRequested);
    dialog.show();
    push(&dialog, "previewGpsButton")->click();
    push(&dialog, "gpsSaveButton")->click();
    QCOMPARE(previews.count(), 1);
    QCOMPARE(saves.count(), 1);
}

void DialogsTest::gpsPreviewCoordinateText()
{
    GpsDialog dialog;
    QWidget* map = dialog.mapArea();
    QCOMPARE(map->objectName(), QStringLiteral("previewMapArea"));
    QVERIFY(map->minimumWidth() >= 320 && map->minimumHeight() >= 220);
    QLabel* text = map->findChild<QLabel*>();
    QVERIFY(text);

    dialog.showPreviewCoordinate(-33.45, -70.66);
    QCOMPARE(text->text(), QString::fromUtf8("33.45000° S  70.66000° W"));
    dialog.showPreviewCoordinate(36.4555, 116.8662);
    QCOMPARE(text->text(), QString::fromUtf8("36.45550° N  116.86620° E"));
    dialog.showPreviewCoordinate(0.0, 0.0);
    QCOMPARE(text->text(), QString::fromUtf8("0.00000° N  0.00000° E"));
    dialog.showPreviewCoordinate(std::nan(""), 10.0);
    QVERIFY(!text->text().contains(QStringLiteral("nan"), Qt::CaseInsensitive));
}

void DialogsTest::editorChangesAreTheTypedFields()
{
    PhotoEditorPanel panel;
    const PhotoEditorTexts texts = distinctTexts();
    panel.setTexts(texts);
    QCOMPARE(panel.texts(), texts);
    QVERIFY(panel.changes().isEmpty());

    edit(&panel, "artistField")->setText("Someone Else");
    edit(&panel, "titleField")->setText(texts.title);  // typed back as it was: no change
    QCOMPARE(panel.changes().fields, (QMap<PhotoField, QString>{{PhotoField::Artist, QStringLiteral("Someone Else")}}));

    // One location field changed: the location goes as a whole, with the fields as shown.
    edit(&panel, "gpsAltitudeField")->clear();
    const QMap<PhotoField, QString> located = panel.changes().fields;
    QCOMPARE(located.size(), 6);
    QCOMPARE(located.value(PhotoField::GpsAltitude), QString());
    QCOMPARE(located.value(PhotoField::GpsLongitude), texts.gpsLongitude);
    QCOMPARE(located.value(PhotoField::GpsTime), texts.gpsTime);

    // Another photo shown: its texts are the new starting point.
    PhotoEditorTexts other = texts;
    other.artist = QStringLiteral("Someone Else");
    panel.setTexts(other);
    QVERIFY(panel.changes().isEmpty());

    QImage image(400, 100, QImage::Format_RGB32);
    image.fill(Qt::blue);
    panel.setPreview(image);
    QLabel* preview = child<QLabel>(&panel, "localPhotoImageView");
    const QPixmap shown = preview->pixmap();
    QVERIFY(!shown.isNull());
    // A wide picture keeps its 4:1 shape and fits inside the frame.
    QVERIFY(shown.width() <= preview->width() && shown.height() <= preview->height());
    QVERIFY2(qAbs(shown.width() - 4 * shown.height()) <= 4,
             qPrintable(QStringLiteral("%1x%2").arg(shown.width()).arg(shown.height())));

    panel.clear();
    QCOMPARE(panel.texts(), PhotoEditorTexts{});
    QVERIFY(preview->pixmap().isNull());
}

void DialogsTest::editorEditingStartsOncePerGroup()
{
    PhotoEditorPanel panel;
    QSignalSpy started(&panel, &PhotoEditorPanel::editingStarted);
    panel.show();
    panel.setTexts(distinctTexts());
    QCOMPARE(started.count(), 0);  // filling is no edit

    QTest::keyClicks(edit(&panel, "titleField"), "ab");
    QTest::keyClicks(edit(&panel, "keywordField"), "x");
    QCOMPARE(started.count(), 1);
    QCOMPARE(started.at(0).at(0).toString(), QStringLiteral("basic"));

    QTest::keyClicks(edit(&panel, "cameraModelField"), "z");
    QTest::keyClicks(edit(&panel, "cameraDateField"), "1");
    QTest::keyClicks(edit(&panel, "gpsTimeField"), "2");
    QTest::keyClicks(edit(&panel, "gpsLatitudeField"), "3");
    QCOMPARE(started.count(), 3);
    QCOMPARE(started.at(1).at(0).toString(), QStringLiteral("camera"));
    QCOMPARE(started.at(2).at(0).toString(), QStringLiteral("gps"));

    // A new photo starts the count over.
    panel.setTexts(distinctTexts());
    QTest::keyClicks(edit(&panel, "gpsAltitudeField"), "4");
    QCOMPARE(started.count(), 4);
    QCOMPARE(started.at(3).at(0).toString(), QStringLiteral("gps"));
}

void DialogsTest::editorButtonsEmit()
{
    PhotoEditorPanel panel;
    const struct {
        const char* name;
        void (PhotoEditorPanel::*signal)();
    } buttons[] = {
        {"editBackBtn", &PhotoEditorPanel::backRequested},
        {"editTemplateBtn", &PhotoEditorPanel::templateRequested},
        {"editApplyBtn", &PhotoEditorPanel::applyRequested},
        {"changePhotoDateBtn", &PhotoEditorPanel::dateRequested},
        {"changeMutiPhotoDateBtn", &PhotoEditorPanel::batchDateRequested},
        {"editGpsBtn", &PhotoEditorPanel::gpsRequested},
    };
    for (const auto& b : buttons) {
        HoverToolButton* button = panel.button(QString::fromLatin1(b.name));
        QVERIFY2(button, b.name);
        QSignalSpy spy(&panel, b.signal);
        button->click();
        QVERIFY2(spy.count() == 1, b.name);
    }
    QVERIFY(!panel.button(QStringLiteral("noSuchButton")));
}

void DialogsTest::editorLongTextsStayInsidePanel()
{
    PhotoEditorPanel panel;
    panel.resize(420, 700);
    panel.show();
    PhotoEditorTexts texts = distinctTexts();
    texts.fileName = QString(300, QLatin1Char('x')) + QStringLiteral(".jpg");
    texts.imageDescription = QString(500, QLatin1Char('y'));
    panel.setTexts(texts);
    QApplication::processEvents();
    auto* scroll = child<QScrollArea>(&panel, "photoEditorScroll");
    // Nothing may reach past the right edge, where no scroll bar could bring it back.
    const int needed = scroll->widget()->minimumSizeHint().width();
    QVERIFY2(needed <= scroll->viewport()->width(),
             qPrintable(QStringLiteral("%1 > %2").arg(needed).arg(scroll->viewport()->width())));
    QCOMPARE(panel.width(), 420);
    QCOMPARE(panel.texts().fileName, texts.fileName);
}

QTEST_MAIN(DialogsTest)
#include "DialogsTest.moc"
