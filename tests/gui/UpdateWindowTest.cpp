#include "app/UpdateWindow.h"
#include "ui/WindowLook.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

using namespace pelorin;

namespace {

template <typename T = QWidget>
T* child(QWidget* parent, const char* name)
{
    T* found = parent->findChild<T*>(QString::fromLatin1(name));
    if (!found)
        qFatal("no child named %s", name);
    return found;
}

void showAndCheckLook(QWidget* window, const QString& screenshot, std::initializer_list<const char*> texts)
{
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    for (const char* name : texts) {  // nothing clipped
        QWidget* w = child(window, name);
        auto* label = qobject_cast<QLabel*>(w);
        const QSize needed = label ? QSize(label->minimumSizeHint().width(), label->heightForWidth(label->width()))
                                   : w->sizeHint();
        QVERIFY2(needed.width() <= w->width() && needed.height() <= w->height(), name);
    }
    const QImage image = window->grab().toImage();
    QCOMPARE(image.pixelColor(3, image.height() / 2).name(), QStringLiteral("#34495e"));
    QVERIFY(QDir().mkpath(QStringLiteral(PELORIN_SCREENSHOT_DIR)));
    QVERIFY(image.save(QStringLiteral(PELORIN_SCREENSHOT_DIR "/") + screenshot));
}

}  // namespace

class UpdateWindowTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { applyWindowLook(*qApp); }

    void updateWindowShowsTheNewsAndOffersTheDownload()
    {
        UpdateWindow window;
        QList<QUrl> opened;
        window.openUrl = [&opened](const QUrl& url) { opened.append(url); };
        window.setUpdate(QStringLiteral("2.10.1"), QStringLiteral("<b>2.9</b>"),
                         QStringLiteral("Batch dates keep the time of day.*GPS removal also clears XMP.*A much longer "
                                        "line of news that has to wrap inside the view rather than widen the window."));
        QVERIFY(!child<QPushButton>(&window, "downloadButton")->isEnabled());  // nowhere to go yet
        const QUrl page(QStringLiteral("https://downloads.example.org/pelorin/"));
        window.setDownloadPage(page);
        showAndCheckLook(&window, QStringLiteral("update-window.png"),
                         {"newversionlab", "currentversionlab", "notNowButton", "downloadButton"});

        QCOMPARE(child<QLabel>(&window, "newversionlab")->text(), QStringLiteral("Quorvane Pelorin 2.10.1 is available."));
        // A version from the network is shown as it is, never as markup.
        QCOMPARE(child<QLabel>(&window, "currentversionlab")->textFormat(), Qt::PlainText);
        QCOMPARE(child<QLabel>(&window, "currentversionlab")->text(),
                 QStringLiteral("You are using <b>2.9</b> version. Would you like to download it now?"));
        auto* news = child<QPlainTextEdit>(&window, "whatsnewContentView");
        QVERIFY(news->isReadOnly());
        QCOMPARE(news->toPlainText().split(u'\n').value(1), QStringLiteral("GPS removal also clears XMP."));
        // This build links no resources: the missing icon leaves no empty box behind.
        QVERIFY(!child(&window, "updateIconLabel")->isVisible());

        QTest::keyClick(&window, Qt::Key_Return);  // Download is the default
        QCOMPARE(opened, QList<QUrl>{page});
        QVERIFY(!window.isVisible());

        window.show();
        QTest::mouseClick(child<QPushButton>(&window, "notNowButton"), Qt::LeftButton);
        QVERIFY(!window.isVisible());
        QCOMPARE(opened.size(), 1);
    }

    void noUpdateWindowNamesTheVersion()
    {
        NoUpdateWindow window;
        window.setCurrentVersion(QStringLiteral("0.1.0"));
        showAndCheckLook(&window, QStringLiteral("no-update-window.png"), {"noUpdateLabel", "noUpdateOkButton"});
        QCOMPARE(child<QLabel>(&window, "noUpdateLabel")->text(), QStringLiteral("Quorvane Pelorin 0.1.0 is the newest version."));
        auto* ok = child<QPushButton>(&window, "noUpdateOkButton");
        QTest::mouseClick(ok, Qt::LeftButton);
        QVERIFY(!window.isVisible());
    }

    void failureIsShownWithoutBlocking()
    {
        QWidget parent;
        parent.show();
        const QString reason = QStringLiteral("The update server could not be reached: Connection refused");
        showUpdateCheckFailure(&parent, reason);  // returns at once: the box runs no loop of its own
        QPointer<QMessageBox> box = child<QMessageBox>(&parent, "updateCheckFailedAlert");
        QVERIFY(!box->isModal());
        QCOMPARE(box->text(), QStringLiteral("The update check failed."));
        QCOMPARE(box->informativeText(), reason);
        QCOMPARE(box->buttons().size(), 1);
        QCOMPARE(box->buttons().at(0)->text(), QStringLiteral(" Ok "));
        showAndCheckLook(box, QStringLiteral("update-check-failed.png"), {});
        QTest::mouseClick(box->buttons().at(0), Qt::LeftButton);
        QTRY_VERIFY(box.isNull());  // closes and frees itself
    }
};

QTEST_MAIN(UpdateWindowTest)
#include "UpdateWindowTest.moc"
